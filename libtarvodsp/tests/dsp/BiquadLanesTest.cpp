#include "dsp/TarvoDspBiquadLanes.h"

#include "TestBiquads.h"
#include "TestSignals.h"
#include "WideVectorsRestored.h"
#include "math/TarvoDspWideVectors.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace
{
using tarvo::testing::resonantSection;

// Every channel of the side-by-side kernel must give, bit for bit, what its own filter gives
// (or its two filters in turn), and carry its delay lines on alike: with the baseline bodies
// and with the wider ones, for partial groups of lanes and blocks that end inside a row of
// samples.
TEST(BiquadLanes, SideBySideMatchesEachChannelsOwnFiltersInEveryBody)
{
    const tarvo::testing::WideVectorsRestored wideAfterwards;
    for (bool wide : {false, true})
    for (bool twoStages : {false, true})
    {
        ondo::simd::allowWideVectors(wide);
        for (int count : {1, 2, 3, 5, 8, 9, 16, 17})
            for (int n : {1, 7, 8, 13, 64})
            {
                std::vector<std::unique_ptr<ondo::BiquadIPP>> lanes, alone, secondLanes, secondAlone;
                std::vector<ondo::BiquadIPP*> filters, seconds;
                std::vector<std::vector<float>> io(count), expected(count);
                std::vector<float*> outputs;
                std::vector<const float*> inputs;
                for (int c = 0; c < count; ++c)
                {
                    lanes.push_back(resonantSection(c));
                    alone.push_back(resonantSection(c));
                    filters.push_back(lanes.back().get());
                    secondLanes.push_back(resonantSection(count + c));
                    secondAlone.push_back(resonantSection(count + c));
                    seconds.push_back(secondLanes.back().get());
                }
                for (int block = 0; block < 3; ++block)
                {
                    outputs.clear();
                    inputs.clear();
                    for (int c = 0; c < count; ++c)
                    {
                        io[c] = tarvo::testing::seededNoise(static_cast<std::size_t>(n), 97u * block + c);
                        expected[c].resize(io[c].size());
                        alone[c]->filter(expected[c].data(), io[c].data(), n);
                        if (twoStages)
                            secondAlone[c]->filter(expected[c].data(), expected[c].data(), n);
                        outputs.push_back(io[c].data());
                        inputs.push_back(io[c].data());
                    }
                    ondo::filterBiquadsSideBySide(filters.data(), outputs.data(), inputs.data(), count, n,
                                                  twoStages ? seconds.data() : nullptr);
                    for (int c = 0; c < count; ++c)
                        ASSERT_EQ(io[c], expected[c]) << "wide " << wide << " stages " << 1 + twoStages << " count "
                                                      << count << " n " << n << " block " << block << " c " << c;
                }
            }
    }
}

TEST(BiquadLanes, WideBodiesAreUsedOnlyWhereTheProcessorHasThem)
{
    const tarvo::testing::WideVectorsRestored wideAfterwards;
    ondo::simd::allowWideVectors(true);
    EXPECT_EQ(ondo::simd::useWideVectors(), ondo::simd::processorHasWideVectors());
    ondo::simd::allowWideVectors(false);
    EXPECT_FALSE(ondo::simd::useWideVectors());
}
} // namespace
