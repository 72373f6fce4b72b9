#include "pan/QuorHOA3DPanning.h"
#include "pan/QuorHoaDiffusePanning2D.h"
#include "pan/QuorHoaDiffusePanning3D.h"

#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using namespace Quor::testing;
using Quor::HoaDiffusePanning;
using Quor::Pan;

TEST(HoaDiffusePanning, EachInputComesFromItsOwnFixedDirection)
{
    const auto panner = Pan::create(8, 16, Pan::Hoa3D, Pan::Diffuse);
    ASSERT_NE(dynamic_cast<Quor::HoaDiffusePanning3D*>(panner.get()), nullptr);
    EXPECT_FALSE(panner->is2D());
    EXPECT_NE(dynamic_cast<Quor::HoaDiffusePanning2D*>(Pan::create(4, 7, Pan::NfcHoa2D, Pan::Diffuse).get()), nullptr);
    // Moving an input changes nothing; each input sounds as the encoder of its direction.
    panner->setSourcePosition(2, {0, 0, 5}, true);
    const auto fixed = HoaDiffusePanning::directions(8, 3);
    Quor::HOA3DPanning reference(8, 16);
    for (std::uint32_t s = 0; s < 8; ++s)
        reference.setSourcePosition(s, fixed[s], true);
    Block in(8, 64), out(16, 64), want(16, 64);
    for (std::uint32_t s = 0; s < 8; ++s)
        in.data[s][10] = 1.0f + s;
    panner->process(out.get(), in.get(), 64);
    reference.process(want.get(), in.get(), 64);
    for (std::uint32_t k = 0; k < 16; ++k)
        EXPECT_EQ(out.data[k][10], want.data[k][10]) << k;
    // The tabulated set of eight: the first at azimuth 9.8961, elevation 52.062.
    EXPECT_NEAR(ondo::Coordinates::azimuthOf(fixed[0]), 9.8961f, 1e-4f);
    EXPECT_NEAR(ondo::Coordinates::elevationOf(fixed[0]), 52.062f, 1e-4f);
    EXPECT_NEAR(ondo::Coordinates::elevationOf(HoaDiffusePanning::directions(16, 3)[15]), 74.456f, 1e-4f);
}

TEST(HoaDiffusePanning, OtherCountsSpreadOverTheWholeSphere)
{
    EXPECT_EQ(HoaDiffusePanning::directions(5, 3).size(), 0u);
    EXPECT_EQ(HoaDiffusePanning::directions(3, 2).size(), 3u);
    EXPECT_NEAR(ondo::Coordinates::azimuthOf(HoaDiffusePanning::directions(3, 2)[1]), 120.0f, 1e-4f);
    for (std::uint32_t n : {6u, 12u, 32u, 100u})
    {
        const auto d = HoaDiffusePanning::directions(n, 3);
        ASSERT_EQ(d.size(), n);
        // Unit points whose mean is near the centre and whose nearest neighbours are all
        // of one spacing within a factor of two: no clumps, no holes.
        ondo::Point3 mean;
        float closest = 10.0f, farthestNearest = 0.0f;
        for (std::uint32_t i = 0; i < n; ++i)
        {
            EXPECT_NEAR(d[i].length(), 1.0f, 1e-6f);
            mean += d[i] * (1.0f / n);
            float nearest = 10.0f;
            for (std::uint32_t j = 0; j < n; ++j)
                if (j != i)
                    nearest = std::min(nearest, d[i].distanceTo(d[j]));
            closest = std::min(closest, nearest);
            farthestNearest = std::max(farthestNearest, nearest);
        }
        EXPECT_LT(mean.length(), 0.1f) << n;
        EXPECT_LT(farthestNearest, 2.0f * closest) << n;
        EXPECT_EQ(HoaDiffusePanning::directions(n, 3)[n - 1], d[n - 1]) << "fixed per count";
    }
}
} // namespace
