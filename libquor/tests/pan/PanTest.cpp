#include "pan/QuorAngularPanning.h"
#include "pan/QuorNullPanning.h"
#include "pan/QuorPan.h"

#include "AllocationCounter.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
using Quor::Pan;

TEST(Pan, TypeNamesPrintTheFirstAndAcceptEveryListedSpelling)
{
    EXPECT_EQ(Pan::typeToString(Pan::Vbap2D), "vbap2d");
    EXPECT_EQ(Pan::typeToString(Pan::Hoa3D), "hoa3d");
    EXPECT_EQ(Pan::typeToString(Pan::Null), "null");
    EXPECT_EQ(Pan::typeToString(99), "null");
    EXPECT_EQ(Pan::stringToType("ortf"), Pan::StereoAB);
    EXPECT_EQ(Pan::stringToType("vbap-3D"), Pan::Vbap3D);
    EXPECT_EQ(Pan::stringToType("vbap-3d"), Pan::Null) << "the capital D is the accepted spelling";
    EXPECT_EQ(Pan::stringToType("vbip-3d"), Pan::Vbip3D);
    EXPECT_EQ(Pan::stringToType("nfchoa3D"), Pan::NfcHoa3D);
    EXPECT_EQ(Pan::stringToType("lfe"), Pan::Subwoofers);
    EXPECT_EQ(Pan::stringToType("null"), Pan::Null) << "null is printed, not accepted";
    EXPECT_EQ(Pan::stringToType("Angular"), Pan::Null) << "names are case exact";
    for (int t = 0; t < 25; ++t)
        EXPECT_EQ(Pan::stringToType(Pan::typeToString(t)), t);
}

TEST(Pan, SubTypeNamesAndTheirDefaults)
{
    EXPECT_EQ(Pan::stringToSubType("snowman"), Pan::SnowmanModel);
    EXPECT_EQ(Pan::stringToSubType("diffuse"), Pan::Diffuse);
    EXPECT_EQ(Pan::stringToSubType("nonsense"), Pan::Direct);
    EXPECT_EQ(Pan::subTypeToString(Pan::Continuous), "continuous");
    EXPECT_EQ(Pan::subTypeToString(7), "null");
}

TEST(Pan, ConfigurationTestFollowsItsOwnTable)
{
    struct Row
    {
        int type;
        std::vector<std::uint32_t> good, bad;
    };
    const std::vector<Row> rows = {
        {Pan::Binaural, {2}, {0, 1, 3}},       {Pan::StereoPan, {2}, {1, 3}},
        {Pan::Surround, {3, 4}, {2, 5}},        {Pan::BFormat, {3, 4}, {1, 5}},
        {Pan::Recursive, {4, 5, 8, 12}, {3, 9, 11, 13}},
        {Pan::Angular, {1, 64}, {0}},           {Pan::Knn, {1}, {0}},
        {Pan::Vbap2D, {2, 3}, {0, 1}},          {Pan::Vbip3D, {3}, {2}},
        {Pan::Dbap2D, {3}, {1, 2}},             {Pan::VDbap, {3}, {2}},
        {Pan::Hoa2D, {1, 3, 5, 7}, {0, 2, 4}},  {Pan::NfcHoa2D, {9}, {8}},
        {Pan::Hoa3D, {0, 1, 4, 9, 16}, {2, 8, 15}}, {Pan::NfcHoa3D, {25}, {24}},
        {Pan::Aep2D, {5}, {4}},                 {Pan::Aep3D, {6}, {4}},
        {Pan::Null, {}, {0, 2, 4}},             {-1, {}, {2}},
        {40, {}, {2}},
    };
    for (const Row& row : rows)
    {
        for (std::uint32_t n : row.good)
            EXPECT_TRUE(Pan::isConfigurationValid(row.type, n)) << row.type << " with " << n;
        for (std::uint32_t n : row.bad)
            EXPECT_FALSE(Pan::isConfigurationValid(row.type, n)) << row.type << " with " << n;
    }
}

TEST(Pan, RefusedRequestGivesTheNullPanner)
{
    const auto p = Pan::create(2, 3, Pan::StereoPan, Pan::Direct);
    ASSERT_NE(dynamic_cast<Quor::NullPanning*>(p.get()), nullptr);
    EXPECT_EQ(p->getType(), Pan::Null);
    EXPECT_EQ(p->getSubType(), Pan::Direct);
    EXPECT_EQ(p->getTypeName(), "null");
    EXPECT_EQ(p->getNumInputs(), 2u);
    EXPECT_EQ(p->getNumOutputs(), 3u);
    EXPECT_FALSE(p->is2D());
    Quor::StringArray lines;
    p->getInfos(lines);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "panning type : null");
    EXPECT_EQ(lines[1], "panning subtype : direct");
}

TEST(Pan, NullPannerClearsEvenWhenAdding)
{
    Quor::NullPanning p(1, 2);
    std::vector<float> in(8, 1.0f), a(8, 3.0f), b(8, -2.0f);
    float* inputs[] = {in.data()};
    float* outputs[] = {a.data(), b.data()};
    tarvo::testing::AllocationScope scope;
    p.processAdd(outputs, inputs, 8);
    EXPECT_EQ(scope.count(), 0u);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(a[i] + b[i], 0.0f);
    EXPECT_EQ(a[0], 0.0f);
}

TEST(Pan, BaseDefaultsOfTheOptionalOperations)
{
    Quor::NullPanning p(3, 2);
    EXPECT_EQ(p.getSourcesPosition().size(), 3u);
    EXPECT_EQ(p.getSourcesPosition()[2], ondo::Point3(0, 1, 0));
    EXPECT_EQ(p.getSpeakersPosition()[1], ondo::Point3());
    EXPECT_EQ(p.getItdScaling(), 100.0f);
    // Every panner without filters reports the one shared empty set, never a null.
    ASSERT_NE(p.getHrtf(), nullptr);
    EXPECT_EQ(p.getHrtf(), Quor::AngularPanning(2, 2).getHrtf());
    EXPECT_TRUE(p.getHrtf()->isEmpty());
    EXPECT_EQ(p.getHrtf()->getNumPoints(), 0u);
    EXPECT_FALSE(p.loadHrtf("nothing.sofa"));
    EXPECT_EQ(p.getListenerOrientation(), ondo::Rotation::identity());
    EXPECT_EQ(p.getInterpolationTime(), 0.0f);
    EXPECT_FALSE(p.isAmplitudePanning());
    p.setSourceMute(1, true);
    EXPECT_EQ(p.getSourcesMute()[1], 1);
    p.setSourceMute(9, true); // beyond the sources: nothing
}
} // namespace
