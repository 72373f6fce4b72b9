#include "dsp/TarvoDspDelay.h"

#include "AllocationCounter.h"
#include "TestSignals.h"
#include "common/TarvoDspException.h"
#include "dsp/TarvoDspRamp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <cmath>
#include <numbers>
#include <vector>

namespace
{
using Mode = ondo::Delay::InterpolationMode;

const std::vector<Mode> allModes{ondo::Delay::nearest,      ondo::Delay::linear,   ondo::Delay::lagrange3,
                                 ondo::Delay::allpass,      ondo::Delay::nearestXfade, ondo::Delay::hermite3,
                                 ondo::Delay::watte3,       ondo::Delay::bspline3, ondo::Delay::parabolic};

/// Runs `input` through `delay` in blocks of the given sizes, cycling through them.
std::vector<float> run(ondo::AudioProcessorBase& delay, const std::vector<float>& input, std::vector<std::uint32_t> blocks = {64})
{
    std::vector<float> output(input.size());
    std::size_t start = 0;
    for (std::size_t b = 0; start < input.size(); ++b)
    {
        const auto n = static_cast<std::uint32_t>(std::min<std::size_t>(blocks[b % blocks.size()], input.size() - start));
        float* in = const_cast<float*>(input.data() + start);
        float* out = output.data() + start;
        delay.process(&out, &in, n);
        start += n;
    }
    return output;
}

std::vector<float> run(const std::unique_ptr<ondo::Delay>& delay, const std::vector<float>& input,
                       std::vector<std::uint32_t> blocks = {64})
{
    return run(*delay, input, std::move(blocks));
}

std::vector<float> noise(std::size_t n, unsigned seed = 7)
{
    return tarvo::testing::seededNoise(n, seed);
}

/// A line standing at `samples` with `mode`.
std::unique_ptr<ondo::Delay> standing(Mode mode, float samples, float maximumMs = 200.0f)
{
    auto delay = std::make_unique<ondo::Delay>(maximumMs, mode);
    delay->setDelayInSamples(samples, true);
    return delay;
}

/// Runs silence through `delay` until it writes at `index`, then empties it.
void moveWritePosition(ondo::Delay& delay, std::uint64_t index)
{
    run(delay, std::vector<float>(index - delay.getWriteIndex(), 0.0f), {512});
    delay.clear();
    ASSERT_EQ(delay.getWriteIndex(), index);
}

TEST(Delay, NameTableMapsEveryModeBothWays)
{
    const std::vector<std::string> names{"nearest",  "linear", "lagrange3", "allpass",  "nearestXfade",
                                         "hermite3", "watte3", "bspline3",  "parabolic"};
    for (std::uint32_t v = 0; v < names.size(); ++v)
    {
        EXPECT_EQ(ondo::Delay::interpolationModeFromName(names[v]), v);
        EXPECT_EQ(ondo::Delay::interpolationModeName(v), names[v]);
    }
    EXPECT_EQ(ondo::Delay::interpolationModeFromName("cubic"), ondo::Delay::linear);
    EXPECT_EQ(ondo::Delay::interpolationModeFromName(""), ondo::Delay::linear);
    EXPECT_EQ(ondo::Delay::interpolationModeName(9), "linear");
}

TEST(Delay, RingIsAPowerOfTwoWithHeadroomAndNeverShrinksItsStorage)
{
    // 200 ms asked for + 8192 samples (185.76 ms) + 50 ms at 44.1 kHz: 21421 + 8193 samples.
    auto delay = std::make_unique<ondo::Delay>(200.0f);
    EXPECT_EQ(delay->getRingSize(), 32768u);
    EXPECT_NEAR(delay->getMaximumDelay(), 385.76f, 0.01f);
    delay->setMaximumDelay(1000.0f); // 46305 + 8193 samples
    EXPECT_EQ(delay->getRingSize(), 65536u);
    delay->setMaximumDelay(10.0f); // 2646 + 8193 samples
    EXPECT_EQ(delay->getRingSize(), 16384u);
    EXPECT_EQ(delay->getAllocatedSize(), 65536u);
    EXPECT_EQ(delay->getMaximumDelay(), 10.0f);
}

TEST(Delay, AbsurdMaximumIsAClearError)
{
    auto delay = std::make_unique<ondo::Delay>(10.0f);
    const auto ring = delay->getRingSize();
    EXPECT_THROW(delay->setMaximumDelay(1e12f), ondo::Exception);
    EXPECT_THROW(delay->setDelay(std::numeric_limits<float>::infinity()), ondo::Exception);
    EXPECT_EQ(delay->getRingSize(), ring) << "a refused maximum leaves the line as it was";
}

TEST(Delay, ConstantComesOutConstantInEveryMode)
{
    // Single-precision weights sum to 1 within a few roundings.
    const float c = 0.7f;
    const std::vector<float> input(2048, c);
    for (Mode mode : allModes)
    {
        auto fixed = standing(mode, 10.3f);
        const auto a = run(fixed, input);
        auto gliding = standing(mode, 10.3f);
        gliding->setInterpolationTime(20.0f);
        gliding->setDelayInSamples(300.7f, false);
        const auto b = run(gliding, input);
        for (std::size_t t = 400; t < input.size(); ++t)
        {
            ASSERT_NEAR(a[t], c, 4e-7f) << ondo::Delay::interpolationModeName(mode) << " fixed, t = " << t;
            ASSERT_NEAR(b[t], c, 4e-7f) << ondo::Delay::interpolationModeName(mode) << " gliding, t = " << t;
        }
    }
}

TEST(Delay, LinearReproducesARampExactlyAtAnyFraction)
{
    // x[n] = n / 256 with delays of k / 64 samples: every step is a dyadic rational, so the
    // interpolated value has no rounding at all.
    std::vector<float> input(1024);
    for (std::size_t n = 0; n < input.size(); ++n)
        input[n] = static_cast<float>(n) / 256.0f;
    for (int k = 0; k < 64; ++k)
    {
        const double d = 20.0 + k / 64.0;
        auto delay = standing(ondo::Delay::linear, static_cast<float>(d));
        const auto out = run(delay, input);
        for (std::size_t t = 32; t < out.size(); ++t)
            ASSERT_EQ(out[t], static_cast<float>((static_cast<double>(t) - d) / 256.0)) << "k = " << k << ", t = " << t;
    }
}

TEST(Delay, LinearFollowsARampThroughAGlide)
{
    std::vector<float> input(4096);
    for (std::size_t n = 0; n < input.size(); ++n)
        input[n] = static_cast<float>(n) / 256.0f;
    auto delay = standing(ondo::Delay::linear, 20.0f);
    delay->setInterpolationTime(40.0f);
    delay->setDelayInSamples(700.3f, false);
    // The same glide on a ramp of its own gives the delay each sample was read at.
    ondo::Ramp reference;
    reference.setTarget(20.0f, true);
    reference.setTarget(700.3f, 40.0);
    const auto out = run(delay, input);
    std::vector<float> d(input.size());
    for (std::size_t start = 0; start < d.size(); start += 64)
        reference.fill(d.data() + start, 64);
    // A position near 4096 in single precision is exact to 2^-11 sample, i.e. 2e-6 here.
    for (std::size_t t = 0; t < out.size(); ++t)
    {
        if (static_cast<double>(t) - d[t] >= 1.0)
        {
            ASSERT_NEAR(out[t], (static_cast<double>(t) - d[t]) / 256.0, 4e-6) << t;
        }
    }
}

/// A cubic in a window of 29 samples around t0, zero outside: narrow, so that its third
/// derivative is large against its values.
struct Cubic
{
    static constexpr int t0 = 100;
    static constexpr int halfWidth = 14;
    double operator()(double t) const
    {
        const double u = t - t0;
        return u * u * u / 1000.0 - u * u / 100.0 + u / 20.0 - 0.4;
    }
};

/// The largest deviation from the cubic over the outputs whose four points lie in its window.
double worstCubicError(Mode mode, double d, bool gliding)
{
    const Cubic p;
    std::vector<float> input(256, 0.0f);
    for (int t = Cubic::t0 - Cubic::halfWidth; t <= Cubic::t0 + Cubic::halfWidth; ++t)
        input[t] = static_cast<float>(p(t));
    auto delay = standing(mode, gliding ? 3.0f : static_cast<float>(d));
    std::vector<float> dt(input.size(), static_cast<float>(d));
    if (gliding)
    {
        // 5 ms at 44.1 kHz: 221 samples from 3 to 11; the reference ramp gives each delay.
        delay->setInterpolationTime(5.0f);
        delay->setDelayInSamples(11.0f, false);
        ondo::Ramp reference;
        reference.setTarget(3.0f, true);
        reference.setTarget(11.0f, 5.0);
        for (std::size_t start = 0; start < dt.size(); start += 64)
            reference.fill(dt.data() + start, 64);
    }
    const auto out = run(delay, input);
    double worst = 0.0;
    for (std::size_t t = 0; t < out.size(); ++t)
    {
        const double q = static_cast<double>(t) - static_cast<double>(dt[t]);
        if (q >= Cubic::t0 - Cubic::halfWidth + 1 && q <= Cubic::t0 + Cubic::halfWidth - 3)
            worst = std::max(worst, std::abs(out[t] - p(q)));
    }
    return worst;
}

TEST(Delay, Lagrange3ReproducesACubicExactly)
{
    // The cubic stays within 4 in its window: single-precision samples and weights leave
    // errors of about 1e-6, while Catmull-Rom misses the cubic term by 1e-4 at a quarter.
    // Delays in 1/256 sample: a position near the ring's top holds no finer fraction.
    for (double d : {3.0, 3.25, 1177.0 / 256.0, 2047.0 / 256.0})
        EXPECT_LT(worstCubicError(ondo::Delay::lagrange3, d, false), 1e-5) << d;
    for (double d : {3.25, 5.75})
        EXPECT_GT(worstCubicError(ondo::Delay::hermite3, d, false), 5e-5) << "the check can tell, at " << d;
    EXPECT_LT(worstCubicError(ondo::Delay::lagrange3, 0.0, true), 1e-5);
    EXPECT_GT(worstCubicError(ondo::Delay::watte3, 0.0, true), 5e-5);
}

TEST(Delay, InterpolatorsReproduceWhatTheirOrderAllows)
{
    // Every four-point reader, the smoothing ones included, reproduces a straight line.
    // Values about 1: a few roundings stay below 2e-6.
    std::vector<float> input(256);
    for (std::size_t n = 0; n < input.size(); ++n)
        input[n] = 0.01f * static_cast<float>(n) - 1.0f;
    for (Mode mode : {ondo::Delay::linear, ondo::Delay::lagrange3, ondo::Delay::hermite3, ondo::Delay::watte3,
                      ondo::Delay::bspline3, ondo::Delay::parabolic})
    {
        auto delay = standing(mode, 12.375f);
        const auto out = run(delay, input);
        for (std::size_t t = 20; t < out.size(); ++t)
            ASSERT_NEAR(out[t], 0.01 * (static_cast<double>(t) - 12.375) - 1.0, 2e-6)
                << ondo::Delay::interpolationModeName(mode) << " t = " << t;
    }
}

TEST(Delay, SmoothingReadersSpreadASpikeAtAWholeDelay)
{
    // At a whole delay the cubic B-spline kernel is 1/6, 2/3, 1/6; the parabolic one
    // 1/4, 1/2, 1/4.
    std::vector<float> input(64, 0.0f);
    input[0] = 1.0f;
    auto b = standing(ondo::Delay::bspline3, 10.0f);
    const auto bs = run(b, input);
    EXPECT_NEAR(bs[9], 1.0 / 6.0, 1e-7);
    EXPECT_NEAR(bs[10], 2.0 / 3.0, 1e-7);
    EXPECT_NEAR(bs[11], 1.0 / 6.0, 1e-7);
    auto p = standing(ondo::Delay::parabolic, 10.0f);
    const auto ps = run(p, input);
    EXPECT_EQ(ps[9], 0.25f);
    EXPECT_EQ(ps[10], 0.5f);
    EXPECT_EQ(ps[11], 0.25f);
    EXPECT_EQ(ps[12], 0.0f);
}

TEST(Delay, AllpassReaderDelaysALowSineByItsFraction)
{
    // A first-order allpass has unit gain and, at low frequencies, a phase delay equal to the
    // fraction it was designed for; at 50 Hz the phase-delay error stays below 1e-3 sample,
    // 7e-6 in amplitude, where a fraction off by 0.01 sample would be off by 7e-5.
    const double w = 2.0 * std::numbers::pi * 50.0 / 44100.0;
    std::vector<float> input(4096);
    for (std::size_t n = 0; n < input.size(); ++n)
        input[n] = static_cast<float>(std::sin(w * static_cast<double>(n)));
    for (double d : {10.25, 10.5, 10.875})
    {
        auto delay = standing(ondo::Delay::allpass, static_cast<float>(d));
        const auto out = run(delay, input);
        for (std::size_t t = 1000; t < out.size(); ++t)
            ASSERT_NEAR(out[t], std::sin(w * (static_cast<double>(t) - d)), 1e-5) << d << " t = " << t;
    }
}

TEST(Delay, ZeroDelayPassesTheBlockThrough)
{
    // Readers that aren't smoothing return x[0] at a fraction of 0; the allpass reader's
    // 1e-20 guard vanishes against samples far from zero.
    auto input = noise(1000);
    for (float& x : input)
        x = std::copysign(0.5f + 0.5f * std::abs(x), x);
    for (Mode mode : {ondo::Delay::nearest, ondo::Delay::nearestXfade, ondo::Delay::linear, ondo::Delay::lagrange3,
                      ondo::Delay::hermite3, ondo::Delay::watte3, ondo::Delay::allpass})
    {
        auto delay = standing(mode, 0.0f);
        EXPECT_EQ(run(delay, input, {64, 17, 1}), input) << ondo::Delay::interpolationModeName(mode);
    }
}

TEST(Delay, WholeDelayWithNearestIsAnExactShift)
{
    const auto input = noise(3000);
    auto delay = standing(ondo::Delay::nearest, 123.0f);
    const auto out = run(delay, input, {100});
    for (std::size_t t = 0; t < out.size(); ++t)
        ASSERT_EQ(out[t], t < 123 ? 0.0f : input[t - 123]) << t;
}

// An owner may write a block in place and read one in place: the samples must be those that
// write and read copy, a whole delay later.
TEST(Delay, RunsInTheLineHoldWhatWriteAndReadCopy)
{
    const auto input = noise(1024);
    auto delay = standing(ondo::Delay::nearest, 123.0f);
    moveWritePosition(*delay, 1000); // no read nor write crosses the ring's end
    ondo::Ramp at;
    at.setTarget(123.0f, true);
    for (std::uint32_t start = 0; start < input.size(); start += 64)
    {
        float* into = delay->findWriteRun(64);
        ASSERT_NE(into, nullptr);
        std::copy_n(input.begin() + start, 64, into);
        const float* run = delay->findReadRun(64, at, ondo::Delay::nearest);
        ASSERT_NE(run, nullptr);
        std::vector<float> copied(64);
        float state = 0.0f;
        delay->read(copied.data(), 64, at, ondo::Delay::nearest, state);
        for (std::uint32_t i = 0; i < 64; ++i)
        {
            const std::uint32_t t = start + i;
            ASSERT_EQ(run[i], t < 123 ? 0.0f : input[t - 123]) << t;
            ASSERT_EQ(copied[i], run[i]) << t;
        }
        delay->advance(64);
    }
}

TEST(Delay, NoRunWhereTheSamplesAreNotInTheLineAsTheyAre)
{
    auto delay = standing(ondo::Delay::nearest, 100.0f, 0.0f);
    ondo::Ramp at;
    at.setTarget(100.5f, true);
    EXPECT_EQ(delay->findReadRun(16, at, ondo::Delay::linear), nullptr) << "interpolated";
    EXPECT_NE(delay->findReadRun(16, at, ondo::Delay::nearest), nullptr) << "a tie rounds to a whole sample";
    at.setTarget(140.0f, 1.0);
    EXPECT_EQ(delay->findReadRun(16, at, ondo::Delay::nearest), nullptr) << "gliding";
    moveWritePosition(*delay, delay->getRingSize() - 45);
    at.setTarget(10.0f, true);
    EXPECT_EQ(delay->findWriteRun(64), nullptr) << "the write crosses the ring's end";
    EXPECT_NE(delay->findWriteRun(45), nullptr);
    EXPECT_EQ(delay->findReadRun(64, at, ondo::Delay::nearest), nullptr) << "the read crosses the ring's end";
}

TEST(Delay, BlockCrossingTheRingsEndReadsAsOneThatDoesnt)
{
    // Two lines alike but for the write position: one writes across the ring's end.
    const auto input = noise(600);
    for (Mode mode : allModes)
    {
        auto plain = standing(mode, 37.625f, 0.0f);
        auto wrapping = standing(mode, 37.625f, 0.0f);
        moveWritePosition(*plain, 1000);
        moveWritePosition(*wrapping, wrapping->getRingSize() - 45);
        EXPECT_EQ(run(plain, input), run(wrapping, input)) << ondo::Delay::interpolationModeName(mode);
    }
}

TEST(Delay, GlidingBlockCrossingTheRingsEndReadsAsOneThatDoesnt)
{
    // Positions are single precision: near the ring's top a fraction is exact to 2^-8
    // sample, which moves a sine of period 200 samples by up to 1.2e-4.
    std::vector<float> input(600);
    for (std::size_t n = 0; n < input.size(); ++n)
        input[n] = static_cast<float>(std::sin(2.0 * std::numbers::pi * static_cast<double>(n) / 200.0));
    for (Mode mode : allModes)
    {
        auto plain = standing(mode, 30.0f, 0.0f);
        auto wrapping = standing(mode, 30.0f, 0.0f);
        moveWritePosition(*plain, 1000);
        moveWritePosition(*wrapping, wrapping->getRingSize() - 45);
        for (auto* d : {plain.get(), wrapping.get()})
        {
            d->setInterpolationTime(10.0f);
            d->setDelayInSamples(60.3f, false);
        }
        const auto a = run(plain, input);
        const auto b = run(wrapping, input);
        for (std::size_t t = 0; t < a.size(); ++t)
            ASSERT_NEAR(a[t], b[t], 2e-4f) << ondo::Delay::interpolationModeName(mode) << " t = " << t;
    }
}

TEST(Delay, StandingDelayIsIndependentOfTheBlockSize)
{
    const auto input = noise(5000);
    for (Mode mode : allModes)
    {
        auto one = standing(mode, 17.625f);
        auto odd = standing(mode, 17.625f);
        auto single = standing(mode, 17.625f);
        const auto a = run(one, input, {5000});
        EXPECT_EQ(run(odd, input, {7, 64, 13, 511, 1}), a) << ondo::Delay::interpolationModeName(mode);
        EXPECT_EQ(run(single, input, {1}), a) << ondo::Delay::interpolationModeName(mode);
    }
}

TEST(Delay, BothReadersAgreeOnAStandingDelay)
{
    // A glide to the delay already in force keeps the gliding reader busy at a constant
    // delay: its Horner forms must give the fixed reader's weighted sums within roundings,
    // and its rounding the same samples as the fixed reader away from ties.
    const auto input = noise(1200);
    for (float d : {21.375f, 21.625f})
    {
        for (Mode mode : allModes)
        {
            auto fixed = standing(mode, d);
            auto gliding = standing(mode, d);
            gliding->setDelayInSamples(d, false);
            const auto a = run(fixed, input);
            const auto b = run(gliding, input);
            ASSERT_TRUE(gliding->getDelayRamp().isRunning());
            for (std::size_t t = 0; t < a.size(); ++t)
                ASSERT_NEAR(a[t], b[t], 2e-6f) << ondo::Delay::interpolationModeName(mode) << " d = " << d << " t = " << t;
            if (mode == ondo::Delay::nearest)
            {
                EXPECT_EQ(a, b) << d;
            }
        }
    }
}

TEST(Delay, GlidingNearestRoundsEachTieToEven)
{
    // Each sample's position rounds on its own, the round-to-nearest conversion sending a
    // half to the even neighbour: positions 0.5, 1.5, 2.5, 3.5 read 0, 2, 2, 4.
    const auto input = noise(64);
    auto delay = standing(ondo::Delay::nearest, 21.5f);
    delay->setDelayInSamples(21.5f, false);
    const auto out = run(delay, input);
    EXPECT_EQ(out[22], input[0]);
    EXPECT_EQ(out[23], input[2]);
    EXPECT_EQ(out[24], input[2]);
    EXPECT_EQ(out[25], input[4]);
}

TEST(Delay, GlideEndsExactlyOnItsTarget)
{
    const auto input = noise(2048);
    auto delay = standing(ondo::Delay::lagrange3, 10.0f);
    delay->setInterpolationTime(5.0f);
    delay->setDelayInSamples(50.0f, false);
    const auto out = run(delay, input, {64});
    EXPECT_FALSE(delay->getDelayRamp().isRunning());
    for (std::size_t t = 400; t < out.size(); ++t)
        ASSERT_EQ(out[t], input[t - 50]) << t;
}

TEST(Delay, DelayAboveTheMaximumEnlargesAndEmptiesTheLine)
{
    auto delay = std::make_unique<ondo::Delay>(0.0f, ondo::Delay::nearest);
    delay->setDelayInSamples(10.0f, true);
    const std::vector<float> ones(64, 1.0f);
    run(delay, ones);
    const auto before = delay->getRingSize();
    delay->setDelay(1000.0f, true);
    EXPECT_GT(delay->getRingSize(), before);
    EXPECT_EQ(delay->getMaximumDelay(), 1000.0f);
    delay->setDelayInSamples(10.0f, true);
    const auto out = run(delay, std::vector<float>(10, 0.0f));
    EXPECT_EQ(out, std::vector<float>(10, 0.0f)) << "the old contents are gone";
}

TEST(Delay, NegativeMaximumLeavesTheLineIntact)
{
    auto delay = standing(ondo::Delay::nearest, 10.0f);
    run(delay, std::vector<float>(64, 1.0f));
    const auto ring = delay->getRingSize();
    delay->setMaximumDelay(-5.0f);
    EXPECT_EQ(delay->getRingSize(), ring);
    EXPECT_EQ(run(delay, std::vector<float>(10, 0.0f)), std::vector<float>(10, 1.0f));
}

TEST(Delay, NegativeDelayCountsAsZero)
{
    auto delay = standing(ondo::Delay::linear, -4.0f);
    EXPECT_EQ(delay->getDelayInSamples(), 0.0f);
    delay->setDelay(std::nanf(""), true);
    EXPECT_EQ(delay->getDelayInSamples(), 0.0f);
}

TEST(Delay, InterpolationTimeIsStoredOnlyWhenPositive)
{
    auto delay = std::make_unique<ondo::Delay>();
    EXPECT_EQ(delay->getInterpolationTime(), 30.0f);
    delay->setInterpolationTime(0.0f);
    delay->setInterpolationTime(-3.0f);
    EXPECT_EQ(delay->getInterpolationTime(), 30.0f);
    delay->setInterpolationTime(12.0f);
    EXPECT_EQ(delay->getInterpolationTime(), 12.0f);
}

TEST(Delay, SampleRateChangeKeepsTheDelayInSamples)
{
    auto delay = standing(ondo::Delay::linear, 100.0f, 10.0f);
    delay->changeSampleRate(88200.0f);
    EXPECT_EQ(delay->getDelayInSamples(), 100.0f);
    EXPECT_NEAR(delay->getDelay(), 100.0f / 88.2f, 1e-4f);
    // A delay beyond the maximum at the new rate grows the maximum with it.
    auto longDelay = standing(ondo::Delay::linear, 40000.0f, 10.0f);
    const float maximum = longDelay->getMaximumDelay();
    longDelay->changeSampleRate(8000.0f);
    EXPECT_EQ(longDelay->getDelayInSamples(), 40000.0f);
    EXPECT_EQ(longDelay->getMaximumDelay(), 5000.0f);
    EXPECT_GT(longDelay->getMaximumDelay(), maximum);
}

TEST(Delay, ProcessAllocatesNothing)
{
    const auto input = noise(512);
    std::vector<float> out(512);
    for (Mode mode : allModes)
    {
        auto delay = standing(mode, 33.3f);
        float* in = const_cast<float*>(input.data());
        float* o = out.data();
        delay->process(&o, &in, 512);
        tarvo::testing::AllocationScope scope;
        delay->process(&o, &in, 512);
        delay->setDelay(5.0f);
        delay->process(&o, &in, 512);
        delay->process(&o, &in, 300);
        EXPECT_EQ(scope.count(), 0u) << ondo::Delay::interpolationModeName(mode);
    }
}
} // namespace

TEST(Delay, WindowWidensWithoutChangingWhatIsRead)
{
    // A line keeping only its window reads what a line keeping its whole ring reads, so long
    // as the delay lengthens by at most the window's 50 ms (2205 samples) of headroom within
    // one block: a glide, a jump within it, and a glide slower than time passes.
    struct Change
    {
        float samples;
        float glideMs; // 0: at once
    };
    const auto input = noise(40000);
    for (const Change change : {Change{3000.0f, 30.0f}, Change{2000.0f, 0.0f}, Change{60000.0f, 2000.0f}})
        for (const Mode mode : {Mode::nearest, Mode::linear, Mode::lagrange3, Mode::allpass})
            for (const std::vector<std::uint32_t>& blocks : {std::vector<std::uint32_t>{64}, {7, 64, 13, 511, 1}})
            {
                SCOPED_TRACE(testing::Message() << change.samples << " samples over " << change.glideMs << " ms, "
                                                << ondo::Delay::interpolationModeName(mode) << ", blocks of "
                                                << blocks.size() << " sizes");
                auto windowed = standing(mode, 100.25f, 2000.0f);
                auto whole = standing(mode, 100.25f, 2000.0f);
                whole->hold(static_cast<float>(whole->getRingSize()), 0);
                const std::vector<float> head(input.begin(), input.begin() + 5000);
                const std::vector<float> tail(input.begin() + 5000, input.end());
                ASSERT_EQ(run(windowed, head, blocks), run(whole, head, blocks));
                for (auto* line : {windowed.get(), whole.get()})
                {
                    line->setInterpolationTime(change.glideMs > 0.0f ? change.glideMs : 30.0f);
                    line->setDelayInSamples(change.samples, change.glideMs == 0.0f);
                }
                ASSERT_EQ(run(windowed, tail, blocks), run(whole, tail, blocks));
                EXPECT_LT(windowed->getWindowSize(), windowed->getRingSize()) << "the window widened, not to the ring";
            }
}

TEST(Delay, HistoryBeyondTheWindowReadsAsSilence)
{
    // A jump far beyond the window's headroom: the line kept the 4096 samples of its window
    // (100 samples, the block and 50 ms, to a power of two), up to the block it had just
    // written. Older ones read as silence, never as samples of another age, nor as what the
    // line held before it was emptied.
    const auto input = noise(60000);
    auto line = standing(ondo::Delay::nearest, 20000.0f, 2000.0f);
    run(line, noise(30000, 11));
    line->clear();
    line->setDelayInSamples(100.0f, true);
    const std::size_t jump = 30016;
    run(line, std::vector<float>(input.begin(), input.begin() + jump));
    line->setDelayInSamples(20000.0f, true);
    const auto out = run(line, std::vector<float>(input.begin() + jump, input.end()));
    const std::size_t oldestKept = jump + 64 - 4096;
    for (std::size_t t = jump; t < input.size(); ++t)
        ASSERT_EQ(out[t - jump], t - 20000 >= oldestKept ? input[t - 20000] : 0.0f) << t;
}

// A reader keeps where its fixed delay starts and finds it again with integer steps. The
// float position it stands for rounds differently only when the delay's fraction lies near
// one half: across rings of 2^15 to 2^23 samples, write positions up to the ring's end and
// delays a few ulps either side of one half, the kept start must read what a fresh one reads,
// and a delay clear of one half must read round(delay) samples back.
TEST(Delay, KeptStartOfARoundedReadFindsTheSameSamplesAsAFreshOne)
{
    std::vector<float> delays{0.0f, 1.0f, 979.902f, 1000.25f, 1000.75f, 7148.61f, 31000.1f};
    for (const float half : {0.5f, 1000.5f, 20000.5f})
    {
        float below = half, above = half;
        for (int ulps = 0; ulps < 40; ++ulps)
        {
            delays.push_back(below = std::nextafter(below, 0.0f));
            delays.push_back(above = std::nextafter(above, 1e9f));
        }
        delays.push_back(half);
    }
    for (const float maximumMs : {200.0f, 600.0f, 60000.0f, 150000.0f})
    {
        auto delay = standing(ondo::Delay::nearest, 0.0f, maximumMs);
        const std::uint64_t size = delay->getRingSize();
        delay->hold(static_cast<float>(size), 0); // the window, the whole ring
        // Each sample holds its own index, so any start read wrongly shows.
        std::vector<float> counting(ondo::Delay::maximumBlockSize);
        for (std::uint64_t start = 0; start < size; start += counting.size())
        {
            for (std::size_t i = 0; i < counting.size(); ++i)
                counting[i] = static_cast<float>(start + i);
            delay->write(counting.data(), static_cast<std::uint32_t>(counting.size()));
            delay->advance(static_cast<std::uint32_t>(counting.size()));
        }
        for (const std::uint64_t position : {std::uint64_t{0}, std::uint64_t{3}, size / 2 + 1, size - 64, size - 1})
        {
            delay->advance(static_cast<std::uint32_t>((position - delay->getWriteIndex()) & (size - 1)));
            const float* ring = delay->findWriteRun(0) - position;
            for (const float d : delays)
            {
                SCOPED_TRACE(testing::Message() << "ring " << size << " at " << position << " delay " << d);
                ondo::Ramp at;
                at.setTarget(d, true);
                ondo::Delay::RoundedStart kept;
                delay->findReadRun(16, at, ondo::Delay::nearest, &kept);
                const float* fresh = delay->findReadRun(16, at, ondo::Delay::nearest);
                ASSERT_EQ(delay->findReadRun(16, at, ondo::Delay::nearest, &kept), fresh);
                // A float position below twice the ring is off by at most half its ulp.
                const double fraction = static_cast<double>(d) - std::floor(static_cast<double>(d));
                if (fresh != nullptr && std::fabs(fraction - 0.5) > static_cast<double>(size) * 0x1p-24)
                {
                    const auto back = static_cast<std::uint64_t>(std::lround(d));
                    ASSERT_EQ(fresh, ring + ((position + size - back) & (size - 1)));
                }
                // Across the ring's end the copying reader takes the same start.
                std::vector<float> viaKept(64), viaFresh(64);
                float state = 0.0f;
                delay->read(viaKept.data(), 64, at, ondo::Delay::nearest, state, &kept);
                delay->read(viaFresh.data(), 64, at, ondo::Delay::nearest, state);
                ASSERT_EQ(viaKept, viaFresh);
            }
        }
    }
}
