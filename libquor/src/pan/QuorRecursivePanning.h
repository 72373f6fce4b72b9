#pragma once

#include "pan/QuorCornerPanning.h"

namespace Quor
{
/// A four-corner law extended to 4 to 8 or 12 speakers by splitting corner powers between
/// neighbours, recursively.
class RecursivePanning : public CornerPanning
{
public:
    /// Control thread; allocates.
    RecursivePanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Takes the four corners from the speakers of the layout's table. Control thread.
    void setSpeakers(const ondo::Point3Array& speakers) override;
    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
};
} // namespace Quor
