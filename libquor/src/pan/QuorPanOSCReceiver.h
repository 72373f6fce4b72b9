#pragma once

#include "osc/TarvoDspOscInterface.h"

#include <cstdint>

namespace Quor
{
class Pan;

/// The address space every panner answers, kept apart from the panner so that each family
/// gets it whole and adds only its own addresses. It holds nothing but its panner.
///
/// Sources and speakers are numbered from 1 in addresses: "/source/I/mute" b,
/// "/source/I/spread" n, "/source/I/<format>" and "/speaker/I/<format>" with the numbers of a
/// coordinate format, "/speakers/<format>" with every speaker's, "/source/number" and
/// "/speaker/number" u (only the present count), "/hrtf" and "/load" s, "/listener/orientation"
/// nnnn (a quaternion x y z w), "/itd/type" s, "/itd/latencymode" s, "/itd/scaling" n,
/// "/crossfade/duration" n, "/crossfade/type" s, "/interpolation/time" n,
/// "/interpolation/mode" s. The panner's setters decide what each does for its family.
class PanOSCReceiver : public ondo::OscInterface
{
public:
    /// `pan` must outlive the receiver (the panner owns it).
    explicit PanOSCReceiver(Pan& pan) : pan(&pan) {}

    /// A source index out of range or 0 is taken and ignored, as is a position with fewer
    /// numbers than its format takes. A count other than the present one throws
    /// `ondo::Exception` "cannot change /source/number" (or "/speaker/number"). Thread of
    /// the caller; allocates.
    bool processOscMessage(const ondo::OSCMessage& message, std::int32_t& context) override;
    /// The sources (count, then "aed" and mute of each), the binaural settings, the
    /// interpolation and crossfade, the listener, then the speakers (count, then "aed").
    ondo::OSCBundle getState() const override;
    ondo::OscDocumentation getOscDocumentation() const override;

private:
    bool handleSource(const ondo::OSCMessage& message);
    bool handleSpeaker(const ondo::OSCMessage& message);
    bool handleSpeakers(const ondo::OSCMessage& message);
    bool handleSettings(const ondo::OSCMessage& message);

    Pan* pan;
};
} // namespace Quor
