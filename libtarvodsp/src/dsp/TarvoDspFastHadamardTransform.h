#pragma once

#include "containers/TarvoDspVector.h"

#include <cstdint>
#include <string>

namespace ondo
{
/// The Walsh-Hadamard transform of `size` channels by a butterfly network, unscaled:
/// applying it twice in natural order multiplies by `size`. Real-time safe once built.
class FastHadamardTransform
{
public:
    enum HadamardOrdering : std::uint32_t
    {
        sequency = 0,
        dyadic = 1,
        natural = 2,
    };
    static constexpr HadamardOrdering defaultOrdering = natural;

    /// Builds the bit-reversal table for `size` (control thread; allocates).
    explicit FastHadamardTransform(std::uint32_t size = 2, HadamardOrdering ordering = defaultOrdering, bool flag = false);

    /// Changes the size without rebuilding the bit-reversal table: afterwards only the
    /// natural ordering is valid.
    void setSize(std::uint32_t n);
    void setOrdering(HadamardOrdering value) { ordering = value; }
    void setOrdering(const std::string& text) { ordering = orderingFromText(text); }

    /// In place over `size` channels.
    void transform(float** channels, std::uint32_t numSamples) const;
    /// Leaves `in` alone; `out` must not share channels with `in`.
    void transform(float** out, float** in, std::uint32_t numSamples) const;
    /// The natural-order transform times `gain` (1 leaves the sums as they are), a few samples
    /// of all channels at a time through every stage, so that each output is written once:
    /// the same samples as `transform` and a multiplication. `out` may share channels with
    /// `in`. Sizes 2 to 16 only; returns false, doing nothing, for another size or ordering.
    /// Real-time safe.
    bool transformColumns(float* const* out, const float* const* in, std::uint32_t numSamples, float gain) const;

    std::uint32_t getSize() const { return size; }
    HadamardOrdering getOrdering() const { return ordering; }
    float getInverseSize() const { return inverseSize; }
    const Vector<std::uint32_t>& getPermutation() const { return permutation; }

    /// "SequencyWalshOrdering"/"sequency", "DyadicPaleyOrdering"/"dyadic",
    /// "NaturalOrdering"/"natural"; anything else is natural.
    static HadamardOrdering orderingFromText(const std::string& text);
    /// "sequency", "dyadic" or "natural"; a value outside gives the default's text.
    static std::string orderingToText(std::uint32_t value);

private:
    void swapPass(float** channels, std::uint32_t numSamples) const;
    void butterflies(float** channels, std::uint32_t firstStage, std::uint32_t numSamples) const;

    std::uint32_t size = 0;
    HadamardOrdering ordering = defaultOrdering;
    std::uint32_t numStages = 0;
    std::uint32_t halfSize = 0;
    float inverseSize = 0.0f;
    Vector<std::uint32_t> permutation;
    std::uint32_t permutationSize = 0;
    [[maybe_unused]] bool flag = false;
};
} // namespace ondo
