#include "reverb/QuorEarly.h"

#include "reverb/QuorDelgen.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

namespace Quor
{
namespace
{
constexpr float firstReflectionMs = 22.22f;
constexpr float lastReflectionMs = 39.71f;

// The signs of the reflections, in groups of eight: no simple pattern, so that the
// reflections don't add up coherently in the panner.
constexpr float signs[64] = {
    -1, 1,  1,  -1, -1, -1, 1,  1,  //
    -1, -1, 1,  1,  1,  -1, -1, 1,  //
    -1, -1, -1, 1,  1,  1,  -1, -1, //
    -1, -1, -1, 1,  1,  1,  1,  1,  //
    1,  1,  1,  -1, -1, -1, -1, -1, //
    1,  1,  -1, -1, 1,  -1, -1, -1, //
    -1, 1,  1,  -1, 1,  1,  -1, 1,  //
    -1, -1, -1, 1,  1,  1,  1,  1,
};
} // namespace

Early::Early(std::uint32_t numOutputs, std::uint32_t numInputs)
    : AudioProcessorWithOscInAudioInterrupt(numInputs, numOutputs)
{
    if (numInputs == 1)
    {
        tapsFirst = std::make_unique<ondo::MultiTapOutEconomy>(numOutputs, maximumDelayMs);
    }
    else if (numInputs == 2)
    {
        outputsReference.setSize(numOutputs, bufferSize);
        tapsFirst = std::make_unique<ondo::MultiTapOutEconomy>(numOutputs / 2, maximumDelayMs);
        tapsSecond = std::make_unique<ondo::MultiTapOutEconomy>(numOutputs / 2, maximumDelayMs);
    }
    setNumberOfTaps(numOutputs);
    setup(sampleRate, bufferSize, true);
    Delgen series(numOutputs, firstReflectionMs, lastReflectionMs, Delgen::defaultDistribution);
    series.setMinMax(firstReflectionMs, lastReflectionMs, Delgen::defaultDistribution);
    for (auto* taps : {tapsFirst.get(), tapsSecond.get()})
        if (taps != nullptr)
            taps->setInterpolationMode(ondo::Delay::nearest);
    setDelays(series.getDelays(), true);
    for (auto* taps : {tapsFirst.get(), tapsSecond.get()})
        if (taps != nullptr)
            taps->setEconomy(false);
}

float* const* Early::processInPlace(float** scratch, float** inputs, std::uint32_t numSamples)
{
    if (numInputs == 1)
        return tapsFirst->processInPlace(scratch, inputs, numSamples);
    process(scratch, inputs, numSamples);
    return scratch;
}

void Early::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (numInputs == 1)
    {
        tapsFirst->process(outputs, inputs, numSamples);
        return;
    }
    if (numInputs != 2)
    {
        processMute(outputs, numSamples);
        return;
    }
    const auto pairs = numOutputs / 2;
    const auto chunk = static_cast<std::uint32_t>(firstBuffer.getNumSamples());
    std::uint32_t n = 0;
    for (std::uint32_t start = 0; start < numSamples; start += n)
    {
        n = std::min(chunk, numSamples - start);
        float* left = inputs[0] + start;
        float* right = inputs[1] + start;
        tapsFirst->process(firstBuffer.getChannels(), &left, n);
        tapsSecond->process(secondBuffer.getChannels(), &right, n);
        outputsReference.refer(outputs, numOutputs, n, start);
        for (std::uint32_t c = 0; c < pairs; ++c)
        {
            std::memcpy(outputsReference.getChannel(2 * c), firstBuffer.getChannel(c), n * sizeof(float));
            std::memcpy(outputsReference.getChannel(2 * c + 1), secondBuffer.getChannel(c), n * sizeof(float));
        }
        // An odd output count leaves the last output without a tap.
        if (numOutputs % 2 != 0)
            std::memset(outputsReference.getChannel(numOutputs - 1), 0, n * sizeof(float));
    }
}

std::string Early::getInletName(std::int32_t index) const
{
    if (numInputs == 1 && index == 0)
        return "input #1";
    if (numInputs == 2 && index == 0)
        return "input (left) #1";
    if (numInputs == 2 && index == 1)
        return "input (right) #2";
    return {};
}

std::string Early::getOutletName(std::int32_t index) const
{
    if (index < 0 || static_cast<std::uint32_t>(index) >= numOutputs)
        return "dumpout";
    return "tap #" + std::to_string(index + 1);
}

void Early::setSampleRate(float rate)
{
    for (auto* taps : {tapsFirst.get(), tapsSecond.get()})
        if (taps != nullptr)
            taps->changeSampleRate(rate);
}

void Early::setBufferSize(std::uint32_t size)
{
    if (tapsFirst != nullptr)
        tapsFirst->changeBufferSize(size);
    if (numInputs == 2)
    {
        outputsReference.setNumSamples(size);
        firstBuffer.setNumSamples(size);
        secondBuffer.setNumSamples(size);
        tapsSecond->changeBufferSize(size);
    }
}

void Early::clear()
{
    for (auto* taps : {tapsFirst.get(), tapsSecond.get()})
        if (taps != nullptr)
            taps->clear();
}

ondo::MultiTapOutEconomy* Early::lineOf(std::uint32_t output, std::uint32_t& tap) const
{
    if (numInputs == 1)
    {
        tap = output;
        return tapsFirst.get();
    }
    if (numInputs == 2)
    {
        tap = output / 2;
        return output % 2 == 0 ? tapsFirst.get() : tapsSecond.get();
    }
    return nullptr;
}

void Early::setDelays(const ondo::Vector<float>& delays, bool immediate)
{
    const auto n = std::min<std::size_t>(numOutputs, delays.size());
    for (std::uint32_t i = 0; i < n; ++i)
    {
        std::uint32_t tap = 0;
        if (auto* taps = lineOf(i, tap))
            taps->setDelay(tap, delays[i], immediate);
    }
}

ondo::Vector<float> Early::getDelays() const
{
    ondo::Vector<float> delays;
    if (numInputs != 1 && numInputs != 2)
        return delays;
    delays.resize(numOutputs);
    for (std::uint32_t i = 0; i < numOutputs; ++i)
    {
        std::uint32_t tap = 0;
        const auto* taps = lineOf(i, tap);
        delays[i] = tap < taps->getNumTaps() ? taps->getTap(tap).getDelay() : 0.0f;
    }
    return delays;
}

float Early::getDelaySpread() const
{
    const auto delays = getDelays();
    if (delays.empty())
        return 0.0f;
    const auto [shortest, longest] = std::minmax_element(delays.begin(), delays.end());
    return std::abs(*longest - *shortest);
}

void Early::setNumberOfTaps(std::uint32_t n)
{
    const std::uint32_t old = numOutputs;
    setNumberOfOutputs(n);
    if (numInputs == 1)
    {
        tapsFirst->setNumTaps(n);
    }
    else if (numInputs == 2)
    {
        firstBuffer.setNumChannels(n / 2);
        secondBuffer.setNumChannels(n / 2);
        tapsFirst->setNumTaps(n / 2);
        tapsSecond->setNumTaps(n / 2);
    }
    // New outputs spread from 20 to 40 ms. With one output this divides by zero; the tap
    // then takes the not-a-number as 0.
    for (std::uint32_t i = old; i < n; ++i)
    {
        std::uint32_t tap = 0;
        if (auto* taps = lineOf(i, tap))
            taps->setDelay(tap, 20.0f + static_cast<float>(i) * 20.0f / static_cast<float>(n - 1), false);
    }
}

void computeEarlyGains(ondo::Vector<float>& gains, std::uint32_t N, float shape, float spread, bool normalise)
{
    gains.resize(N);
    if (N == 0)
        return;
    // The envelope: a power law falling from the first reflection or rising to the last,
    // its exponent running from very large (one reflection) through 0 (flat) at 0.5.
    const float s = std::clamp(shape, 0.0f, 1.0f);
    const float n = static_cast<float>(N);
    float exponent = 0.0f;
    bool falling = true;
    if (s <= 0.25f)
        exponent = 1.0f / std::clamp(s * 4.0f, 0.000001f, 1.0f);
    else if (s <= 0.5f)
        exponent = 1.0f - (s - 0.25f) * 4.0f;
    else if (s <= 0.75f)
    {
        exponent = (s - 0.5f) * 4.0f;
        falling = false;
    }
    else
    {
        const float t = std::clamp((s - 0.75f) * 4.0f, 0.0f, 0.999999f);
        exponent = 1.0f / (1.0f - t);
        falling = false;
    }
    float total = 0.0f;
    for (std::uint32_t i = 0; i < N; ++i)
    {
        const float base = falling ? (n - static_cast<float>(i)) / n : (static_cast<float>(i) + 1.0f) / n;
        gains[i] = std::pow(base, exponent);
        total += gains[i];
    }
    // Mean magnitude 1, then the fixed signs.
    const float scale = n / total;
    for (std::uint32_t i = 0; i < N; ++i)
        gains[i] = gains[i] * scale * signs[i % 64];
    if (N <= 8)
        return;

    // Break the equality of the gains by up to 5 %. The same seed every time, so that a room
    // renders the same samples whatever was computed before it, on whichever thread.
    std::minstd_rand generator(20061);
    for (std::uint32_t i = 0; i < N; ++i)
    {
        const auto r = static_cast<double>(generator() & 0x7fffu);
        gains[i] = static_cast<float>(gains[i] * (0.95 + r * 0.1 * (1.0 / 32768.0)));
    }

    // In a narrow early section only the edges of each group of a quarter of N sound.
    float k = 0.1f;
    if (spread >= 20.0f)
        k = std::clamp((std::clamp(spread, 20.0f, 60.0f) - 20.0f) / 40.0f * 0.9f + 0.1f, 0.1f, 1.0f);
    const auto group = static_cast<std::uint32_t>(2.0f * n * 0.125f);
    float power = 0.0f;
    for (std::uint32_t i = 0; i < N; ++i)
    {
        const std::uint32_t r = i % group;
        if (r != 0 && r != group - 1)
        {
            gains[i] *= k;
            power += k;
        }
        else
        {
            power += 1.0f;
        }
    }
    if (normalise)
    {
        const float factor = std::sqrt(n) / std::sqrt(power);
        for (std::uint32_t i = 0; i < N; ++i)
            gains[i] *= factor;
    }
}

bool Early::processOscMessage(const ondo::OSCMessage& message, std::int32_t& /*context*/)
{
    if (message.matches("/delays"))
    {
        const ondo::Vector<float> values = message.getArgumentsAsFloats();
        if (values.size() == getNumOutputs() && values.size() == message.getNumArguments() && !values.empty())
            setDelays(values, false);
        return true;
    }
    if (message.matches("/numdelays") && message.matchesSingle('u'))
        return message.getArgument(0).getInt64() == getNumOutputs();
    if (message.matches("/numinputs") && message.matchesSingle('u'))
        return message.getArgument(0).getInt64() == getNumInputs();
    return false;
}

ondo::OSCBundle Early::getState() const
{
    ondo::OSCBundle state = getProcessorState();
    state.add("/numdelays", getNumOutputs());
    state.add("/numinputs", getNumInputs());
    ondo::OSCMessage delays("/delays");
    for (float delay : getDelays())
        delays.addArgument(delay);
    state.add(std::move(delays));
    return state;
}

ondo::OscDocumentation Early::getDocumentation() const
{
    return {{"/delays", "[number][number]...", "sets the delay of each reflection (in ms)"},
            {"/numdelays", "[int]", "checks the number of reflections"},
            {"/numinputs", "[int]", "checks the number of inputs"}};
}
} // namespace Quor
