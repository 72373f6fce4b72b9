#pragma once

#include "dsp/TarvoDspAudioProcessorWithAutoMute.h"
#include "osc/TarvoDspOscDocumentation.h"

namespace ondo
{
/// The base of every concrete signal block. Control messages queued by other threads are
/// applied at the head of each block, in `audioInterruptTasks`.
class AudioProcessorWithOscInAudioInterrupt : public AudioProcessorWithAutoMute
{
public:
    using AudioProcessorWithAutoMute::AudioProcessorWithAutoMute;

    /// Drains the queued control messages. Audio thread; real-time safe.
    void audioInterruptTasks() override {}

    /// The OSC addresses of the processor's own; empty unless a subclass has some.
    virtual OscDocumentation getDocumentation() const { return {}; }
};
} // namespace ondo
