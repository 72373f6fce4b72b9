#include "pan/QuorNFCHOAPanning3D.h"

#include "PanTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using namespace Quor::testing;

// A control thread moves every source near and far (redesigning filters and high-passes),
// mutes one, switches the compensation and the ring's radius, while the audio thread runs
// an order-2 near-field panner. Run under ThreadSanitizer in CI. The audio thread must not
// allocate, and once it has caught up every filter must hold the design of the last state.
TEST(NFCHOAPanningConcurrency, SourcesMoveWhileTheAudioThreadRuns)
{
    constexpr std::uint32_t sources = 4, channels = 9, blockSize = 64;
    Quor::NFCHOAPanning3D panner(sources, channels);
    Block in(sources, blockSize, 0.5f), out(channels, blockSize);
    auto place = [](int step, std::uint32_t s) {
        const float r = 0.1f + 0.01f * float((step * 7 + 40 * int(s)) % 300);
        const float t = 0.05f * float(step) + float(s);
        return ondo::Point3{r * std::cos(t), r * std::sin(t), 0.2f * r};
    };
    const AudioRun run = mixWhileControlRuns(
        [&] {
            for (int step = 0; step < 400; ++step)
            {
                for (std::uint32_t s = 0; s < sources; ++s)
                    panner.setSourcePosition(s, place(step, s), step % 9 == 0);
                if (step % 40 == 0)
                {
                    panner.setNfcCompensation(step % 80 == 0);
                    panner.setNfcSpeakersRadius(1.0f + 0.01f * float(step));
                    panner.setSourceMute(3, step % 80 == 0);
                }
            }
        },
        [&] { panner.process(out.get(), in.get(), blockSize); }, {&out});
    EXPECT_EQ(run.allocations, 0u);
    EXPECT_TRUE(run.finite);
    EXPECT_GT(run.blocks, 1);

    Quor::NFCHOAPanning3D reference(sources, channels);
    reference.setNfcSpeakersRadius(1.0f + 0.01f * 360.0f);
    for (int b = 0; b < 20; ++b) // every pending design installed
        panner.process(out.get(), in.get(), blockSize);
    for (std::uint32_t s = 0; s < sources; ++s)
    {
        reference.setSourcePosition(s, place(399, s), true);
        for (std::uint32_t l = 1; l <= 2; ++l)
        {
            const auto& filter = panner.getVoice(s).getFilterBank().getFilter(l);
            ASSERT_NE(filter.getSteadyFilter(), nullptr);
            EXPECT_EQ(filter.getSteadyFilter()->getSections(),
                      reference.getVoice(s).getFilterBank().getModel(l).getSections())
                << s << " " << l;
        }
    }
}
} // namespace
