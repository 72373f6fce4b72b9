#include "pan/QuorVbap2DPanning.h"

#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using namespace Quor::testing;
using ondo::Coordinates;

// A control thread moves every source while the audio thread mixes. Run under
// ThreadSanitizer in CI: the hand-over must be free of data races. Afterwards the panner
// must stand on the gains of the last positions given.
TEST(PanConcurrency, SourcesMovedWhileTheAudioThreadMixes)
{
    constexpr std::uint32_t sources = 8, speakers = 8, blockSize = 64;
    Quor::Vbap2DPanning panner(sources, speakers);
    panner.setSpeakers(ondo::Point3Array::defaultLayout(speakers));
    panner.setInterpolationTime(2.0f);
    Block in(sources, blockSize, 0.5f), out(speakers, blockSize);

    const AudioRun run = mixWhileControlRuns(
        [&] {
            for (int step = 0; step < 3000; ++step)
                for (std::uint32_t s = 0; s < sources; ++s)
                    panner.setSourcePosition(s, Coordinates::fromNavigational(step * 1.7f + 45.0f * s, 0.0f, 1.0f),
                                             step % 5 == 0);
        },
        [&] { panner.process(out.get(), in.get(), blockSize); }, {&out});
    for (int b = 0; b < 10; ++b)
        panner.process(out.get(), in.get(), blockSize);
    EXPECT_TRUE(run.finite);
    EXPECT_GT(run.blocks, 1);
    EXPECT_EQ(run.allocations, 0u);
    // Each source has unit power on at most two speakers: never above sources * 0.5 * 1.
    EXPECT_LE(run.loudest, sources * 0.5f + 1e-4f);

    Quor::Vbap2DPanning reference(sources, speakers);
    reference.setSpeakers(ondo::Point3Array::defaultLayout(speakers));
    for (std::uint32_t s = 0; s < sources; ++s)
    {
        reference.setSourcePosition(s, Coordinates::fromNavigational(2999 * 1.7f + 45.0f * s, 0.0f, 1.0f), true);
        for (std::uint32_t o = 0; o < speakers; ++o)
            EXPECT_EQ(panner.getMatrix().getTargetGain(s, o), gainsOf(reference, s)[o]) << s << " " << o;
    }
}
} // namespace
