#pragma once

#include "pan/QuorCornerPanning.h"

namespace Quor
{
/// Left, (centre,) right and one surround speaker, on the four-corner law with both rear
/// corners at the back.
class SurroundPanning : public CornerPanning
{
public:
    /// Control thread; allocates.
    SurroundPanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Takes the front corners from the left and right speakers. Control thread.
    void setSpeakers(const ondo::Point3Array& speakers) override;
    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    /// "L", "R", "S" or "L", "C", "R", "S", then "dumpout".
    std::string getOutletName(std::int32_t index) const override;
};
} // namespace Quor
