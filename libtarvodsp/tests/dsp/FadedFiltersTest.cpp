#include "common/TarvoDspException.h"
#include "dsp/TarvoDspFadedBiquad.h"
#include "dsp/TarvoDspFadedCascade.h"
#include "dsp/TarvoDspFadedFirFilter.h"
#include "dsp/TarvoDspFadedFirstOrder.h"
#include "dsp/TarvoDspHLShelfParameters.h"

#include "AllocationCounter.h"
#include "FilterResponse.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace
{
using ondo::BiquadCoefficients;
using ondo::Crossfade;
using ondo::FadedBiquad;
using State = ondo::FadedFilters<ondo::BiquadIPP>::State;

BiquadCoefficients gain(double g)
{
    return {g, 0, 0, 1, 0, 0};
}

// Runs `n` samples of constant 1 and returns the output.
std::vector<float> ones(FadedBiquad& f, std::uint32_t n, bool add = false, float preset = 0.0f)
{
    std::vector<float> in(n, 1.0f), out(n, preset);
    f.filterBlock(out.data(), in.data(), n, add);
    return out;
}

// Linear gains accumulate one float step a sample over a few hundred steps: 1e-4.
constexpr float gainTolerance = 1e-4f;

TEST(FadedFilters, StartsWithAAloneAndNothingPending)
{
    FadedBiquad f;
    EXPECT_EQ(f.getFadeStage(), State::playingA);
    EXPECT_EQ(f.getGainA(), 1.0f);
    EXPECT_EQ(f.getGainB(), 0.0f);
    EXPECT_FALSE(f.isChangePending());
    EXPECT_EQ(f.getCrossfadeTime(), 5.0f);
    EXPECT_EQ(ones(f, 8), std::vector<float>(8, 1.0f));
}

TEST(FadedFilters, WarmUpEndsWithItsBlockAndTheFadeFollowsInTheNext)
{
    FadedBiquad f; // 44100 Hz, 5 ms
    f.setCoefficients(gain(0.5), false);
    EXPECT_TRUE(f.isChangePending());
    const std::vector<float> first = ones(f, 512);
    EXPECT_EQ(f.getFadeStage(), State::warmingB);
    EXPECT_FALSE(f.isChangePending());
    EXPECT_EQ(first, std::vector<float>(512, 1.0f)) << "A sounds alone through the 22-sample warm-up";
    const std::vector<float> second = ones(f, 512);
    EXPECT_EQ(f.getFadeStage(), State::playingB);
    for (int i = 0; i < 221; ++i)
        EXPECT_NEAR(second[i], 1.0f - 0.5f * i / 221.0f, gainTolerance) << i;
    for (int i = 221; i < 512; ++i)
        EXPECT_EQ(second[i], 0.5f) << i;
}

TEST(FadedFilters, AFadeSpanningSeveralBlocksCarriesOn)
{
    FadedBiquad f;
    f.setCoefficients(gain(0.0 + 0.25), false);
    ones(f, 64); // warm-up
    std::vector<float> all;
    for (int b = 0; b < 4; ++b)
    {
        const std::vector<float> block = ones(f, 64);
        all.insert(all.end(), block.begin(), block.end());
        EXPECT_EQ(f.getFadeStage(), b < 3 ? State::fadingToB : State::playingB) << b;
    }
    for (int i = 0; i < 221; ++i)
        EXPECT_NEAR(all[i], 1.0f - 0.75f * i / 221.0f, gainTolerance) << i;
    for (std::size_t i = 221; i < all.size(); ++i)
        EXPECT_EQ(all[i], 0.25f) << "the new instance alone from the sample after the fade";
}

TEST(FadedFilters, TheWayBackStepsOverOneSampleFewer)
{
    FadedBiquad f;
    f.setCoefficients(gain(0.5), true);
    ASSERT_EQ(f.getFadeStage(), State::playingB);
    f.setCoefficients(gain(1.5), false);
    ones(f, 512);
    EXPECT_EQ(f.getFadeStage(), State::warmingA);
    const std::vector<float> block = ones(f, 512);
    EXPECT_EQ(f.getFadeStage(), State::playingA);
    // A rises over 220 steps, so it is at 1 on the last sample of the 221.
    for (int i = 0; i < 221; ++i)
        EXPECT_NEAR(block[i], 0.5f + (1.5f - 0.5f) * i / 220.0f, gainTolerance) << i;
    EXPECT_EQ(block[221], 1.5f);
}

TEST(FadedFilters, AChangeDuringAFadeWaitsForItsEndAndOnlyTheLastPlays)
{
    FadedBiquad f;
    f.setCoefficients(gain(0.5), false);
    ones(f, 64);
    ones(f, 64); // fading to 0.5
    f.setCoefficients(gain(2.0), false);
    f.setCoefficients(gain(3.0), false);
    EXPECT_EQ(f.getFadeStage(), State::fadingToB);
    std::vector<float> block;
    for (int b = 0; b < 4; ++b)
        block = ones(f, 64);
    EXPECT_EQ(f.getFadeStage(), State::warmingA) << "the waiting change starts after the fade";
    EXPECT_EQ(block.back(), 0.5f);
    for (int b = 0; b < 6; ++b)
        block = ones(f, 64);
    EXPECT_EQ(f.getFadeStage(), State::playingA);
    EXPECT_EQ(block.back(), 3.0f);
}

TEST(FadedFilters, TwoChangesInOneBlockLoseTheFirst)
{
    FadedBiquad f;
    f.setCrossfadeTime(0.0f);
    f.setCoefficients(gain(0.5), false);
    f.setCoefficients(gain(0.25), false);
    EXPECT_EQ(ones(f, 16), std::vector<float>(16, 0.25f));
}

TEST(FadedFilters, ATimeOfZeroMakesEveryChangeImmediate)
{
    FadedBiquad f;
    f.setCrossfadeTime(-3.0f);
    EXPECT_EQ(f.getCrossfadeTime(), 0.0f);
    f.setCoefficients(gain(0.5), false);
    EXPECT_EQ(ones(f, 16), std::vector<float>(16, 0.5f));
    EXPECT_EQ(f.getFadeStage(), State::playingB);
    f.setCoefficients(gain(0.75), false);
    EXPECT_EQ(ones(f, 16), std::vector<float>(16, 0.75f));
    EXPECT_EQ(f.getFadeStage(), State::playingA);
}

TEST(FadedFilters, ImmediateChangeInstallsAtOnce)
{
    FadedBiquad f;
    f.setCoefficients(gain(0.5), true);
    EXPECT_EQ(f.getFadeStage(), State::playingB);
    EXPECT_FALSE(f.isChangePending());
    EXPECT_EQ(ones(f, 4), std::vector<float>(4, 0.5f));
}

TEST(FadedFilters, AOneSampleFadeUsesNoInfiniteStep)
{
    FadedBiquad f;
    f.setCrossfadeTime(0.01f); // 0.441 samples: a fade of one
    EXPECT_EQ(f.getFadeLength(), 1);
    f.setCoefficients(gain(0.5), true);
    f.setCoefficients(gain(2.0), false);
    ones(f, 64);
    const std::vector<float> block = ones(f, 64);
    EXPECT_TRUE(std::isinf(f.getIncrementA()));
    EXPECT_EQ(block[0], 0.5f) << "the one faded sample still weighs B fully";
    EXPECT_EQ(block[1], 2.0f);
    EXPECT_EQ(f.getFadeStage(), State::playingA);
}

TEST(FadedFilters, AddingFormAddsInEveryStage)
{
    FadedBiquad f;
    EXPECT_EQ(ones(f, 8, true, 1.0f), std::vector<float>(8, 2.0f));
    f.setCoefficients(gain(0.5), false);
    ones(f, 64, true);
    const std::vector<float> fading = ones(f, 512, true, 1.0f);
    EXPECT_NEAR(fading[100], 1.0f + 1.0f - 0.5f * 100 / 221.0f, gainTolerance);
    EXPECT_EQ(fading[400], 1.5f);
}

TEST(FadedFilters, CosineLawsFollowTheirClosedForms)
{
    for (const Crossfade::Type type : {Crossfade::cosine, Crossfade::squareCosine})
    {
        FadedBiquad f(type);
        EXPECT_EQ(f.getCrossfadeType(), type);
        f.setCoefficients(gain(-1.0), false);
        ones(f, 64);
        const std::vector<float> block = ones(f, 512);
        for (int i = 0; i < 221; ++i)
        {
            const double phase = std::numbers::pi / 2 * i / 221.0;
            const double c = std::cos(phase), s = std::sin(phase);
            const double expected = type == Crossfade::cosine ? c - s : c * c - s * s;
            EXPECT_NEAR(block[i], expected, 1e-4) << Crossfade::toText(type) << " " << i;
        }
        EXPECT_EQ(block[300], -1.0f);
    }
}

TEST(FadedFilters, CrossfadeNamesFallBackToLinear)
{
    EXPECT_EQ(Crossfade::toText(2), "squareCosine");
    EXPECT_EQ(Crossfade::toText(7), "linear");
    EXPECT_EQ(Crossfade::fromText("cosine"), Crossfade::cosine);
    EXPECT_EQ(Crossfade::fromText("nope"), Crossfade::linear);
}

TEST(FadedFilters, ClearAndRateChangeKeepTheStage)
{
    FadedBiquad f;
    f.setCoefficients(gain(0.5), false);
    ones(f, 64);
    ones(f, 64);
    const int remaining = f.getRemaining();
    f.clear();
    f.changeSampleRate(48000.0f);
    EXPECT_EQ(f.getFadeStage(), State::fadingToB);
    EXPECT_EQ(f.getRemaining(), remaining);
}

// While a sine runs and the shelf changes every block, the output may only move as fast
// as the two filters' steady outputs and the fade's gain step allow; a switch that loses
// the state jumps far beyond that.
TEST(FadedFilters, CoefficientsChangingEveryBlockNeverClick)
{
    const float fs = 44100.0f;
    const BiquadCoefficients designs[] = {ondo::designHLShelf({0, 6, 0, -9, 500, 4000}, fs),
                                         ondo::designHLShelf({0, -6, 3, 0, 300, 2000}, fs)};
    const double hertz = 1000.0;
    double largestGain = 0.0;
    for (const auto& d : designs)
        largestGain = std::max(largestGain, tarvo::testing::magnitude(d, hertz, fs));
    const double w = 2.0 * std::numbers::pi * hertz / fs;
    const int fadeLength = 221;
    // Steady slope of a sinusoid of amplitude G, plus the gain step across |a - b| <= 2G;
    // half as much again for the warm-up transient that remains.
    const double bound = 1.5 * largestGain * (w + 2.0 / fadeLength);

    auto largestStep = [&](auto&& runBlock) {
        std::vector<float> block(64);
        double largest = 0.0;
        float previous = 0.0f;
        int sample = 0;
        for (int b = 0; b < 300; ++b)
        {
            for (float& x : block)
                x = static_cast<float>(std::sin(w * sample++));
            runBlock(b, block);
            for (float y : block)
            {
                if (b > 20)
                    largest = std::max(largest, static_cast<double>(std::fabs(y - previous)));
                previous = y;
            }
        }
        return largest;
    };

    FadedBiquad faded;
    const double fadedStep = largestStep([&](int b, std::vector<float>& block) {
        faded.setCoefficients(designs[b % 2], false);
        faded.filterBlock(block.data(), block.data(), 64);
    });
    EXPECT_LT(fadedStep, bound);

    ondo::BiquadIPP switched;
    const double switchedStep = largestStep([&](int b, std::vector<float>& block) {
        switched.setCoefficients(designs[b % 2]);
        switched.clear();
        switched.filter(block.data(), block.data(), 64);
    });
    EXPECT_GT(switchedStep, bound) << "the bound is tight enough to see a click";
}

TEST(FadedFilters, ProcessingAllocatesNothingInAnyStage)
{
    FadedBiquad f(Crossfade::squareCosine);
    const BiquadCoefficients shelf = ondo::designHLShelf({0, 3, 0, -3, 250, 4000}, 44100.0f);
    std::vector<float> block(512, 0.5f);
    float* io = block.data();
    tarvo::testing::AllocationScope scope;
    for (int b = 0; b < 40; ++b)
    {
        if (b % 7 == 0)
            f.setCoefficients(b % 2 ? shelf : gain(0.5), false);
        f.process(&io, &io, 64);
        f.filterBlock(io, io, 64, true);
    }
    EXPECT_EQ(scope.count(), 0u);
}

TEST(FadedFilters, NoDenormalsAfterABurstThenSilence)
{
    FadedBiquad f;
    f.setCoefficients(ondo::designHLShelf({0, 12, 0, -12, 100, 1000}, 44100.0f), true);
    std::vector<float> block(256, 1.0f);
    float* io = block.data();
    f.processBlock(&io, &io, 256);
    bool anyDenormal = false;
    for (int b = 0; b < 2000; ++b)
    {
        std::fill(block.begin(), block.end(), 0.0f);
        f.processBlock(&io, &io, 256);
        for (float v : block)
            anyDenormal |= std::fpclassify(v) == FP_SUBNORMAL;
    }
    EXPECT_FALSE(anyDenormal);
}

TEST(FadedCascade, WithoutSectionsIgnoresCoefficientsAndPassesTheSignal)
{
    ondo::FadedCascade f(0);
    ondo::CascadeCoefficients c(1);
    c.setSection(0, gain(0.5));
    f.setCoefficients(c, true);
    EXPECT_FALSE(f.isChangePending());
    std::vector<float> in{1.0f, 2.0f}, out(2);
    f.filterBlock(out.data(), in.data(), 2);
    EXPECT_EQ(out, in);
    f.setNumSections(2);
    EXPECT_EQ(f.getNumPendingCoefficients(), 12u);
    f.setCoefficients(c, true); // a missing section counts as unit
    f.filterBlock(out.data(), in.data(), 2);
    EXPECT_EQ(out, (std::vector<float>{0.5f, 1.0f}));
}

// The request made while audio runs leaves the stage to the audio thread: nothing moves on
// the caller's side, and the next block plays the new sections whole, with no fade.
TEST(FadedCascade, AFadeSkippingRequestWaitsForTheNextBlock)
{
    ondo::FadedCascade f(1);
    ondo::CascadeCoefficients c(1);
    c.setSection(0, gain(0.25));
    f.requestCoefficients(c, true);
    EXPECT_TRUE(f.isChangePending());
    EXPECT_EQ(f.getFadeStage(), State::playingA);
    std::vector<float> in(4, 1.0f), out(4);
    f.filterBlock(out.data(), in.data(), 4);
    EXPECT_EQ(out, std::vector<float>(4, 0.25f));
    EXPECT_FALSE(f.isChangePending());
    c.setSection(0, gain(0.5));
    f.requestCoefficients(c, false);
    f.filterBlock(out.data(), in.data(), 4);
    EXPECT_EQ(f.getFadeStage(), State::warmingA) << "without the request a change warms up first";
}

TEST(FadedFirFilter, TheIncomingInstanceTakesTheHistory)
{
    ondo::FadedFirFilter f(2);
    EXPECT_EQ(f.getNumPendingCoefficients(), 3u);
    const float identity[] = {1.0f, 0.0f, 0.0f};
    const float delay[] = {0.0f, 0.0f, 1.0f};
    f.setCoefficients(identity, true);
    f.setCrossfadeTime(0.0f);
    std::vector<float> in{1, 2, 3, 4, 5, 6}, out(6);
    f.filterBlock(out.data(), in.data(), 3);
    f.setCoefficients(delay, false);
    f.filterBlock(out.data() + 3, in.data() + 3, 3);
    // The delayed output continues from the history the other instance had collected.
    EXPECT_EQ(out, (std::vector<float>{1, 2, 3, 2, 3, 4}));
    EXPECT_THROW(f.setMethod(static_cast<ondo::Fir::Method>(1)), ondo::Exception);
    f.setOrder(4);
    EXPECT_EQ(f.getNumPendingCoefficients(), 5u);
    EXPECT_EQ(f.getFilterA().getNumCoefficients(), 5);
}

TEST(FadedFirstOrder, PlaysItsNewSectionAfterTheFade)
{
    ondo::FadedFirstOrder f;
    const float half[] = {0.5f, 0.0f, 0.0f};
    f.setCoefficients(half, false);
    std::vector<float> in(512, 1.0f), out(512);
    f.filterBlock(out.data(), in.data(), 512);
    f.filterBlock(out.data(), in.data(), 512);
    EXPECT_EQ(f.getFadeStage(), State::playingB);
    EXPECT_EQ(out.back(), 0.5f);
}
} // namespace
