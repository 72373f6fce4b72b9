#include "reverb/QuorSourceSends.h"

#include "TestSignals.h"
#include "WideVectorsRestored.h"
#include "math/TarvoDspNonFinite.h"
#include "math/TarvoDspVectorPrimitives.h"
#include "math/TarvoDspWideVectors.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <vector>

namespace
{
/// Samples compared by their bits, so that the sign of a zero counts.
std::vector<std::uint32_t> bitsOf(const std::vector<float>& samples)
{
    std::vector<std::uint32_t> bits;
    for (float sample : samples)
        bits.push_back(std::bit_cast<std::uint32_t>(sample));
    return bits;
}

// The one pass must give, bit for bit, what the three passes it stands for give: the sources
// cleaned, the room bus as the sum of products from 0, each direct channel as the source
// times its gain (a gain of 0 giving +0, even for a negative sample). Both bodies, blocks
// that end inside a vector, direct channels apart from the sources and on them.
TEST(SourceSends, OnePassEqualsCleaningSummingAndScaling)
{
    const tarvo::testing::WideVectorsRestored wideAfterwards;
    const float unusable[] = {std::numeric_limits<float>::quiet_NaN(), -std::numeric_limits<float>::infinity(),
                              3.0e38f, -2.0e19f};
    const std::vector<float> sendGains = {0.5f, 1.0f, 0.25f, 0.0f, 2.0f};
    const std::vector<float> directGains = {1.0f, 0.0f, -0.75f, 0.3f, 1.5f};
    const auto numSources = static_cast<std::uint32_t>(sendGains.size());
    for (bool wide : {true, false})
        for (std::uint32_t n : {64u, 13u, 3u})
            for (bool inPlace : {false, true})
            {
                ondo::simd::allowWideVectors(wide);
                std::vector<std::vector<float>> sources(numSources), expectedDirect(numSources), direct(numSources);
                std::uint32_t expectedCount = 0;
                for (std::uint32_t i = 0; i < numSources; ++i)
                {
                    sources[i] = tarvo::testing::seededNoise(n, 17 + i);
                    for (std::uint32_t k = i; k < n; k += 5)
                        sources[i][k] = unusable[(i + k) % 4];
                    sources[i][n - 1] = -0.5f; // a negative sample at the gain of 0
                    expectedDirect[i] = sources[i];
                    expectedCount += ondo::NonFinite::zeroSamples(expectedDirect[i].data(), n);
                    direct[i].assign(n, 7.0f);
                }
                const std::vector<std::vector<float>> cleaned = expectedDirect;
                std::vector<const float*> cleanedPointers;
                for (const auto& source : cleaned)
                    cleanedPointers.push_back(source.data());
                std::vector<float> expectedRoom(n);
                ondo::primitives::vectorProductsConstant32(cleanedPointers.data(), sendGains.data(),
                                                           static_cast<int>(numSources), expectedRoom.data(),
                                                           static_cast<int>(n));
                for (std::uint32_t i = 0; i < numSources; ++i)
                    ondo::primitives::vectorMultiplyConstant32(cleaned[i].data(), directGains[i],
                                                               expectedDirect[i].data(), static_cast<int>(n));

                std::vector<float*> sourcePointers, directPointers;
                for (std::uint32_t i = 0; i < numSources; ++i)
                {
                    sourcePointers.push_back(sources[i].data());
                    directPointers.push_back(inPlace ? sources[i].data() : direct[i].data());
                }
                std::vector<float> room(n, 7.0f);
                const std::uint32_t count = Quor::runSourceSends(
                    {sourcePointers.data(), sendGains.data(), directGains.data(), room.data(), directPointers.data()},
                    numSources, n);
                const auto where = ::testing::Message() << "wide " << wide << " n " << n << " in place " << inPlace;
                EXPECT_EQ(count, expectedCount) << where;
                EXPECT_EQ(bitsOf(room), bitsOf(expectedRoom)) << where;
                for (std::uint32_t i = 0; i < numSources; ++i)
                {
                    EXPECT_EQ(bitsOf(inPlace ? sources[i] : direct[i]), bitsOf(expectedDirect[i]))
                        << where << " source " << i;
                    if (!inPlace)
                    {
                        EXPECT_EQ(bitsOf(sources[i]), bitsOf(cleaned[i])) << where << " source " << i;
                    }
                }
            }
}
} // namespace
