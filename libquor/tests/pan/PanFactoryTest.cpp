#include "pan/QuorAngularPanning.h"
#include "pan/QuorDiffusePanning.h"
#include "pan/QuorNullPanning.h"
#include "pan/QuorPan.h"
#include "pan/QuorRecursivePanning.h"
#include "pan/QuorStereoABPanning.h"
#include "pan/QuorStereoMSPanning.h"
#include "pan/QuorSubwoofersPanning.h"
#include "pan/QuorStereoPanLaw.h"
#include "pan/QuorStereoXYPanning.h"
#include "pan/QuorSurroundPanning.h"
#include "pan/QuorVbap2DPanning.h"
#include "pan/QuorVbapPanning.h"
#include "pan/QuorVbip2DPanning.h"
#include "pan/QuorVbipPanning.h"

#include "AllocationCounter.h"
#include "PanTestSupport.h"
#include "SpeakerLayouts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace
{
using Quor::Pan;

template <typename T>
bool isA(const std::unique_ptr<Pan>& p)
{
    return dynamic_cast<const T*>(p.get()) != nullptr;
}

TEST(PanFactory, ReverberatorRequestsGetTheirPanners)
{
    // One or two outputs: angular; more: 2-D VBAP; the late field always diffuse.
    for (std::uint32_t outputs : {1u, 2u, 3u, 8u})
    {
        const Pan::Type type = static_cast<Pan::Type>(7 + (outputs > 2));
        const auto direct = Pan::create(4, outputs, type, Pan::Direct);
        const auto early = Pan::create(2, outputs, type, Pan::Early);
        const auto late = Pan::create(8, outputs, type, Pan::Diffuse);
        if (outputs > 2)
        {
            EXPECT_TRUE(isA<Quor::Vbap2DPanning>(direct));
            EXPECT_TRUE(isA<Quor::Vbap2DPanning>(early));
        }
        else
        {
            EXPECT_TRUE(isA<Quor::AngularPanning>(direct));
            EXPECT_TRUE(isA<Quor::AngularPanning>(early));
        }
        EXPECT_TRUE(isA<Quor::DiffusePanning>(late));
        EXPECT_EQ(direct->getType(), type);
        EXPECT_EQ(early->getSubType(), Pan::Early);
        EXPECT_EQ(late->getType(), type) << "the requested type is stored, whatever the class";
        EXPECT_EQ(late->getSubTypeName(), "diffuse");
        EXPECT_EQ(direct->getNumInputs(), 4u);
        EXPECT_EQ(direct->getNumOutputs(), outputs);
    }
}

TEST(PanFactory, CountsOutsideATypeGiveTheNullPanner)
{
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(1, 3, Pan::StereoPan, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(1, 1, Pan::Vbap2D, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::Vbip2DPanning>(Pan::create(1, 2, Pan::Vbip2D, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(1, 4, Pan::Hoa2D, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::DiffusePanning>(Pan::create(1, 4, Pan::Hoa2D, Pan::Diffuse)));
    EXPECT_TRUE(isA<Quor::DiffusePanning>(Pan::create(1, 5, Pan::Hoa3D, Pan::Diffuse)));
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(3, 2, Pan::Binaural, Pan::Diffuse)));
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(1, 2, static_cast<Pan::Type>(25), Pan::Direct)));
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(1, 2, static_cast<Pan::Type>(-3), Pan::Direct)));
    const auto null = Pan::create(2, 3, Pan::StereoPan, Pan::Early);
    EXPECT_EQ(null->getType(), Pan::Null);
    EXPECT_EQ(null->getSubType(), Pan::Direct);
}

TEST(PanFactory, SimplePannersNeedTheirCounts)
{
    EXPECT_TRUE(isA<Quor::StereoXYPanning>(Pan::create(3, 2, Pan::StereoXY, Pan::Early)));
    EXPECT_TRUE(isA<Quor::StereoMSPanning>(Pan::create(3, 2, Pan::StereoMS, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::StereoPanLaw>(Pan::create(3, 2, Pan::StereoPan, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(3, 1, Pan::StereoXY, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::SurroundPanning>(Pan::create(1, 3, Pan::Surround, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::SurroundPanning>(Pan::create(1, 4, Pan::Surround, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(1, 5, Pan::Surround, Pan::Direct)));
    for (std::uint32_t n : {4u, 5u, 6u, 7u, 8u, 12u})
        EXPECT_TRUE(isA<Quor::RecursivePanning>(Pan::create(1, n, Pan::Recursive, Pan::Direct))) << n;
    for (std::uint32_t n : {3u, 9u, 10u, 11u, 13u})
        EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(1, n, Pan::Recursive, Pan::Direct))) << n;
    EXPECT_TRUE(isA<Quor::VbapPanning>(Pan::create(1, 3, Pan::Vbap3D, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::VbipPanning>(Pan::create(1, 3, Pan::Vbip3D, Pan::Early)));
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(1, 2, Pan::Vbap3D, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::StereoABPanning>(Pan::create(2, 2, Pan::StereoAB, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::SubwoofersPanning>(Pan::create(2, 1, Pan::Subwoofers, Pan::Direct)));
    EXPECT_TRUE(isA<Quor::NullPanning>(Pan::create(2, 0, Pan::Subwoofers, Pan::Direct)));
}

TEST(PanFactory, DiffersFromTheConfigurationTestWhereItsTableDoes)
{
    // Angular needs nothing of the factory, one speaker of the test.
    EXPECT_TRUE(isA<Quor::AngularPanning>(Pan::create(1, 0, Pan::Angular, Pan::Direct)));
    EXPECT_FALSE(Pan::isConfigurationValid(Pan::Angular, 0));
    // The diffuse request of any type is served whatever the count.
    EXPECT_TRUE(isA<Quor::DiffusePanning>(Pan::create(2, 1, Pan::Vbap3D, Pan::Diffuse)));
    EXPECT_FALSE(Pan::isConfigurationValid(Pan::Vbap3D, 1));
}

TEST(PanFactory, NoPannerAllocatesWhileProcessing)
{
    struct Request
    {
        Pan::Type type;
        Pan::SubType subType;
        std::uint32_t speakers;
    };
    const Request requests[] = {
        {Pan::StereoXY, Pan::Direct, 2},  {Pan::StereoMS, Pan::Direct, 2}, {Pan::StereoAB, Pan::Direct, 2},
        {Pan::StereoPan, Pan::Direct, 2}, {Pan::Surround, Pan::Direct, 4}, {Pan::Recursive, Pan::Direct, 12},
        {Pan::Angular, Pan::Direct, 5},   {Pan::Vbap2D, Pan::Direct, 6},   {Pan::Vbip2D, Pan::Direct, 6},
        {Pan::Vbap3D, Pan::Direct, 6},    {Pan::Vbip3D, Pan::Direct, 6},   {Pan::Subwoofers, Pan::Direct, 3},
        {Pan::Vbap2D, Pan::Diffuse, 6},   {Pan::Hoa3D, Pan::Direct, 5},
    };
    for (const Request& r : requests)
    {
        const auto p = Pan::create(3, r.speakers, r.type, r.subType);
        if (r.type == Pan::Vbap3D || r.type == Pan::Vbip3D)
            p->setSpeakers(tarvo::testing::octahedron());
        Quor::testing::Block in(3, 700, 0.25f), out(r.speakers, 700);
        tarvo::testing::AllocationScope scope;
        for (int b = 0; b < 4; ++b)
        {
            p->setSourcePosition(b % 3, {0.5f * b, 1.0f, 0.1f}, false);
            p->process(out.get(), in.get(), b == 3 ? 700 : 64);
            p->processAdd(out.get(), in.get(), 64);
        }
        EXPECT_EQ(scope.count(), 0u) << Pan::typeToString(r.type);
        for (const auto& channel : out.data)
            for (float v : channel)
                ASSERT_TRUE(std::isfinite(v)) << Pan::typeToString(r.type);
    }
}

TEST(PanFactory, OrderTestsRunInSinglePrecision)
{
    // (n - 1) / 2 whole: 2M + 1. sqrt(n) - 1 whole: (M + 1)^2, which 0 passes.
    for (std::uint32_t n : {1u, 3u, 5u, 15u, 33u})
        EXPECT_TRUE(Pan::isConfigurationValid(Pan::Hoa2D, n)) << n;
    for (std::uint32_t n : {0u, 2u, 6u, 16u})
        EXPECT_FALSE(Pan::isConfigurationValid(Pan::Hoa2D, n)) << n;
    for (std::uint32_t n : {0u, 1u, 4u, 9u, 36u, 121u})
        EXPECT_TRUE(Pan::isConfigurationValid(Pan::Hoa3D, n)) << n;
    for (std::uint32_t n : {2u, 3u, 10u, 120u})
        EXPECT_FALSE(Pan::isConfigurationValid(Pan::Hoa3D, n)) << n;
}
} // namespace
