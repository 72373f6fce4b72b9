#include "pan/QuorAmbisonicPanning.h"
#include "pan/QuorHOA2DPanning.h"
#include "pan/QuorHOA3DPanning.h"
#include "pan/QuorHoaLookupTable.h"
#include "pan/QuorNullPanning.h"

#include "AllocationCounter.h"
#include "PanTestSupport.h"
#include "common/TarvoDspException.h"
#include "golden/SphericalHarmonicsGolden.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace
{
using namespace Quor::testing;
using ondo::Ambisonics;
using Quor::Pan;

constexpr double degrees = 3.14159265358979323846 / 180.0;

ondo::Point3 mathematical(double azimuthDegrees, double elevationDegrees, double distance = 1.0)
{
    const double t = azimuthDegrees * degrees, e = elevationDegrees * degrees;
    return {static_cast<float>(distance * std::cos(t) * std::cos(e)),
            static_cast<float>(distance * std::sin(t) * std::cos(e)), static_cast<float>(distance * std::sin(e))};
}

/// The gains of one source placed at `p` on a fresh panner of `channels` components.
template <typename Panner>
std::vector<float> encoded(std::uint32_t channels, const ondo::Point3& p, Ambisonics::Normalization n)
{
    Panner panner(1, channels);
    panner.setAmbisonicNormalization(n);
    panner.setSourcePosition(0, p, true);
    return gainsOf(panner, 0);
}

TEST(HOAPanning, ThreeDimensionalGainsAreTheRealSphericalHarmonicsOfScipy)
{
    const int components = (golden::maxDegree + 1) * (golden::maxDegree + 1);
    for (int d = 0; d < golden::numDirections; ++d)
    {
        const ondo::Point3 p = mathematical(golden::directions[d][0], golden::directions[d][1], 2.5);
        // Order 10 runs the single-precision recurrence, order 21 the double one: their
        // first 121 components are the same harmonics.
        for (std::uint32_t channels : {121u, 484u})
            for (auto n : {Ambisonics::N3D, Ambisonics::SN3D})
            {
                const auto row = encoded<Quor::HOA3DPanning>(channels, p, n);
                for (int k = 0; k < components; ++k)
                {
                    const int l = static_cast<int>(std::sqrt(k));
                    const double expected = golden::n3d[d][k] / (n == Ambisonics::N3D ? 1.0 : std::sqrt(2.0 * l + 1.0));
                    // Single-precision position and recurrence: a few 1e-6 of the harmonic's scale (sqrt(2l + 1)).
                    EXPECT_NEAR(row[k], expected, 4e-6 * std::sqrt(2.0 * l + 1.0))
                        << "direction " << d << " component " << k << " channels " << channels;
                }
            }
    }
}

TEST(HOAPanning, TwoDimensionalGainsAreTheCircularHarmonics)
{
    for (int d = 0; d < golden::numDirections; ++d)
    {
        const ondo::Point3 p = mathematical(golden::directions[d][0], golden::directions[d][1]);
        const auto sn2d = encoded<Quor::HOA2DPanning>(21, p, Ambisonics::SN2D);
        const auto n2d = encoded<Quor::HOA2DPanning>(21, p, Ambisonics::N2D);
        for (int k = 0; k < 21; ++k)
        {
            // Single precision; the circular harmonics stay within [-1, 1].
            EXPECT_NEAR(sn2d[k], golden::sn2d[d][k], 4e-6) << d << " " << k;
            EXPECT_NEAR(n2d[k], golden::sn2d[d][k] * (k == 0 ? 1.0 : std::sqrt(2.0)), 6e-6) << d << " " << k;
        }
    }
}

TEST(HOAPanning, SourceAtTheOriginEncodesAsPlusX)
{
    const auto origin = encoded<Quor::HOA3DPanning>(16, {0, 0, 0}, Ambisonics::SN3D);
    const auto right = encoded<Quor::HOA3DPanning>(16, {3, 0, 0}, Ambisonics::SN3D);
    for (std::size_t k = 0; k < origin.size(); ++k)
        EXPECT_FLOAT_EQ(origin[k], right[k]) << k;
    EXPECT_FLOAT_EQ(right[3], 1.0f) << "channel 3 carries cos t";
    EXPECT_NEAR(right[1], 0.0f, 1e-7f);
    const auto front = encoded<Quor::HOA3DPanning>(4, {0, 1, 0}, Ambisonics::SN3D);
    EXPECT_FLOAT_EQ(front[1], 1.0f) << "channel 1 carries sin t";
}

TEST(HOAPanning, RefusesANormalizationOfTheOtherDimension)
{
    Quor::HOA2DPanning panner(2, 5);
    panner.setSourcePosition(1, mathematical(40, 10), true);
    const auto before = gainsOf(panner, 1);
    try
    {
        panner.setAmbisonicNormalization(Ambisonics::SN3D);
        ADD_FAILURE() << "SN3D accepted by a 2-D panner";
    }
    catch (const ondo::Exception& e)
    {
        EXPECT_EQ(e.getMessage(), "invalid normalization for 2D : SN3D");
    }
    EXPECT_EQ(panner.getAmbisonicNormalization(), Ambisonics::SN2D);
    EXPECT_EQ(gainsOf(panner, 1), before);
    Quor::HOA3DPanning periphonic(1, 4);
    EXPECT_THROW(periphonic.setAmbisonicNormalization(Ambisonics::N2D), ondo::Exception);
    EXPECT_EQ(periphonic.getAmbisonicNormalization(), Ambisonics::SN3D);
}

TEST(HOAPanning, FastModeReadsTheNearestGridPoint)
{
    Quor::HOA3DPanning fast(1, 16), precise(1, 16);
    fast.setComputationMode("fast");
    EXPECT_EQ(fast.getComputationMode(), Quor::HoaEncodingVector::Fast);
    // 359.6 degrees rounds to 360, the last column: the encoding of 0 degrees.
    fast.setSourcePosition(0, mathematical(359.6, 0), true);
    precise.setSourcePosition(0, mathematical(0, 0), true);
    const auto atLastColumn = gainsOf(fast, 0);
    for (std::size_t k = 0; k < atLastColumn.size(); ++k)
        EXPECT_NEAR(atLastColumn[k], gainsOf(precise, 0)[k], 1e-6f) << k;
    // Off the grid, near the precise value: SN3D harmonics of degree 3 stay within [-1, 1]
    // and change by at most 3 per radian, and the grid is at most 0.0123 rad away.
    for (double az = -170; az < 180; az += 37.3)
        for (double el = -80; el < 90; el += 23.7)
        {
            fast.setSourcePosition(0, mathematical(az, el), true);
            precise.setSourcePosition(0, mathematical(az, el), true);
            for (std::size_t k = 0; k < 16; ++k)
                EXPECT_NEAR(gainsOf(fast, 0)[k], gainsOf(precise, 0)[k], 0.07f) << az << " " << el << " " << k;
        }
    const auto table = Quor::HoaLookupTable::share(3, 3, Ambisonics::SN3D);
    EXPECT_EQ(table, Quor::HoaLookupTable::share(3, 3, Ambisonics::SN3D)) << "one table for one setting";
    EXPECT_EQ(table->value(3, 90, 360), table->value(3, 90, 0));
    fast.setComputationMode("precise");
    fast.setSourcePosition(0, mathematical(12.3, 4.5), true);
    precise.setSourcePosition(0, mathematical(12.3, 4.5), true);
    EXPECT_EQ(gainsOf(fast, 0), gainsOf(precise, 0));
}

TEST(HOAPanning, ReportsItsOrderAndComponents)
{
    const auto panner = Pan::create(1, 9, Pan::Hoa3D, Pan::Direct);
    Quor::StringArray lines;
    panner->getInfos(lines);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[2], "order : 2");
    EXPECT_EQ(lines[3], "encoding norm : SN3D");
    EXPECT_EQ(lines[4], "computation mode : precise");
    EXPECT_EQ(panner->getOutletName(4), "output #5 : Y(2,-2)");
    EXPECT_EQ(panner->getOutletName(9), "dumpout");
    const auto circular = Pan::create(1, 9, Pan::Hoa2D, Pan::Direct);
    ASSERT_NE(dynamic_cast<Quor::HOA2DPanning*>(circular.get()), nullptr);
    EXPECT_EQ(static_cast<Quor::HOA2DPanning&>(*circular).getOrder(), 4u);
    EXPECT_TRUE(circular->is2D());
    EXPECT_EQ(static_cast<Quor::HOAPanning&>(*panner).getOrder(), 2u);
    EXPECT_NE(dynamic_cast<Quor::NullPanning*>(Pan::create(1, 10, Pan::Hoa3D, Pan::Direct).get()), nullptr);
}

TEST(AmbisonicPanning, BFormatKeepsItsPowerAndPointsAtTheSource)
{
    EXPECT_EQ(dynamic_cast<Quor::AmbisonicPanning*>(Pan::create(1, 5, Pan::BFormat, Pan::Direct).get()), nullptr);
    for (std::uint32_t channels : {3u, 4u})
    {
        const auto panner = Pan::create(1, channels, Pan::BFormat, Pan::Direct);
        ASSERT_NE(dynamic_cast<Quor::AmbisonicPanning*>(panner.get()), nullptr) << channels;
        auto& p = static_cast<Quor::AmbisonicPanning&>(*panner);
        EXPECT_EQ(p.is2D(), channels == 3);
        EXPECT_EQ(p.getOutletName(1), "X");
        EXPECT_EQ(p.getOutletName(static_cast<std::int32_t>(channels)), "dumpout");
        for (double az = -180; az < 180; az += 29)
            for (double el = -90; el <= 90; el += 15)
            {
                p.setSourcePosition(0, mathematical(az, el, 0.3), true);
                const auto g = gainsOf(p, 0);
                // W^2 + X^2 + Y^2 is 1 in the horizontal form; 1/3 + 2 with Z.
                EXPECT_NEAR(powerOf(g), channels == 3 ? 1.0f : 7.0f / 3.0f, 2e-6f) << az << " " << el;
                // The first-order part is a vector along the source direction.
                const ondo::Point3 v = channels == 3 ? ondo::Point3{g[1], g[2], 0.0f} * std::sqrt(1.5f)
                                                     : ondo::Point3{g[1], g[2], g[3]} * std::sqrt(0.5f);
                const ondo::Point3 u = mathematical(az, el);
                const ondo::Point3 want = channels == 3 ? ondo::Point3{u.x, u.y, 0.0f} : u;
                EXPECT_NEAR(v.x, want.x, 2e-6f);
                EXPECT_NEAR(v.y, want.y, 2e-6f);
                EXPECT_NEAR(v.z, want.z, 2e-6f);
            }
    }
}
TEST(HOAPanning, NoAmbisonicPannerAllocatesWhilePlacingOrProcessing)
{
    const struct
    {
        Pan::Type type;
        Pan::SubType subType;
        std::uint32_t channels;
        const char* mode;
    } requests[] = {
        {Pan::BFormat, Pan::Direct, 3, "precise"}, {Pan::BFormat, Pan::Direct, 4, "precise"},
        {Pan::Hoa2D, Pan::Direct, 9, "precise"},   {Pan::Hoa3D, Pan::Direct, 16, "fast"},
        {Pan::Hoa3D, Pan::Direct, 484, "precise"}, {Pan::Hoa3D, Pan::Diffuse, 9, "precise"},
        {Pan::Hoa2D, Pan::Diffuse, 7, "precise"},  {Pan::Aep2D, Pan::Direct, 8, "precise"},
        {Pan::Aep3D, Pan::Direct, 9, "precise"},
    };
    for (const auto& r : requests)
    {
        const auto p = Pan::create(3, r.channels, r.type, r.subType);
        ASSERT_EQ(p->getType(), r.type);
        p->setComputationMode(r.mode);
        Block in(3, 700, 0.25f), out(r.channels, 700);
        tarvo::testing::AllocationScope scope;
        for (int b = 0; b < 4; ++b)
        {
            p->setSourcePosition(b % 3, {0.5f * b, 1.0f, 0.1f * b}, false);
            p->process(out.get(), in.get(), b == 3 ? 700 : 64);
            p->processAdd(out.get(), in.get(), 64);
        }
        EXPECT_EQ(scope.count(), 0u) << Pan::typeToString(r.type) << " " << r.channels;
        for (const auto& channel : out.data)
            for (float v : channel)
                ASSERT_TRUE(std::isfinite(v)) << Pan::typeToString(r.type);
    }
}
} // namespace
