#include "dsp/TarvoDspMonoEqualizer.h"
#include "dsp/TarvoDspMultiEqualizer.h"

#include "AllocationCounter.h"
#include "FilterResponse.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
using ondo::FilterShape;
using ondo::MonoEqualizer;

double measured(MonoEqualizer& eq, double hertz, double rate)
{
    return 20.0 * std::log10(tarvo::testing::measuredGain(
                      [&](float* o, const float* i, int n) {
                          float* in = const_cast<float*>(i);
                          eq.process(&o, &in, static_cast<std::uint32_t>(n));
                      },
                      hertz, rate));
}

TEST(MonoEqualizer, StartsFlatWithBandsOff)
{
    MonoEqualizer eq(3);
    EXPECT_EQ(eq.getNumBands(), 3);
    EXPECT_EQ(eq.getBand(2).getType(), FilterShape::off);
    EXPECT_EQ(eq.getBand(1).getFrequency(), 1000.0);
    std::vector<float> in(64, 0.5f), out(64);
    float* i = in.data();
    float* o = out.data();
    eq.process(&o, &i, 64);
    EXPECT_EQ(out, in);
}

TEST(MonoEqualizer, BandsCombineIntoTheCascade)
{
    MonoEqualizer eq(2);
    eq.setFilterType(0, FilterShape::peak, true);
    eq.setFrequency(0, 500.0, true);
    eq.setGain(0, 6.0, true);
    eq.setFilterType(1, FilterShape::highShelf, true);
    eq.setFrequency(1, 6000.0, true);
    eq.setGain(1, -9.0, true);
    eq.setQ(1, 1.0, true);
    eq.setGain(7, 3.0, true); // no such band: ignored
    for (double hertz : {500.0, 3000.0, 15000.0})
    {
        const double expected = tarvo::testing::magnitudeDb(eq.getBand(0).getCoefficients(), hertz, 44100.0) +
                                tarvo::testing::magnitudeDb(eq.getBand(1).getCoefficients(), hertz, 44100.0);
        // Projection over about 4096 float samples: 0.02 dB.
        EXPECT_NEAR(measured(eq, hertz, 44100.0), expected, 0.02) << hertz;
    }
    EXPECT_NEAR(measured(eq, 500.0, 44100.0), 6.0, 0.05);
}

TEST(MonoEqualizer, RateChangeRedesignsTheBands)
{
    MonoEqualizer eq(1);
    eq.setFilterType(0, FilterShape::peak, true);
    eq.setFrequency(0, 2000.0, true);
    eq.setGain(0, 8.0, true);
    eq.changeSampleRate(96000.0f);
    EXPECT_EQ(eq.getBand(0).getSampleRate(), 96000.0);
    EXPECT_NEAR(measured(eq, 2000.0, 96000.0), 8.0, 0.05);
}

TEST(MonoEqualizer, GrowingAddsBandsThatAreOff)
{
    MonoEqualizer eq(1);
    eq.changeSampleRate(48000.0f);
    eq.setNumBands(3);
    EXPECT_EQ(eq.getBand(2).getType(), FilterShape::off);
    EXPECT_EQ(eq.getBand(2).getSampleRate(), 48000.0);
    EXPECT_EQ(eq.getCascade().getNumSections(), 3);
    EXPECT_EQ(eq.getCascade().getNumPendingCoefficients(), 18u);
    eq.setNumBands(1);
    EXPECT_EQ(eq.getCascade().getNumSections(), 1);
}

TEST(MultiEqualizer, ChannelsAreIndependentAndShareTheBandCount)
{
    ondo::MultiEqualizer eq(2, 2);
    EXPECT_EQ(eq.getChannel(1).getNumBands(), 2);
    eq.setFilterType(1, 0, FilterShape::gain, true);
    eq.setGain(1, 0, -6.0, true);
    eq.setGain(5, 0, -6.0, true); // no such channel: ignored
    std::vector<float> a(64, 1.0f), b(64, 1.0f), oa(64), ob(64);
    float* ins[] = {a.data(), b.data()};
    float* outs[] = {oa.data(), ob.data()};
    tarvo::testing::AllocationScope scope;
    for (int k = 0; k < 30; ++k)
        eq.process(outs, ins, 64);
    EXPECT_EQ(scope.count(), 0u);
    EXPECT_EQ(oa.back(), 1.0f);
    EXPECT_NEAR(ob.back(), std::pow(10.0, -6.0 / 20.0), 1e-6);
    eq.setNumChannels(3);
    EXPECT_EQ(eq.getChannel(2).getNumBands(), 2);
}
} // namespace
