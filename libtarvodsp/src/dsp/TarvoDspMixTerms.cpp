#include "dsp/TarvoDspMixTerms.h"

#include "math/TarvoDspVectorPrimitives.h"

#include <algorithm>

namespace ondo
{
void MixTerms::reserve(std::uint32_t numTerms)
{
    inputs.resize(numTerms);
    gains.resize(numTerms);
    count = 0;
}

void MixTerms::addInto(float* out, std::uint32_t n)
{
    if (count > 0)
        primitives::vectorAddProductsConstant32(inputs.data(), gains.data(), count, out, static_cast<int>(n));
    count = 0;
}

void MixTerms::writeEach(MixTerms* terms, float* const* outs, std::uint32_t count, std::uint32_t n, bool keep)
{
    // Batches on the stack: the audio thread allocates nothing.
    constexpr std::uint32_t batch = 16;
    primitives::Products sets[batch];
    for (std::uint32_t first = 0; first < count; first += batch)
    {
        const std::uint32_t m = std::min(batch, count - first);
        for (std::uint32_t k = 0; k < m; ++k)
        {
            MixTerms& t = terms[first + k];
            sets[k] = {t.inputs.data(), t.gains.data(), t.count, outs[first + k]};
        }
        primitives::vectorProductsConstant32(sets, static_cast<int>(m), static_cast<int>(n));
        if (!keep)
            for (std::uint32_t k = 0; k < m; ++k)
                terms[first + k].count = 0;
    }
}
} // namespace ondo
