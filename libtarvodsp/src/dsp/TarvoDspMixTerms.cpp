#include "dsp/TarvoDspMixTerms.h"

#include "math/TarvoDspVectorPrimitives.h"

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

void MixTerms::writeInto(float* out, std::uint32_t n)
{
    writeIntoKeeping(out, n);
    count = 0;
}

void MixTerms::writeIntoKeeping(float* out, std::uint32_t n)
{
    primitives::vectorProductsConstant32(inputs.data(), gains.data(), count, out, static_cast<int>(n));
}
} // namespace ondo
