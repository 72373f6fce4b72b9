#include "dsp/TarvoDspBiquadCookbook.h"
#include "dsp/TarvoDspBiquadIPP.h"

#include "AllocationCounter.h"
#include "FilterResponse.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
using tarvo::testing::noise;

using ondo::BiquadCoefficients;
using ondo::BiquadIPP;

// Direct form I in double: a different structure from the filter under test.
std::vector<double> referenceDirectForm(const BiquadCoefficients& c, const std::vector<float>& in)
{
    std::vector<double> out(in.size());
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
    for (std::size_t i = 0; i < in.size(); ++i)
    {
        const double y = (c.b0 * in[i] + c.b1 * x1 + c.b2 * x2 - c.a1 * y1 - c.a2 * y2) / c.a0;
        x2 = x1;
        x1 = in[i];
        y2 = y1;
        y1 = y;
        out[i] = y;
    }
    return out;
}

const BiquadCoefficients resonant{0.2, 0.1, 0.05, 1.0, -1.6, 0.81};

TEST(BiquadIPP, MatchesADirectFormReferenceOnNoise)
{
    BiquadIPP biquad;
    biquad.setCoefficients(resonant);
    const std::vector<float> in = noise(2000);
    std::vector<float> out(in.size());
    biquad.filter(out.data(), in.data(), static_cast<int>(in.size()));
    const std::vector<double> expected = referenceDirectForm(resonant, in);
    // Single-precision recursion with poles at radius 0.9: errors stay below 1e-4 of a
    // signal that peaks around 3.
    for (std::size_t i = 0; i < in.size(); ++i)
        ASSERT_NEAR(out[i], expected[i], 1e-4) << i;
}

TEST(BiquadIPP, CoefficientsWithA0OfTwoAreStoredDivided)
{
    BiquadIPP biquad;
    biquad.setCoefficients(BiquadCoefficients{0.4, 0.2, 0.1, 2.0, -1.6, 0.81});
    EXPECT_EQ(biquad.getCoefficients(), (BiquadCoefficients{0.2, 0.1, 0.05, 1.0, -0.8, 0.405}));
    EXPECT_EQ(biquad.getTaps()[3], 1.0f);
}

TEST(BiquadIPP, ReinstallingWithTheSameDelayLineCarriesTheSignalOn)
{
    const std::vector<float> in = noise(512);
    BiquadIPP whole, split;
    whole.setCoefficients(resonant);
    split.setCoefficients(resonant);
    std::vector<float> a(512), b(512);
    whole.filter(a.data(), in.data(), 512);
    split.filter(b.data(), in.data(), 200);
    split.setCoefficients(resonant); // a re-initialisation between two blocks
    split.filter(b.data() + 200, in.data() + 200, 312);
    EXPECT_EQ(a, b);
}

TEST(BiquadIPP, GainOnlySectionMultipliesAndKeepsItsDelayLineAtZero)
{
    BiquadIPP biquad;
    biquad.setCoefficients(resonant);
    std::vector<float> in = noise(64), out(64);
    biquad.filter(out.data(), in.data(), 64);
    biquad.setCoefficients(BiquadCoefficients{0.5, 0, 0, 2, 0, 0});
    EXPECT_TRUE(biquad.isGainOnlySection());
    biquad.filter(out.data(), in.data(), 64);
    for (int i = 0; i < 64; ++i)
        EXPECT_EQ(out[i], in[i] * 0.25f);
    const float* line = biquad.getSections().getDelayLine();
    EXPECT_EQ(line[0], 0.0f);
    EXPECT_EQ(line[1], 0.0f);
}

TEST(BiquadIPP, ZeroB0DoesNotReachTheSignal)
{
    // A known limit: the primitive refuses the section, the former taps stay in force
    // while the record already shows the new values.
    BiquadIPP a, b;
    a.setCoefficients(resonant);
    b.setCoefficients(resonant);
    b.setCoefficients(BiquadCoefficients{0.0, 1.0, 0.0, 1.0, 0.0, 0.0});
    EXPECT_EQ(b.getCoefficients().b0, 0.0);
    const std::vector<float> in = noise(128);
    std::vector<float> outA(128), outB(128);
    a.filter(outA.data(), in.data(), 128);
    b.filter(outB.data(), in.data(), 128);
    EXPECT_EQ(outA, outB);
}

TEST(BiquadIPP, MeasuredSineGainAgreesWithTheEvaluatedMagnitude)
{
    ondo::BiquadCookbook design(ondo::FilterShape::peak);
    design.setFrequency(2000.0);
    design.setQ(2.0);
    design.setGain(9.0);
    BiquadIPP biquad;
    biquad.setCoefficients(design.getCoefficients());
    for (double hertz : {200.0, 1000.0, 2000.0, 5000.0, 12000.0})
    {
        biquad.clear();
        const double measured =
            tarvo::testing::measuredGain([&](float* o, const float* i, int n) { biquad.filter(o, i, n); }, hertz, 44100.0);
        // Projection over about 4096 samples of a float signal: 0.02 dB covers leakage and rounding.
        EXPECT_NEAR(20.0 * std::log10(measured), tarvo::testing::magnitudeDb(design.getCoefficients(), hertz, 44100.0),
                    0.02)
            << hertz;
    }
}

TEST(BiquadIPP, InPlaceFilteringAllocatesNothing)
{
    BiquadIPP biquad;
    biquad.setCoefficients(resonant);
    std::vector<float> block = noise(512);
    float* io = block.data();
    tarvo::testing::AllocationScope scope;
    biquad.process(&io, &io, 512);
    biquad.setCoefficients(resonant);
    biquad.filter(io, io, 512);
    EXPECT_EQ(scope.count(), 0u);
}

TEST(BiquadIPP, InactiveInletGivesSilence)
{
    BiquadIPP biquad;
    const std::int16_t counts[] = {0, 1};
    biquad.setConnections(counts);
    std::vector<float> in(16, 1.0f), out(16, 3.0f);
    float* i = in.data();
    float* o = out.data();
    biquad.processBlock(&o, &i, 16);
    EXPECT_EQ(out, std::vector<float>(16, 0.0f));
}
} // namespace
