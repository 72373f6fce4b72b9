#include "pan/QuorSubwoofersPanning.h"

#include "AllocationCounter.h"
#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{
using namespace Quor::testing;
using ondo::Coordinates;

TEST(SubwoofersPanning, OneSubwooferTakesTheSumOfAllSources)
{
    Quor::SubwoofersPanning p(3, 1);
    Block in(3, 1000), out(1, 1000, 5.0f);
    for (std::uint32_t s = 0; s < 3; ++s)
        in.data[s].assign(1000, 0.25f * (s + 1));
    p.process(out.get(), in.get(), 1000);
    // The low-pass passes steady levels at unit gain once settled (time constant ~1.8 ms);
    // its single-precision taps at 125 Hz hold the gain at 0 dB within 1e-3.
    EXPECT_NEAR(out.data[0][999], 1.5f, 1e-3f);
    p.processAdd(out.get(), in.get(), 1000);
    EXPECT_NEAR(out.data[0][999], 3.0f, 2e-3f) << "adding keeps what the output held";
}

TEST(SubwoofersPanning, SeveralSubwoofersPanByVbap)
{
    Quor::SubwoofersPanning p(1, 4);
    p.setSpeakers(ondo::Point3Array::defaultLayout(4));
    p.setSourcePosition(0, Coordinates::fromNavigational(-45.0f, 0.0f, 1.0f), true);
    Block in(1, 1100, 1.0f), out(4, 1100);
    tarvo::testing::AllocationScope scope;
    p.process(out.get(), in.get(), 1100);
    EXPECT_EQ(scope.count(), 0u);
    EXPECT_NEAR(out.data[0][1099], 1.0f, 1e-3f);
    EXPECT_EQ(out.data[1][1099], 0.0f);
    EXPECT_TRUE(p.is2D());
}
TEST(SubwoofersPanning, KeepsTheBassAndCutsTheRest)
{
    // A second-order low-pass at 125 Hz: 30 Hz passes within a few per cent, 2 kHz falls by
    // about (125 / 2000)^2, below 1 per cent.
    const float rate = 44100.0f;
    auto peakAfterSettling = [&](float hertz) {
        Quor::SubwoofersPanning p(1, 1);
        p.setup(rate, 512, true);
        Block in(1, 8192), out(1, 8192);
        for (int i = 0; i < 8192; ++i)
            in.data[0][i] = std::sin(6.2831853f * hertz * static_cast<float>(i) / rate);
        p.process(out.get(), in.get(), 8192);
        float peak = 0.0f;
        for (int i = 4096; i < 8192; ++i)
            peak = std::max(peak, std::fabs(out.data[0][i]));
        return peak;
    };
    EXPECT_NEAR(peakAfterSettling(30.0f), 1.0f, 0.05f);
    EXPECT_LT(peakAfterSettling(2000.0f), 0.01f);
}
} // namespace
