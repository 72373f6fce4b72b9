#include "dsp/TarvoDspFirstOrder.h"

#include "math/TarvoDspDenormals.h"

#include "AllocationCounter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
TEST(FirstOrder, ImpulseResponseIsTheGeometricClosedForm)
{
    ondo::FirstOrder filter;
    const float taps[] = {0.5f, 0.25f, -0.8f}; // b0, b1, a1
    filter.setCoefficients(taps);
    std::vector<float> in(20, 0.0f), out(20);
    in[0] = 1.0f;
    filter.filter(out.data(), in.data(), 20);
    // h[0] = b0, h[n] = (b1 - a1 b0) (-a1)^(n-1) for n >= 1.
    EXPECT_NEAR(out[0], 0.5, 1e-7);
    for (int n = 1; n < 20; ++n)
        EXPECT_NEAR(out[n], (0.25 + 0.8 * 0.5) * std::pow(0.8, n - 1), 1e-6) << n;
}

TEST(FirstOrder, ClearKeepsTheCoefficients)
{
    ondo::FirstOrder filter;
    const float taps[] = {0.5f, 0.0f, -0.5f};
    filter.setCoefficients(taps);
    std::vector<float> in(4, 1.0f), first(4), second(4);
    filter.filter(first.data(), in.data(), 4);
    filter.clear();
    filter.filter(second.data(), in.data(), 4);
    EXPECT_EQ(first, second);
    EXPECT_EQ(filter.getA1(), -0.5f);
}

TEST(FirstOrder, DecayAfterABurstNeverReachesDenormals)
{
    // With flushing off, only the guard keeps the tail away from the denormal range.
    ondo::primitives::setDenormalsAreZero(false);
    ondo::FirstOrder filter;
    const float taps[] = {0.05f, 0.0f, -0.95f};
    filter.setCoefficients(taps);
    std::vector<float> burst(64, 1.0f), silence(4096, 0.0f), out(4096);
    filter.filter(out.data(), burst.data(), 64);
    bool anyDenormal = false;
    for (int block = 0; block < 20; ++block)
    {
        filter.filter(out.data(), silence.data(), 4096);
        for (float v : out)
            anyDenormal |= std::fpclassify(v) == FP_SUBNORMAL;
    }
    ondo::primitives::setDenormalsAreZero(true);
    EXPECT_FALSE(anyDenormal);
    EXPECT_LT(std::fabs(out.back()), 1e-18f);
}

TEST(FirstOrder, FilteringAllocatesNothing)
{
    ondo::FirstOrder filter;
    std::vector<float> block(256, 0.5f);
    float* io = block.data();
    tarvo::testing::AllocationScope scope;
    filter.process(&io, &io, 256);
    EXPECT_EQ(scope.count(), 0u);
}
} // namespace
