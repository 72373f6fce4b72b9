#include "pan/QuorAmbisonicEquivalentPanningAnalytic3D.h"
#include "pan/QuorHOA3DPanning.h"

#include "PanTestSupport.h"
#include "math/TarvoDspCoordinates.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using namespace Quor::testing;
using ondo::Coordinates;

// A control thread moves every source, switches the encoder between its modes and
// normalisations, and re-sends speakers, while the audio thread mixes an order-3 encoder and
// an equivalent panner. Run under ThreadSanitizer in CI. The audio thread must not allocate,
// and both panners must end on the gains of the last positions.
TEST(HOAPanningConcurrency, SourcesAndSpeakersChangeWhileTheAudioThreadMixes)
{
    constexpr std::uint32_t sources = 6, channels = 16, speakers = 12, blockSize = 64;
    Quor::HOA3DPanning hoa(sources, channels);
    Quor::AmbisonicEquivalentPanningAnalytic3D aep(sources, speakers);
    hoa.setInterpolationTime(2.0f);
    aep.setInterpolationTime(2.0f);
    Block in(sources, blockSize, 0.5f), hoaOut(channels, blockSize), aepOut(speakers, blockSize);

    auto place = [](int step, std::uint32_t s) {
        return Coordinates::fromNavigational(step * 1.7f + 60.0f * s, std::fmod(step * 0.9f, 170.0f) - 85.0f, 2.0f);
    };
    const AudioRun run = mixWhileControlRuns(
        [&] {
            for (int step = 0; step < 600; ++step)
            {
                for (std::uint32_t s = 0; s < sources; ++s)
                {
                    hoa.setSourcePosition(s, place(step, s), step % 7 == 0);
                    aep.setSourcePosition(s, place(step, s), step % 7 == 0);
                }
                if (step % 50 == 0)
                {
                    hoa.setComputationMode(step % 100 == 0 ? "fast" : "precise");
                    hoa.setAmbisonicNormalization(step % 100 == 0 ? ondo::Ambisonics::N3D : ondo::Ambisonics::SN3D);
                    aep.setSpeakers(ondo::Point3Array::defaultLayout(speakers - step % 3));
                }
            }
        },
        [&] {
            hoa.process(hoaOut.get(), in.get(), blockSize);
            aep.process(aepOut.get(), in.get(), blockSize);
        },
        {&hoaOut, &aepOut});
    EXPECT_EQ(run.allocations, 0u);
    EXPECT_TRUE(run.finite);
    EXPECT_GT(run.blocks, 1);

    Quor::HOA3DPanning hoaReference(sources, channels);
    Quor::AmbisonicEquivalentPanningAnalytic3D aepReference(sources, speakers);
    aepReference.setSpeakers(ondo::Point3Array::defaultLayout(speakers - 550 % 3));
    for (std::uint32_t s = 0; s < sources; ++s)
    {
        hoaReference.setSourcePosition(s, place(599, s), true);
        aepReference.setSourcePosition(s, place(599, s), true);
        EXPECT_EQ(gainsOf(hoa, s), gainsOf(hoaReference, s)) << s;
        EXPECT_EQ(gainsOf(aep, s), gainsOf(aepReference, s)) << s;
    }
}
} // namespace
