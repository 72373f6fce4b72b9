#include "dsp/TarvoDspBiquadCoefficients.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{
using ondo::BiquadCoefficients;
using ondo::CascadeCoefficients;

TEST(BiquadCoefficients, DefaultIsUnitGain)
{
    const BiquadCoefficients c;
    EXPECT_EQ(c, (BiquadCoefficients{1, 0, 0, 1, 0, 0}));
    EXPECT_TRUE(c.isGainOnly());
}

TEST(BiquadCoefficients, NormalizeDividesByA0AndLeavesItAtOne)
{
    BiquadCoefficients c{2, 4, 6, 2, 1, 0.5};
    c.normalize();
    EXPECT_EQ(c, (BiquadCoefficients{1, 2, 3, 1, 0.5, 0.25}));
}

TEST(BiquadCoefficients, ZeroA0IsLeftAsItStands)
{
    const BiquadCoefficients c{2, 4, 6, 0, 1, 0.5};
    EXPECT_EQ(c.normalized(), c);
    double five[5];
    c.getNormalized(five);
    EXPECT_EQ(five[0], 2.0);
    EXPECT_EQ(five[4], 0.5);
}

TEST(BiquadCoefficients, GainOnlyNeedsAllFourMemoryTermsZero)
{
    EXPECT_TRUE((BiquadCoefficients{3, 0, 0, 2, 0, 0}.isGainOnly()));
    EXPECT_FALSE((BiquadCoefficients{3, 0, 0, 1, 0, 0.1}.isGainOnly()));
    EXPECT_FALSE((BiquadCoefficients{3, 0.1, 0, 1, 0, 0}.isGainOnly()));
}

TEST(CascadeCoefficients, ResizeMakesUnitSectionsAndCopyIsDeep)
{
    CascadeCoefficients a(2);
    a.setSection(1, {2, 0, 0, 1, 0, 0});
    CascadeCoefficients b = a;
    a.setSection(1, {3, 0, 0, 1, 0, 0});
    EXPECT_EQ(b[0], BiquadCoefficients{});
    EXPECT_EQ(b[1].b0, 2.0);
    a.resize(3);
    EXPECT_EQ(a[2], BiquadCoefficients{});
}

TEST(CascadeCoefficients, ValidCountsFollowEachFormat)
{
    using F = CascadeCoefficients;
    EXPECT_TRUE(F::isValidCount(12, F::sixPerSection));
    EXPECT_FALSE(F::isValidCount(0, F::sixPerSection));
    EXPECT_FALSE(F::isValidCount(7, F::sixPerSection));
    EXPECT_TRUE(F::isValidCount(5, F::gainAndFourPerSection));
    EXPECT_TRUE(F::isValidCount(9, F::gainAndFourPerSection));
    EXPECT_FALSE(F::isValidCount(1, F::gainAndFourPerSection));
    EXPECT_FALSE(F::isValidCount(8, F::gainAndFourPerSection));
    EXPECT_TRUE(F::isValidCount(10, F::fivePerSection));
    EXPECT_FALSE(F::isValidCount(0, F::fivePerSection));
    EXPECT_FALSE(F::isValidCount(6, F::fivePerSection));
}

TEST(CascadeCoefficients, GainAndFourScalesTheFirstSectionOnly)
{
    CascadeCoefficients c;
    const float values[] = {2.0f, 0.5f, 0.25f, -0.5f, 0.125f, 1.0f, 2.0f, 3.0f, 4.0f};
    ASSERT_TRUE(c.setFromFlat(values, 9, CascadeCoefficients::gainAndFourPerSection));
    ASSERT_EQ(c.size(), 2u);
    EXPECT_EQ(c[0], (BiquadCoefficients{2, 1, 0.5, 1, -0.5, 0.125}));
    EXPECT_EQ(c[1], (BiquadCoefficients{1, 1, 2, 1, 3, 4}));
}

TEST(CascadeCoefficients, InvalidCountLeavesTheListUnchanged)
{
    CascadeCoefficients c(1);
    c.setSection(0, {5, 0, 0, 1, 0, 0});
    const float values[7] = {};
    EXPECT_FALSE(c.setFromFlat(values, 7, CascadeCoefficients::sixPerSection));
    EXPECT_EQ(c.size(), 1u);
    EXPECT_EQ(c[0].b0, 5.0);
}

TEST(CascadeCoefficients, FlatFormsRoundTrip)
{
    CascadeCoefficients c;
    const float five[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    ASSERT_TRUE(c.setFromFlat(five, 10, CascadeCoefficients::fivePerSection));
    EXPECT_EQ(c[1], (BiquadCoefficients{6, 7, 8, 1, 9, 10}));
    const ondo::Vector<float> flat = c.toFlat();
    ASSERT_EQ(flat.size(), 12u);
    CascadeCoefficients d;
    ASSERT_TRUE(d.setFromFlat(flat.data(), flat.size(), CascadeCoefficients::sixPerSection));
    EXPECT_EQ(c, d);
    c.setSection(0, {2, 4, 6, 2, 8, 10});
    const ondo::Vector<double> normalized = c.toFive();
    ASSERT_EQ(normalized.size(), 10u);
    EXPECT_EQ(std::vector<double>(normalized.begin(), normalized.begin() + 5), (std::vector<double>{1, 2, 3, 4, 5}));
}
} // namespace
