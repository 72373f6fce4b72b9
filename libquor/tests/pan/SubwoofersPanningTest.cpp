#include "pan/QuorSubwoofersPanning.h"

#include "AllocationCounter.h"
#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

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
    EXPECT_FLOAT_EQ(out.data[0][999], 1.5f);
    p.processAdd(out.get(), in.get(), 1000);
    EXPECT_FLOAT_EQ(out.data[0][0], 3.0f);
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
    EXPECT_NEAR(out.data[0][1099], 1.0f, 1e-6f);
    EXPECT_EQ(out.data[1][1099], 0.0f);
    EXPECT_TRUE(p.is2D());
}
} // namespace
