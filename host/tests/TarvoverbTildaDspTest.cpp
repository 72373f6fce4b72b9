#include "TarvoverbTildaTestSupport.h"

#include "AllocationCounter.h"
#include "math/TarvoDspPoint3Array.h"
#include "reverb/QuorTarvoVerb.h"

#include <atomic>
#include <cmath>
#include <random>
#include <thread>

namespace tarvo::testing
{
namespace
{
/// Channels of 64-bit blocks as the host hands them.
struct HostBlock
{
    HostBlock(std::size_t channels, std::size_t frames) : data(channels, std::vector<double>(frames))
    {
        for (auto& channel : data)
            pointers.push_back(channel.data());
    }
    std::vector<std::vector<double>> data;
    std::vector<double*> pointers;
};

void fillNoise(HostBlock& block, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> noise(-0.5, 0.5);
    for (auto& channel : block.data)
        for (double& v : channel)
            v = noise(generator);
}

// The object in a patch and the engine driven by hand with the same settings must give the
// same samples: the skin adds nothing to the sound.
TEST_F(TarvoverbTildaTest, PerformRoutineMatchesTheEngineDrivenDirectly)
{
    constexpr long sources = 3, speakers = 4, internals = 4, block = 128;
    constexpr double rate = 48000.0;
    mx::Box box = mx::Box::create("tarvoverb~", {"numsources 3", "numspeakers 4", "numinternals 4", "tr0 2.5",
                                                 "direct -3 1 0 -2 300 5000", "early_start 15"});
    ASSERT_TRUE(box);
    box.send("source 2 xyz 1. 2. 0.5");
    box.send("reverb gain -4");
    box.send("speakers ade 45 1 0 135 1 0 -135 1 0 -45 1 0");
    ASSERT_TRUE(errors().empty()) << errors().front();
    box.dsp(rate, block);
    ASSERT_TRUE(box.hasPerformRoutine());

    // The object was built at 44.1 kHz and started at 48 kHz: it must sound as an engine built
    // at 48 kHz, every filter and delay derived at that rate.
    Quor::TarvoVerb engine(internals);
    engine.configure(float(rate), block, sources, speakers);
    const ondo::HLShelfParameters flat{0.0f, 0.0f, 0.0f, 0.0f, 177.0f, 5657.0f};
    engine.setDirectFilter({-3.0f, 1.0f, 0.0f, -2.0f, 300.0f, 5000.0f});
    engine.setRoomFilter(flat);
    engine.setEarlyFilter(flat);
    engine.setClusterFilter(flat);
    engine.setReverbTimes({2.5f, 1.0f, 1.0f, 0.5f, 250.0f, 8000.0f}, -4.0f);
    engine.setReverbDensity(0.86f);
    engine.setAirEnabled(false);
    engine.setAirCutoff(10000.0f);
    engine.setInfinite(false);
    engine.setEarlyMin(15.0f);
    engine.setEarlyMax(39.71f);
    engine.setEarlyDistribution(0.5f);
    engine.setClusterMin(42.47f);
    engine.setClusterMax(105.64f);
    engine.setClusterDistribution(0.5f);
    engine.setReverbMin(95.37f);
    engine.setEarlyWidth(30.0f);
    engine.setEarlyShape(0.5f);
    engine.setAutoMuteAttack(20.0f);
    ondo::Point3Array layout(speakers);
    const float azimuths[speakers] = {45.0f, 135.0f, -135.0f, -45.0f};
    for (long i = 0; i < speakers; ++i)
        layout[std::size_t(i)] = ondo::Coordinates::fromNavigational(azimuths[i], 0.0f, 1.0f);
    engine.setSpeakerPositions(layout);
    const ondo::Point3Array start = engine.getSourcePositions();
    for (long i = 0; i < sources; ++i)
        engine.setSourcePosition(std::uint32_t(i), i == 1 ? ondo::Point3(1.0f, 2.0f, 0.5f) : start[std::size_t(i)]);
    const std::int16_t connected[sources + speakers] = {1, 1, 1, 1, 1, 1, 1};
    engine.setConnections(connected);

    HostBlock in(sources, block), outBox(speakers, block), outEngine(speakers, block);
    // Both settle on silence first, as a render does: the object reached its settings
    // through other intermediate values while it was built, and every glide must end.
    for (int b = 0; b < int(5.25 * rate / block); ++b)
    {
        box.perform(in.pointers.data(), sources, outBox.pointers.data(), speakers, block);
        engine.perform(outEngine.pointers.data(), in.pointers.data(), block, 0, 0, 0);
    }
    double energy = 0.0;
    for (int b = 0; b < 200; ++b)
    {
        fillNoise(in, unsigned(b));
        box.perform(in.pointers.data(), sources, outBox.pointers.data(), speakers, block);
        engine.perform(outEngine.pointers.data(), in.pointers.data(), block, 0, 0, 0);
        for (long c = 0; c < speakers; ++c)
            for (long k = 0; k < block; ++k)
            {
                ASSERT_EQ(outBox.data[std::size_t(c)][std::size_t(k)], outEngine.data[std::size_t(c)][std::size_t(k)])
                    << "block " << b << " channel " << c << " frame " << k;
                energy += outBox.data[std::size_t(c)][std::size_t(k)] * outBox.data[std::size_t(c)][std::size_t(k)];
            }
    }
    EXPECT_GT(energy, 1.0) << "the comparison must be of sound, not of silence";
}

TEST_F(TarvoverbTildaTest, MuteAndTheHostsDisableSilenceThePerformRoutine)
{
    mx::Box box = mx::Box::create("tarvoverb~", {"numsources 1", "numspeakers 2"});
    box.dsp(44100.0, 64);
    HostBlock in(1, 64), out(2, 64);
    fillNoise(in, 3);
    const auto loudness = [&] {
        double sum = 0.0;
        for (int b = 0; b < 400; ++b)
        {
            box.perform(in.pointers.data(), 1, out.pointers.data(), 2, 64);
            for (const auto& channel : out.data)
                for (double v : channel)
                    sum += std::abs(v);
        }
        return sum;
    };
    EXPECT_GT(loudness(), 0.0);
    box.send("mute 1");
    EXPECT_EQ(loudness(), 0.0);
    box.send("mute 0");
    box.setDisabled(true);
    EXPECT_EQ(loudness(), 0.0);
}
} // namespace
} // namespace tarvo::testing
