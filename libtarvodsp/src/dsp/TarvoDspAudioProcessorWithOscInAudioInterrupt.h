#pragma once

#include "dsp/TarvoDspAudioProcessorWithAutoMute.h"
#include "osc/TarvoDspOscInterface.h"

#include <cstdint>
#include <vector>

namespace ondo
{
/// The base of every concrete signal block: a processor with an OSC face. Control threads
/// queue messages with `addToPending`; the audio thread applies them at the head of the next
/// block whose try-lock succeeds, so a handler never runs during a block.
///
/// Every processor of this branch answers the "/dsp" subtree ("/dsp/samplerate",
/// "/dsp/buffersize", "/dsp/clear", "/dsp/mute", "/dsp/bypass", "/dsp/automute/active",
/// "/dsp/automute/attack", "/dsp/post") after the service addresses of `OscInterface`. A
/// processor with addresses of its own overrides `processOscMessage`, starting with
/// `if (handleProcessorMessages(message, context)) return true;`, declares them in
/// `getDocumentation`, and overrides `getState` starting from `getProcessorState()`.
class AudioProcessorWithOscInAudioInterrupt : public AudioProcessorWithAutoMute, public OscInterface
{
public:
    /// Control thread; allocates. The service and "/dsp" addresses are cached here, so the
    /// drain never parses them.
    AudioProcessorWithOscInAudioInterrupt(std::uint32_t numInputs, std::uint32_t numOutputs);

    /// Applies the queued messages in order. A message nobody understands is reported at
    /// level 2 by its text; an exception ends the drain for this block, its text reported at
    /// level 2, the rest of the taken messages lost, and the block goes on. Audio thread;
    /// allocates nothing while nothing is queued.
    void audioInterruptTasks() override;

    /// The OSC addresses of the processor's own; empty unless a subclass has some.
    virtual OscDocumentation getDocumentation() const { return {}; }

    /// The service addresses, then the "/dsp" subtree. Runs on the calling thread.
    bool handleProcessorMessages(const OSCMessage& message, std::int32_t& context);
    /// The "/dsp" state: sample rate, buffer size, mute, bypass, auto-mute on and its attack.
    /// Allocates.
    OSCBundle getProcessorState() const;
    /// The "/dsp/post" lines: rate, size, inlet and outlet counts, connections, activity,
    /// latency.
    std::vector<String> getProcessorStateLines() const;

    /// A processor without addresses of its own answers `handleProcessorMessages`.
    bool processOscMessage(const OSCMessage& message, std::int32_t& context) override;
    /// A processor without state of its own reports `getProcessorState`.
    OSCBundle getState() const override;
    /// The base entries, the "/dsp" entries, then `getDocumentation`.
    OscDocumentation getOscDocumentation() const override;

private:
    bool handleDspMessages(const OSCMessage& message);
};
} // namespace ondo
