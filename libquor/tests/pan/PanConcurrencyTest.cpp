#include "pan/QuorVbap2DPanning.h"

#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>

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

    std::atomic<bool> running{true};
    std::atomic<int> blocks{0};
    std::thread control([&] {
        // Start once the audio thread is mixing, so that the two surely overlap.
        while (blocks.load() == 0)
            std::this_thread::yield();
        for (int step = 0; step < 3000; ++step)
            for (std::uint32_t s = 0; s < sources; ++s)
                panner.setSourcePosition(s, Coordinates::fromNavigational(step * 1.7f + 45.0f * s, 0.0f, 1.0f),
                                         step % 5 == 0);
        running = false;
    });
    bool finite = true;
    float loudest = 0.0f;
    while (running)
    {
        panner.process(out.get(), in.get(), blockSize);
        blocks.fetch_add(1);
        for (const auto& channel : out.data)
            for (float v : channel)
            {
                finite &= std::isfinite(v);
                loudest = std::max(loudest, std::fabs(v));
            }
    }
    control.join();
    for (int b = 0; b < 10; ++b)
        panner.process(out.get(), in.get(), blockSize);
    EXPECT_TRUE(finite);
    EXPECT_GT(blocks.load(), 1);
    // Each source has unit power on at most two speakers: never above sources * 0.5 * 1.
    EXPECT_LE(loudest, sources * 0.5f + 1e-4f);

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
