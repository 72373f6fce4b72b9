#pragma once

#include <string>

namespace ondo
{
/// How a crossfading filter moves from one instance to the other.
struct Crossfade
{
    enum Type : int
    {
        linear = 0,       ///< gains along straight lines: no transcendental functions
        cosine = 1,       ///< cos and sin of a phase: equal power for uncorrelated outputs
        squareCosine = 2, ///< cos^2 and sin^2 of a phase: equal gain, smooth ends
    };

    /// "linear", "cosine", "squareCosine"; any other value gives the default's text.
    static std::string toText(int type);
    /// The type named by `text`; the default for an unknown text.
    static Type fromText(const std::string& text);
};
} // namespace ondo
