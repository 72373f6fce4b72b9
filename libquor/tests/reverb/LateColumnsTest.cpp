#include "reverb/QuorLateColumns.h"

#include "TestBiquads.h"
#include "TestSignals.h"
#include "WideVectorsRestored.h"
#include "dsp/TarvoDspFastHadamardTransform.h"
#include "math/TarvoDspWideVectors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace
{
using tarvo::testing::resonantSection;

/// One line's filters twice: those the pass runs, and those the steps run.
struct LineFilters
{
    std::unique_ptr<ondo::BiquadIPP> shelf, air, ownShelf, ownAir;
};

// The one-pass chunk must give, bit for bit, what its steps give one after the other: each
// line through its own filters, the output scaled, the input added, the stage-by-stage
// Hadamard transform and the gain, written where the targets say; and the filters must
// carry on alike over chunks; with sums, each line's input and output summed in that order.
// Both bodies, one or two stages, chunks that end inside a column, and outputs that land on
// the inputs (read after they are written).
TEST(LateColumns, OnePassEqualsTheStepsInTurn)
{
    const tarvo::testing::WideVectorsRestored wideAfterwards;
    for (bool wide : {true, false})
        for (std::uint32_t lines : {8u, 16u})
            for (bool air : {false, true})
                for (int n : {64, 29, 3})
                    for (bool shared : {false, true})
                    {
                        ondo::simd::allowWideVectors(wide);
                        const float f = 1.25f;
                        const float g = shared ? 1.0f : -0.75f;
                        if (!Quor::canRunLateColumns(lines, f, g))
                            continue; // sixteen lines need the wider body
                        const float gain = 1.0f / std::sqrt(static_cast<float>(lines));
                        std::vector<LineFilters> filters(lines);
                        std::vector<ondo::BiquadIPP*> shelves, airs;
                        for (std::uint32_t l = 0; l < lines; ++l)
                        {
                            const auto i = static_cast<int>(l);
                            filters[l] = {resonantSection(i), resonantSection(i + 20), resonantSection(i),
                                          resonantSection(i + 20)};
                            shelves.push_back(filters[l].shelf.get());
                            airs.push_back(filters[l].air.get());
                        }
                        ondo::FastHadamardTransform hadamard(lines, ondo::FastHadamardTransform::natural, false);
                        for (std::uint32_t chunk = 0; chunk < 3; ++chunk)
                        {
                            const bool summed = chunk == 1;
                            const float dry = 0.3f;
                            const float wet = -1.7f;
                            std::vector<std::vector<float>> reads(lines), inputs(lines), outputs(lines),
                                mixed(lines, std::vector<float>(n)), sums(lines, std::vector<float>(n)),
                                expectedOut(lines, std::vector<float>(n)), expectedMixed(lines, std::vector<float>(n)),
                                expectedSums(lines, std::vector<float>(n));
                            std::vector<const float*> readPointers, inputPointers;
                            std::vector<float*> outputPointers, mixedPointers, sumPointers, steps;
                            for (std::uint32_t l = 0; l < lines; ++l)
                            {
                                const auto length = static_cast<std::size_t>(n);
                                reads[l] = tarvo::testing::seededNoise(length, 31 * chunk + l);
                                inputs[l] = tarvo::testing::seededNoise(length, 977 + 31 * chunk + l);
                                outputs[l] = shared ? inputs[l] : std::vector<float>(n);
                                std::vector<float> t(n);
                                filters[l].ownShelf->filter(t.data(), reads[l].data(), n);
                                if (air)
                                    filters[l].ownAir->filter(t.data(), t.data(), n);
                                for (int i = 0; i < n; ++i)
                                {
                                    expectedOut[l][i] = t[i] * f;
                                    const float x = shared ? expectedOut[l][i] : inputs[l][i];
                                    expectedMixed[l][i] = t[i] + x * g;
                                    expectedSums[l][i] = x * dry;
                                    expectedSums[l][i] += expectedOut[l][i] * wet;
                                }
                                readPointers.push_back(reads[l].data());
                                // Shared: the pass reads and writes the same samples.
                                inputPointers.push_back(shared ? outputs[l].data() : inputs[l].data());
                                outputPointers.push_back(outputs[l].data());
                                // The targets run backwards, as a permutation places them.
                                mixedPointers.push_back(mixed[lines - 1 - l].data());
                                sumPointers.push_back(sums[l].data());
                                steps.push_back(expectedMixed[l].data());
                            }
                            hadamard.transform(steps.data(), static_cast<std::uint32_t>(n));
                            for (auto& line : expectedMixed)
                                for (float& sample : line)
                                    sample *= gain;

                            Quor::runLateColumns({readPointers.data(), shelves.data(), air ? airs.data() : nullptr,
                                                  inputPointers.data(), outputPointers.data(), mixedPointers.data(), f,
                                                  g, gain, summed ? sumPointers.data() : nullptr, dry, wet},
                                                 lines, static_cast<std::uint32_t>(n));
                            for (std::uint32_t l = 0; l < lines; ++l)
                            {
                                const auto where = ::testing::Message()
                                                   << "wide " << wide << " lines " << lines << " air " << air << " n "
                                                   << n << " shared " << shared << " chunk " << chunk << " line " << l;
                                ASSERT_EQ(outputs[l], expectedOut[l]) << where;
                                ASSERT_EQ(mixed[lines - 1 - l], expectedMixed[l]) << where;
                                if (summed)
                                {
                                    ASSERT_EQ(sums[l], expectedSums[l]) << where;
                                }
                            }
                        }
                    }
}

TEST(LateColumns, TakesOnlyTheChunksItCanRunExactly)
{
    const tarvo::testing::WideVectorsRestored wideAfterwards;
    // Other line counts, sixteen on the baseline, and factors of 0, whose exact zeros the
    // steps give by shortcut.
    EXPECT_FALSE(Quor::canRunLateColumns(4, 1.0f, 1.0f));
    EXPECT_FALSE(Quor::canRunLateColumns(12, 1.0f, 1.0f));
    EXPECT_FALSE(Quor::canRunLateColumns(8, 0.0f, 1.0f));
    EXPECT_FALSE(Quor::canRunLateColumns(8, 1.0f, 0.0f));
    EXPECT_TRUE(Quor::canRunLateColumns(8, 1.0f, -1.0f));
    EXPECT_EQ(Quor::canRunLateColumns(16, 1.0f, 1.0f), ondo::simd::useWideVectors());
    ondo::simd::allowWideVectors(false);
    EXPECT_FALSE(Quor::canRunLateColumns(16, 1.0f, 1.0f));
}
} // namespace
