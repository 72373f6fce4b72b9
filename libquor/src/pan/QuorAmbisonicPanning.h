#pragma once

#include "pan/QuorAmplitudePanning.h"

namespace Quor
{
/// First-order B-format in the order W, X, Y, Z: 3 channels for the horizontal form, 4 for
/// the periphonic one. Distance plays no part.
class AmbisonicPanning : public AmplitudePanning
{
public:
    /// Control thread; allocates. Counts other than 3 and 4 raise an `ondo::Exception`.
    AmbisonicPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    bool is2D() const override { return numOutputs != 4; }
    /// "W", "X", "Y", "Z", then "dumpout".
    std::string getOutletName(std::int32_t index) const override;
};
} // namespace Quor
