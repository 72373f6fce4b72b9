#include "dsp/TarvoDspFastHadamardTransform.h"

#include "WideVectorsRestored.h"
#include "math/TarvoDspWideVectors.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace
{
using ondo::FastHadamardTransform;

/// `size` channels of `n` seeded samples.
struct Channels
{
    Channels(std::uint32_t size, std::uint32_t n, unsigned seed) : data(size, std::vector<float>(n))
    {
        std::mt19937 rng(seed);
        std::uniform_int_distribution<int> dist(-8, 8); // small integers: sums stay exact
        for (auto& channel : data)
        {
            for (auto& x : channel)
                x = static_cast<float>(dist(rng));
            pointers.push_back(channel.data());
        }
    }
    float** get() { return pointers.data(); }
    std::vector<std::vector<float>> data;
    std::vector<float*> pointers;
};

/// Sylvester's Hadamard matrix entry: (-1)^popcount(r & c), natural order.
int sylvester(std::uint32_t r, std::uint32_t c)
{
    return (__builtin_popcount(r & c) % 2) ? -1 : 1;
}

/// Sign changes along a row: the sequency of a Walsh function.
int signChanges(const std::vector<int>& row)
{
    int changes = 0;
    for (std::size_t i = 1; i < row.size(); ++i)
        changes += row[i] != row[i - 1];
    return changes;
}

/// The transform's matrix, column by column from unit impulses.
std::vector<std::vector<int>> matrixOf(const FastHadamardTransform& t)
{
    const std::uint32_t n = t.getSize();
    std::vector<std::vector<int>> m(n, std::vector<int>(n));
    for (std::uint32_t c = 0; c < n; ++c)
    {
        Channels x(n, 1, 0);
        for (std::uint32_t r = 0; r < n; ++r)
            x.data[r][0] = r == c ? 1.0f : 0.0f;
        t.transform(x.get(), 1);
        for (std::uint32_t r = 0; r < n; ++r)
            m[r][c] = static_cast<int>(x.data[r][0]);
    }
    return m;
}

TEST(FastHadamardTransform, SizeTwoGivesSumAndDifference)
{
    FastHadamardTransform t(2);
    Channels x(2, 3, 1);
    const auto a = x.data[0], b = x.data[1];
    t.transform(x.get(), 3);
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(x.data[0][i], a[i] + b[i]);
        EXPECT_EQ(x.data[1][i], a[i] - b[i]);
    }
}

TEST(FastHadamardTransform, NaturalOrderIsSylvestersMatrix)
{
    for (std::uint32_t n : {2u, 4u, 8u, 16u})
    {
        const auto m = matrixOf(FastHadamardTransform(n));
        for (std::uint32_t r = 0; r < n; ++r)
            for (std::uint32_t c = 0; c < n; ++c)
                ASSERT_EQ(m[r][c], sylvester(r, c)) << "n " << n << " at " << r << "," << c;
    }
}

TEST(FastHadamardTransform, SequencyOrderSortsRowsBySignChanges)
{
    for (std::uint32_t n : {4u, 8u, 16u})
    {
        const auto m = matrixOf(FastHadamardTransform(n, FastHadamardTransform::sequency));
        for (std::uint32_t r = 0; r < n; ++r)
            EXPECT_EQ(signChanges(m[r]), static_cast<int>(r)) << "n " << n << " row " << r;
    }
}

/// Walsh's function of sequency k at sample j of n, from its definition: the product of the
/// Rademacher functions r_1 .. r_m picked by the Gray code of k, r_i being the sign of the
/// i-th most significant bit of j.
int walsh(std::uint32_t k, std::uint32_t j, std::uint32_t n)
{
    const std::uint32_t bits = static_cast<std::uint32_t>(__builtin_ctz(n));
    const std::uint32_t gray = k ^ (k >> 1);
    int value = 1;
    for (std::uint32_t i = 0; i < bits; ++i)
        if (((gray >> i) & 1u) != 0 && ((j >> (bits - 1 - i)) & 1u) != 0)
            value = -value;
    return value;
}

TEST(FastHadamardTransform, SequencyOrderIsWalshsMatrix)
{
    for (std::uint32_t n : {2u, 4u, 8u, 16u})
    {
        const auto m = matrixOf(FastHadamardTransform(n, FastHadamardTransform::sequency));
        for (std::uint32_t r = 0; r < n; ++r)
            for (std::uint32_t c = 0; c < n; ++c)
                ASSERT_EQ(m[r][c], walsh(r, c, n)) << "n " << n << " at " << r << "," << c;
    }
}

TEST(FastHadamardTransform, DyadicOrderIsNaturalWithBitReversedInputs)
{
    const std::uint32_t n = 8;
    const auto m = matrixOf(FastHadamardTransform(n, FastHadamardTransform::dyadic));
    const auto reversed = [](std::uint32_t i) { return ((i & 1) << 2) | (i & 2) | ((i & 4) >> 2); };
    for (std::uint32_t r = 0; r < n; ++r)
        for (std::uint32_t c = 0; c < n; ++c)
            EXPECT_EQ(m[r][c], sylvester(r, reversed(c)));
}

TEST(FastHadamardTransform, AppliedTwiceScalesBySize)
{
    for (auto ordering : {FastHadamardTransform::natural, FastHadamardTransform::sequency, FastHadamardTransform::dyadic})
    {
        FastHadamardTransform t(16, ordering);
        Channels x(16, 5, 3);
        const auto original = x.data;
        t.transform(x.get(), 5);
        if (ordering == FastHadamardTransform::natural)
        {
            t.transform(x.get(), 5);
            for (std::uint32_t c = 0; c < 16; ++c)
                for (int i = 0; i < 5; ++i)
                    EXPECT_EQ(x.data[c][i], 16.0f * original[c][i]);
        }
        else
        {
            // Orthogonal up to the scale: the energy grows by exactly `size`.
            double before = 0, after = 0;
            for (std::uint32_t c = 0; c < 16; ++c)
                for (int i = 0; i < 5; ++i)
                {
                    before += original[c][i] * original[c][i];
                    after += x.data[c][i] * x.data[c][i];
                }
            EXPECT_EQ(after, 16.0 * before);
        }
    }
}

TEST(FastHadamardTransform, OutOfPlaceLeavesInputAndMatchesInPlace)
{
    for (auto ordering : {FastHadamardTransform::natural, FastHadamardTransform::sequency})
    {
        FastHadamardTransform t(8, ordering);
        Channels in(8, 7, 4), out(8, 7, 5);
        Channels reference = in;
        reference.pointers.clear();
        for (auto& channel : reference.data)
            reference.pointers.push_back(channel.data());
        const auto original = in.data;
        t.transform(out.get(), in.get(), 7);
        t.transform(reference.get(), 7);
        EXPECT_EQ(in.data, original);
        EXPECT_EQ(out.data, reference.data);
    }
}

// Integer samples keep every sum exact, so the scaled columns must equal the product of
// Sylvester's matrix and the input, rounded once, times the gain: in the baseline body and in
// the wider one.
TEST(FastHadamardTransform, ColumnsInPlaceAreSylvestersProductTimesTheGain)
{
    const tarvo::testing::WideVectorsRestored wideAfterwards;
    for (bool wide : {false, true})
    for (std::uint32_t size : {2u, 4u, 8u, 16u})
        for (float gain : {1.0f, 0.35355339f})
        {
            ondo::simd::allowWideVectors(wide);
            FastHadamardTransform t(size);
            constexpr std::uint32_t n = 19; // whole vectors and a scalar tail in both bodies
            Channels x(size, n, size);
            const auto original = x.data;
            ASSERT_TRUE(t.transformColumns(x.get(), x.get(), n, gain));
            for (std::uint32_t r = 0; r < size; ++r)
                for (std::uint32_t i = 0; i < n; ++i)
                {
                    double sum = 0.0;
                    for (std::uint32_t c = 0; c < size; ++c)
                        sum += sylvester(r, c) * static_cast<double>(original[c][i]);
                    ASSERT_EQ(x.data[r][i], static_cast<float>(sum) * gain) << size << " " << r << " " << i;
                }
        }
}

TEST(FastHadamardTransform, ColumnsRefuseOtherSizesAndOrderings)
{
    Channels x(32, 4, 1);
    const auto original = x.data;
    EXPECT_FALSE(FastHadamardTransform(32).transformColumns(x.get(), x.get(), 4, 1.0f));
    EXPECT_FALSE(FastHadamardTransform(8, FastHadamardTransform::sequency).transformColumns(x.get(), x.get(), 4, 1.0f));
    EXPECT_EQ(x.data, original);
}

TEST(FastHadamardTransform, SizeOneLeavesTheChannel)
{
    FastHadamardTransform t(1);
    Channels x(1, 4, 6);
    const auto original = x.data;
    t.transform(x.get(), 4);
    EXPECT_EQ(x.data, original);
}

TEST(FastHadamardTransform, OrderingNames)
{
    EXPECT_EQ(FastHadamardTransform::orderingFromText("SequencyWalshOrdering"), FastHadamardTransform::sequency);
    EXPECT_EQ(FastHadamardTransform::orderingFromText("dyadic"), FastHadamardTransform::dyadic);
    EXPECT_EQ(FastHadamardTransform::orderingFromText("NaturalOrdering"), FastHadamardTransform::natural);
    EXPECT_EQ(FastHadamardTransform::orderingFromText("bogus"), FastHadamardTransform::natural);
    EXPECT_EQ(FastHadamardTransform::orderingToText(0), "sequency");
    EXPECT_EQ(FastHadamardTransform::orderingToText(1), "dyadic");
    EXPECT_EQ(FastHadamardTransform::orderingToText(99), "natural");
}

TEST(FastHadamardTransform, BitReversalTable)
{
    FastHadamardTransform t(8);
    const ondo::Vector<std::uint32_t> expected{0, 4, 2, 6, 1, 5, 3, 7};
    EXPECT_EQ(t.getPermutation(), expected);
}
} // namespace
