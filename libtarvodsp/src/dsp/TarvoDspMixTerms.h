#pragma once

#include "containers/TarvoDspVector.h"

#include <cstdint>

namespace ondo
{
/// The terms of one output of a mix, gathered in order and added in one pass, so that the
/// output is read and written once however many inputs reach it. The sums are those of one
/// multiply-add per term in the same order.
class MixTerms
{
public:
    /// Room for `numTerms` terms. Control thread; allocates.
    void reserve(std::uint32_t numTerms);

    /// Audio thread; real-time safe. At most as many terms as reserved.
    void add(const float* in, float gain)
    {
        inputs[count] = in;
        gains[count] = gain;
        ++count;
    }
    /// Adds the gathered terms into `out` (none of their inputs) and forgets them. Audio
    /// thread; real-time safe.
    void addInto(float* out, std::uint32_t n);
    /// Each of `count` sets of terms into its own output, the sums of
    /// `vectorProductsConstant32` (as if it were zeroed first), without reading it, in one
    /// pass over the outputs. Unless `keep`, each set then forgets its terms; kept, an owner
    /// writes them again next block.
    static void writeEach(MixTerms* terms, float* const* outs, std::uint32_t count, std::uint32_t n, bool keep);
    /// Forgets the terms. Audio thread; real-time safe.
    void forget() { count = 0; }

private:
    Vector<const float*> inputs;
    Vector<float> gains;
    int count = 0;
};
} // namespace ondo
