#pragma once

#include "text/TarvoDspString.h"

#include <cstdint>
#include <vector>

namespace Quor
{
/// Per-degree weights that shape an Ambisonic decode: "basic" keeps every degree whole,
/// "maxRe" concentrates the energy towards the source, "in-phase" keeps every speaker's gain
/// of one sign, and the inverse forms undo them.
class HoaOptimization
{
public:
    enum Type : std::int32_t
    {
        Basic = 0,
        MaxRe,
        InPhase,
        InverseMaxRe,
        InverseInPhase
    };

    HoaOptimization() = delete;

    /// The first name of a type; "basic" for values outside the table.
    static ondo::String toString(Type type);
    /// Exact case; unknown names give `Basic`.
    static Type fromString(const ondo::String& name);

    /// The weight of degree l for order M in `dimension` (2 or 3), in double precision.
    static double degreeWeight(Type type, std::uint32_t l, std::uint32_t order, std::uint32_t dimension);
    /// One single-precision weight per ACN component of order M: (M + 1)^2 in 3-D, 2M + 1
    /// in 2-D. Control thread; allocates.
    static std::vector<float> weights(Type type, std::uint32_t order, std::uint32_t dimension);
    /// The largest root of the Legendre polynomial of `degree`: tabulated to 16, from an
    /// approximation beyond.
    static double largestLegendreRoot(std::uint32_t degree);
};
} // namespace Quor
