#include "reverb/QuorShuffle.h"

#include "AllocationCounter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace
{
/// Channel storage with a pointer table.
struct Channels
{
    Channels(std::uint32_t n, std::uint32_t samples) : data(n, std::vector<float>(samples))
    {
        for (auto& channel : data)
            pointers.push_back(channel.data());
    }
    float** get() { return pointers.data(); }
    std::vector<std::vector<float>> data;
    std::vector<float*> pointers;
};

/// The shuffle's N x N matrix, column c being the response to a unit impulse on input c.
std::vector<std::vector<double>> matrixOf(Quor::Shuffle& shuffle, bool inPlace)
{
    const std::uint32_t n = shuffle.getNumChannels();
    std::vector<std::vector<double>> m(n, std::vector<double>(n));
    for (std::uint32_t c = 0; c < n; ++c)
    {
        Channels in(n, 16), out(n, 16);
        in.data[c][0] = 1.0f;
        if (inPlace)
            shuffle.process(in.get(), in.get(), 16);
        else
            shuffle.process(out.get(), in.get(), 16);
        const Channels& result = inPlace ? in : out;
        for (std::uint32_t r = 0; r < n; ++r)
        {
            m[r][c] = result.data[r][0];
            EXPECT_EQ(result.data[r][5], 0.0f) << "a memoryless mix";
        }
    }
    return m;
}

TEST(Shuffle, ModeFollowsChannelCount)
{
    EXPECT_EQ(Quor::Shuffle(8).getModeName(), "hadamard");
    EXPECT_EQ(Quor::Shuffle(2).getModeName(), "hadamard");
    EXPECT_EQ(Quor::Shuffle(16).getModeName(), "hadamard");
    EXPECT_EQ(Quor::Shuffle(12).getModeName(), "mixed");
    EXPECT_EQ(Quor::Shuffle(6).getModeName(), "householder");
    EXPECT_EQ(Quor::Shuffle(10).getModeName(), "householder");
    EXPECT_EQ(Quor::Shuffle::modeToText(3), "hadamard-quor3");
    EXPECT_EQ(Quor::Shuffle::modeToText(4), "");
}

TEST(Shuffle, PermutationTables)
{
    EXPECT_EQ(Quor::Shuffle(2).getPermutation(), (ondo::Vector<std::uint32_t>{1, 0}));
    EXPECT_EQ(Quor::Shuffle(8).getPermutation(), (ondo::Vector<std::uint32_t>{6, 1, 2, 3, 5, 4, 7, 0}));
    EXPECT_EQ(Quor::Shuffle(5).getPermutation(), (ondo::Vector<std::uint32_t>{1, 2, 3, 4, 0}));
}

// Columns of unit length and mutually orthogonal, for every size a reverberator may use,
// both out of place and with outputs on the inputs.
TEST(Shuffle, IsOrthonormalForEverySizeFromTwoToSixteen)
{
    for (std::uint32_t n = 2; n <= 16; ++n)
    {
        for (bool inPlace : {false, true})
        {
            Quor::Shuffle shuffle(n);
            const auto m = matrixOf(shuffle, inPlace);
            for (std::uint32_t a = 0; a < n; ++a)
                for (std::uint32_t b = a; b < n; ++b)
                {
                    double dot = 0;
                    for (std::uint32_t r = 0; r < n; ++r)
                        dot += m[r][a] * m[r][b];
                    // float coefficients: a few ulps of 1
                    EXPECT_NEAR(dot, a == b ? 1.0 : 0.0, 1e-6)
                        << "n " << n << (inPlace ? " in place" : "") << " columns " << a << "," << b;
                }
        }
    }
}

TEST(Shuffle, PermutationDecidesWhereEachMixedChannelGoes)
{
    // Householder with 6 channels: mixed channel k is x_k - (2/6) sum x. Output i is mixed
    // channel permutation[i].
    Quor::Shuffle shuffle(6);
    Channels in(6, 1), out(6, 1);
    for (std::uint32_t c = 0; c < 6; ++c)
        in.data[c][0] = static_cast<float>(c + 1);
    shuffle.process(out.get(), in.get(), 1);
    const double sum = 21.0;
    const auto& p = shuffle.getPermutation();
    for (std::uint32_t i = 0; i < 6; ++i)
        EXPECT_NEAR(out.data[i][0], (p[i] + 1) - 2.0 * sum / 6.0, 1e-5);
}

TEST(Shuffle, MixedModeKeepsGroupsApartWithoutPermutation)
{
    Quor::Shuffle shuffle(12);
    shuffle.setPermutationEnabled(false);
    const auto m = matrixOf(shuffle, false);
    for (std::uint32_t r = 0; r < 12; ++r)
        for (std::uint32_t c = 0; c < 12; ++c)
        {
            if (r / 4 != c / 4)
                EXPECT_EQ(m[r][c], 0.0) << r << "," << c;
            else
                EXPECT_EQ(std::abs(m[r][c]), 0.5) << r << "," << c;
        }
}

TEST(Shuffle, BlocksLongerThanTheBufferAreServed)
{
    Quor::Shuffle shuffle(4);
    Channels in(4, 1000), out(4, 1000);
    in.data[0][999] = 1.0f;
    shuffle.process(out.get(), in.get(), 1000);
    double energy = 0;
    for (auto& channel : out.data)
        energy += channel[999] * channel[999];
    EXPECT_NEAR(energy, 1.0, 1e-6);
}

TEST(Shuffle, ProcessAllocatesNothing)
{
    for (std::uint32_t n : {6u, 8u, 12u})
    {
        Quor::Shuffle shuffle(n);
        Channels in(n, 64), out(n, 64);
        std::mt19937 rng(n);
        std::uniform_real_distribution<float> dist(-1, 1);
        for (auto& channel : in.data)
            for (auto& x : channel)
                x = dist(rng);
        shuffle.processBlock(out.get(), in.get(), 64);
        tarvo::testing::AllocationScope scope;
        for (int b = 0; b < 10; ++b)
        {
            shuffle.processBlock(out.get(), in.get(), 64);
            shuffle.processBlock(in.get(), in.get(), 32);
        }
        EXPECT_EQ(scope.count(), 0u) << n << " channels";
    }
}
} // namespace
