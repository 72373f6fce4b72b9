#include "reverb/QuorReverb.h"

#include "reverb/QuorLateColumns.h"

#include "containers/TarvoDspBlockPieces.h"
#include "math/TarvoDspVectorPrimitives.h"
#include "math/TarvoDspWideVectors.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
namespace
{
using namespace ondo::primitives;

constexpr float lowestDecayTime = 0.1f;
constexpr float lowestFrequency = 10.0f;
constexpr float highestFrequency = 20000.0f;
constexpr float decayRampTimeMs = 500.0f;
// A rise of tr0 lasts this many ms per second of change, within these limits; a fall is quick.
constexpr float riseMsPerSecond = 1000.0f;
constexpr float shortestRiseMs = 500.0f;
constexpr float longestRiseMs = 5000.0f;
constexpr float fallMs = 50.0f;
constexpr float smallestFollowedChange = 0.01f;
constexpr float inputGainGlideMs = 50.0f;
/// With the tail frozen the shelves are designed for this decay time: 0 dB within float.
constexpr float frozenDecayTime = 100000000.0f;
/// The longest delay whose loss the shelves are designed for, s.
constexpr float longestDesignedDelay = 1.5000001f;
constexpr float speedOfSoundMetresPerSecond = 343.2f;
constexpr float lineGlideMs = 30.0f;

float distributionFor(std::uint32_t numChannels)
{
    return numChannels <= 8 ? 0.5f : 0.3f;
}

/// One pass over a line's chunk: the output takes the filtered line, then the line takes the
/// input. The input is read after the output is written, as two passes would.
template <typename Output, typename Inject>
ONDO_KERNEL_INLINE void outputThenInject(float* line, const float* in, float* out, std::uint32_t n, Output output,
                                         Inject inject)
{
    for (std::uint32_t i = 0; i < n; ++i)
    {
        const float t = line[i];
        out[i] = output(t);
        line[i] = inject(t, in[i]);
    }
}

/// The output factor `f` and the input gain `g`, with the exact shortcuts of the vector
/// primitives: a factor of 1 copies and of 0 zeroes; a gain of 1 adds, of -1 subtracts, and
/// of 0 leaves the line alone.
template <typename Output>
ONDO_KERNEL_INLINE void outputThenInject(float* line, const float* in, float* out, std::uint32_t n, Output output,
                                         float g)
{
    if (g == 1.0f)
        outputThenInject(line, in, out, n, output, [](float t, float x) { return t + x; });
    else if (g == -1.0f)
        outputThenInject(line, in, out, n, output, [](float t, float x) { return t - x; });
    else if (g == 0.0f)
        outputThenInject(line, in, out, n, output, [](float t, float) { return t; });
    else
        outputThenInject(line, in, out, n, output, [g](float t, float x) { return t + x * g; });
}

/// Every line of a chunk.
ONDO_KERNEL_INLINE void outputThenInject(float* const* lines, float* const* in, float* const* out,
                                         std::uint32_t numLines, std::uint32_t n, float f, float g)
{
    for (std::uint32_t i = 0; i < numLines; ++i)
    {
        if (f == 1.0f)
            outputThenInject(lines[i], in[i], out[i], n, [](float t) { return t; }, g);
        else if (f == 0.0f)
            outputThenInject(lines[i], in[i], out[i], n, [](float) { return 0.0f; }, g);
        else
            outputThenInject(lines[i], in[i], out[i], n, [f](float t) { return t * f; }, g);
    }
}

#if ONDO_WIDE_VECTORS
ONDO_WIDE_VECTORS_TARGET void outputThenInjectWide(float* const* lines, float* const* in, float* const* out,
                                                   std::uint32_t numLines, std::uint32_t n, float f, float g)
{
    outputThenInject(lines, in, out, numLines, n, f, g);
}
#endif

void outputThenInjectAll(float* const* lines, float* const* in, float* const* out, std::uint32_t numLines,
                         std::uint32_t n, float f, float g)
{
#if ONDO_WIDE_VECTORS
    if (ondo::simd::useWideVectors())
    {
        outputThenInjectWide(lines, in, out, numLines, n, f, g);
        return;
    }
#endif
    outputThenInject(lines, in, out, numLines, n, f, g);
}
} // namespace

Reverb::Reverb(std::uint32_t numChannels)
    : AudioProcessorWithOscInAudioInterrupt(numChannels, numChannels), numChannels(numChannels),
      delays(numChannels), taps(numChannels), filters(numChannels), airFilters(numChannels),
      shelves(numChannels), lineReads(numChannels), lineWrites(numChannels), delgen(numChannels, 20.0f, 40.0f, 0.5f),
      tapBuffer(numChannels, chunkSize), mixBuffer(numChannels, chunkSize), unwantedOutputs(numChannels, chunkSize),
      shuffle(numChannels)
{
    filters.setCrossfadeTime(decayCrossfadeTimeMs);
    lineRuns.resize(numChannels);
    for (auto& air : airFilters)
        air = std::make_unique<AirAbsorption>(2);
    // The block views know their channel counts from the start, so the first block allocates nothing.
    inputsReference.setSize(numChannels, 0);
    outputsReference.setSize(numChannels, 0);
    sumsReference.setSize(numChannels, 0);
    inputGain.setSampleRate(sampleRate);
    decayRamp.setSampleRate(sampleRate);
    inputGain.setTarget(1.0f, true);
    decayRamp.setRampTime(decayRampTimeMs);
    decayRamp.setTarget(tr0, true);
    for (std::uint32_t i = 0; i < numChannels; ++i)
    {
        // Lines hold the longest delay allowed from the start: a line enlarged later would
        // be reallocated under the audio thread's feet.
        delays[i] = std::make_unique<ondo::Delay>(maximumDelayMs, ondo::Delay::linear);
        taps[i] = std::make_unique<ondo::TapOutEconomy>(delays[i].get(), ondo::Delay::linear);
        delays[i]->reportChangesTo(&lineChanges);
        taps[i]->reportChangesTo(&lineChanges);
    }
    setDelays(delgen.setMinSum(defaultShortestDelayMs, defaultDelaySumMs, distributionFor(numChannels)), true);
    setup(sampleRate, bufferSize, true);
    for (std::uint32_t i = 0; i < numChannels; ++i)
    {
        delays[i]->setInterpolationMode(ondo::Delay::nearest);
        taps[i]->setInterpolationMode(ondo::Delay::nearest);
        delays[i]->setInterpolationTime(lineGlideMs);
        taps[i]->setInterpolationTime(lineGlideMs);
    }
    updateDecay(false);
    for (auto& tap : taps)
        tap->setEconomy(false);
}

std::uint32_t Reverb::getChunkLimit() const
{
    const auto limit = static_cast<std::uint32_t>(shortestDelay * 0.001f * sampleRate);
    return std::clamp<std::uint32_t>(limit, 1, chunkSize);
}

void Reverb::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (decayRamp.isRunning())
    {
        decayRamp.advance(numSamples);
        updateDecay(false);
    }
    summing = false;
    outputsWanted = true;
    ondo::forEachPiece(inputsReference, inputs, numChannels, outputsReference, outputs, numChannels, numSamples,
                       getChunkLimit(), [this](std::uint32_t n) { runChunk(n); });
}

void Reverb::processWithSums(float** outputs, float** inputs, float** sums, float dry, float wet,
                             std::uint32_t numSamples)
{
    if (decayRamp.isRunning())
    {
        decayRamp.advance(numSamples);
        updateDecay(false);
    }
    summing = true;
    outputsWanted = outputs != nullptr;
    dryFactor = dry;
    wetFactor = wet;
    std::uint32_t done = 0;
    ondo::forEachPiece(inputsReference, inputs, numChannels, sumsReference, sums, numChannels, numSamples,
                       getChunkLimit(), [&](std::uint32_t n) {
                           if (outputsWanted)
                               outputsReference.refer(outputs, numChannels, n, done);
                           runChunk(n);
                           done += n;
                       });
}

bool Reverb::playsSteadily(ondo::BiquadIPP* const* begun) const
{
    for (std::uint32_t i = 0; i < numChannels; ++i)
        if (begun[i] == nullptr || begun[i]->isGainOnlySection())
            return false;
    return true;
}

void Reverb::mixSums(float* const* out, std::uint32_t n)
{
    float** in = inputsReference.getChannels();
    float** sums = sumsReference.getChannels();
    const float factors[2] = {dryFactor, wetFactor};
    for (std::uint32_t c = 0; c < numChannels; ++c)
    {
        const float* terms[2] = {in[c], out[c]};
        vectorProductsConstant32(terms, factors, 2, sums[c], static_cast<int>(n));
    }
}

void Reverb::findRuns(float** tap, std::uint32_t n)
{
    // A line whose tap found its chunk in place, reading whole samples without a glide, and
    // whose write found its place too: until the next hand-over, and while the line keeps
    // its window, both runs move on by the chunk. A read that widens its line moves the
    // places found before: the next chunk starts over.
    const std::uint32_t counted = lineChanges.get();
    const bool steady = lineRuns.serves(n, counted);
    if (!steady)
        lineRuns.start(n, counted);
    float** mix = mixBuffer.getChannels();
    for (std::uint32_t i = 0; i < numChannels; ++i)
    {
        if (steady && lineRuns.moveOn(i, lineReads[i], lineWrites[i]))
            continue;
        lineReads[i] = taps[i]->processInPlace(tap[i], n);
        // After the line's read, which may widen its window; no step of the chunk widens it
        // again.
        float* run = delays[i]->findWriteRun(n);
        lineWrites[i] = run != nullptr ? run : mix[i];
        const bool inPlace = run != nullptr && lineReads[i] != tap[i];
        lineRuns.keep(i, *delays[i], inPlace ? std::max<const float*>(lineReads[i], run) : nullptr,
                      taps[i]->getReadStart());
    }
}

void Reverb::runChunk(std::uint32_t n)
{
    const float g = inputGain.getValue(0);
    inputGain.advance(n);
    // Output normalised by the input gain, so that the tail's level doesn't follow the decay.
    // A gain of 0 can't be undone; the output is then left as it is.
    const float f = (normalizeOutput && g != 0.0f) ? 1.0f / g : 1.0f;
    float** tap = tapBuffer.getChannels();
    float** mix = mixBuffer.getChannels();
    float** in = inputsReference.getChannels();
    float** out = outputsWanted ? outputsReference.getChannels() : unwantedOutputs.getChannels();

    // The lines are independent until the mixer: each step runs over all lines before the
    // next, so that the shelves of all lines run side by side. Every sample is as it would be
    // line by line. The shelves read the lines in place where they can, and the mixer writes
    // into them in place where it can.
    findRuns(tap, n);
    // The shelves' stage updates come first. With air, a line's air filter follows its shelf
    // sample by sample, and the batch takes each pair. Alone, the shelves' updates go through
    // their processor, which reuses the last ones while nothing is handed over.
    ondo::BiquadIPP* const* begun = airEnabled ? nullptr : filters.beginChannelBlocks();
    if (begun == nullptr)
        for (std::uint32_t i = 0; i < numChannels; ++i)
            shelves.add(filters.getChannel(i), airFilters[i]->getSecondOrder().getShelf(), tap[i], lineReads[i], n);
    // Steady lines run the rest of the chunk in one pass over columns of samples; else
    // step by step: the output is taken from the filtered line before the input is added,
    // the sum built in place, and the mixer writes the lines' next input out of place.
    float* const* mixTargets =
        canRunLateColumns(numChannels, f, g) ? shuffle.columnTargets(lineWrites.data()) : nullptr;
    ondo::FadedBiquadBatch::Steady steady;
    if (mixTargets != nullptr && begun != nullptr)
        steady.first = playsSteadily(begun) ? begun : nullptr;
    else if (mixTargets != nullptr)
        steady = shelves.takeSteady(numChannels);
    if (steady.first != nullptr)
        runLateColumns({lineReads.data(), steady.first, steady.second, in, outputsWanted ? out : nullptr,
                        mixTargets, f, g, shuffle.getColumnGain(),
                        summing ? sumsReference.getChannels() : nullptr, dryFactor, wetFactor},
                       numChannels, n);
    else
    {
        for (std::uint32_t i = 0; begun != nullptr && i < numChannels; ++i)
            shelves.addBegun(filters.getChannel(i), begun[i], tap[i], lineReads[i], n);
        shelves.run(n);
        outputThenInjectAll(tap, in, out, numChannels, n, f, g);
        if (summing)
            mixSums(out, n);
        shuffle.process(lineWrites.data(), tap, n);
    }
    // Each chunk lands at the write position and only then moves it on, so chunks of any
    // sizes fill a line end to end, each sample once, and a sample comes back exactly its
    // delay later. A chunk is never longer than the shortest delay, so it never reads what
    // it is about to write.
    for (std::uint32_t i = 0; i < numChannels; ++i)
    {
        if (lineWrites[i] == mix[i])
            delays[i]->write(mix[i], n);
        delays[i]->advance(n);
    }
}

void Reverb::setSampleRate(float rate)
{
    const float clamped = clampSampleRate(rate);
    for (std::uint32_t i = 0; i < numChannels; ++i)
    {
        delays[i]->changeSampleRate(clamped);
        taps[i]->setSampleRate(clamped);
        filters.getChannel(i).changeSampleRate(clamped);
        airFilters[i]->changeSampleRate(clamped);
    }
    inputGain.setSampleRate(clamped);
    decayRamp.setSampleRate(clamped);
    clear();
    inputGain.setTarget(1.0f, 0.0);
    decayRamp.setTarget(tr0, true);
    shuffle.changeSampleRate(clamped);
    updateDecay(false);
}

void Reverb::setBufferSize(std::uint32_t size)
{
    for (std::uint32_t i = 0; i < numChannels; ++i)
    {
        delays[i]->changeBufferSize(size);
        filters.getChannel(i).changeBufferSize(size);
        airFilters[i]->changeBufferSize(size);
    }
    tapBuffer.setSize(numChannels, chunkSize);
    mixBuffer.setSize(numChannels, chunkSize);
    unwantedOutputs.setSize(numChannels, chunkSize);
    // The mixer runs on chunks, never on more than a chunk.
    shuffle.changeBufferSize(std::max(size, chunkSize));
}

void Reverb::clear()
{
    for (std::uint32_t i = 0; i < numChannels; ++i)
    {
        airFilters[i]->clear();
        delays[i]->clear();
        taps[i]->clear();
        filters.getChannel(i).clear();
    }
    tapBuffer.clear();
    mixBuffer.clear();
    shuffle.clear();
}

void Reverb::setTr0(float seconds, bool immediate)
{
    tr0 = std::max(seconds, lowestDecayTime);
    updateDecay(immediate);
}

void Reverb::setTrl(float ratio, bool immediate)
{
    trl = ratio;
    updateDecay(immediate);
}

void Reverb::setTrm(float ratio, bool immediate)
{
    trm = ratio;
    updateDecay(immediate);
}

void Reverb::setTrh(float ratio, bool immediate)
{
    trh = ratio;
    updateDecay(immediate);
}

void Reverb::setFl(float hertz, bool immediate)
{
    fl = hertz;
    updateDecay(immediate);
}

void Reverb::setFh(float hertz, bool immediate)
{
    fh = hertz;
    updateDecay(immediate);
}

void Reverb::setInfinite(bool enabled)
{
    infinite = enabled;
    updateDecay(false);
}

void Reverb::setAirCutoff(float hertz)
{
    const float cutoff = std::max(hertz, lowestFrequency);
    for (auto& air : airFilters)
        air->setCutoff(cutoff, false);
}

void Reverb::setDelayRange(float minimum, float sum, float distribution, bool immediate)
{
    minimum = std::max(minimum, getDelayFloor());
    if (shortestDelay > minimum)
        shortestDelay = minimum;
    setDelays(delgen.setMinSum(minimum, sum, distribution), immediate);
}

void Reverb::setDelays(const ondo::Vector<float>& newDelays, bool immediate)
{
    const float floor = getDelayFloor();
    const auto count = std::min<std::size_t>(newDelays.size(), numChannels);
    for (std::size_t i = 0; i < count; ++i)
    {
        const float ms = std::clamp(newDelays[i], floor, maximumDelayMs);
        if (shortestDelay > ms)
            shortestDelay = ms;
        delays[i]->ensureMaximumDelay(ms);
        delays[i]->setDelay(ms, immediate);
        taps[i]->setDelay(ms, immediate);
    }
    updateDecay(false);
}

ondo::Vector<float> Reverb::getDelays() const
{
    ondo::Vector<float> result(numChannels);
    for (std::uint32_t i = 0; i < numChannels; ++i)
        result[i] = taps[i]->getDelay();
    return result;
}

void Reverb::updateDecay(bool immediate)
{
    const float decay = std::max<float>(tr0, lowestDecayTime);
    const float low = std::max<float>(trl, lowestDecayTime);
    const float middle = std::max<float>(trm, lowestDecayTime);
    const float high = std::max<float>(trh, lowestDecayTime);
    const float lowCrossover = std::clamp<float>(fl, lowestFrequency, highestFrequency);
    const float highCrossover = std::clamp<float>(fh, lowestFrequency, highestFrequency);

    const float delta = decay - decayRamp.getTargetValue();
    if (immediate)
        decayRamp.setTarget(decay, true);
    else if (std::fabs(delta) >= smallestFollowedChange)
    {
        // A decay gets longer slowly and shorter at once.
        const float ms = delta > 0.0f ? std::clamp(delta * riseMsPerSecond, shortestRiseMs, longestRiseMs) : fallMs;
        decayRamp.setTarget(decay, static_cast<double>(ms));
    }

    const float T = decayRamp.getValue(0);
    const float designedT = infinite ? frozenDecayTime : T;
    // Each pass keeps on average c^(d in ms) of the power: 10^(-6 d / T), d in seconds.
    const float c = std::pow(10.0f, -0.006f / T);
    float sum = 0.0f;
    for (std::uint32_t i = 0; i < numChannels; ++i)
    {
        const float d = std::clamp(taps[i]->getDelay() * 0.001f, 0.0f, longestDesignedDelay);
        // A line of d seconds must lose 60 d / T dB at each pass.
        const float base = d * -60.0f * (1.0f / designedT);
        filters.getChannel(i).setParameters(0.0f, base * (1.0f / low), base * (1.0f / middle), base * (1.0f / high),
                                            lowCrossover, highCrossover, immediate);
        airFilters[i]->setDistance(d * speedOfSoundMetresPerSecond, false);
        sum += std::pow(c, d * 1000.0f);
    }
    // The input gain that holds the inner level whatever the decay: sqrt((1 - m) / m) for a
    // mean kept power m.
    const float g = std::sqrt(static_cast<float>(numChannels) / sum - 1.0f);
    if (immediate)
        inputGain.setTarget(g, true);
    else
        inputGain.setTarget(g, static_cast<double>(inputGainGlideMs));
}

bool Reverb::processOscMessage(const ondo::OSCMessage& message, std::int32_t& /*context*/)
{
    if (message.matches("/delays"))
    {
        const ondo::Vector<float> values = message.getArgumentsAsFloats();
        if (values.size() == numChannels && values.size() == message.getNumArguments())
            setDelays(values, false);
        return true;
    }
    if (message.matches("/numdelays"))
        return message.matchesSingle('u');
    struct DecaySetter
    {
        std::string_view address;
        void (Reverb::*set)(float, bool);
    };
    static constexpr DecaySetter decaySetters[] = {
        {"/tr0", &Reverb::setTr0}, {"/trl", &Reverb::setTrl}, {"/trm", &Reverb::setTrm},
        {"/trh", &Reverb::setTrh}, {"/fl", &Reverb::setFl},   {"/fh", &Reverb::setFh},
    };
    for (const DecaySetter& setter : decaySetters)
        if (message.matches(setter.address))
        {
            if (!message.matchesSingle('n'))
                return false;
            (this->*setter.set)(message.getFloat(0), false);
            return true;
        }
    if ((message.matches("/air") || message.matches("/air/enable")) && message.matchesSingle('b'))
        setAirEnabled(message.getBool(0));
    else if (message.matches("/air/freq") && message.matchesSingle('n'))
        setAirCutoff(message.getFloat(0));
    else if (message.matches("/infinite") && message.matchesSingle('b'))
        setInfinite(message.getBool(0));
    else
        return false;
    return true;
}

ondo::OSCBundle Reverb::getState() const
{
    ondo::OSCBundle state = getProcessorState();
    state.add("/numdelays", numChannels);
    ondo::OSCMessage lineDelays("/delays");
    for (float delay : getDelays())
        lineDelays.addArgument(delay);
    state.add(std::move(lineDelays));
    state.add("/air/enable", isAirEnabled());
    state.add("/air/freq", getAirCutoff());
    state.add("/infinite", isInfinite());
    const std::pair<const char*, float> decay[] = {{"/tr0", getTr0()}, {"/trl", getTrl()}, {"/trm", getTrm()},
                                                   {"/trh", getTrh()}, {"/fl", getFl()},   {"/fh", getFh()}};
    for (const auto& [address, value] : decay)
        state.add(address, value);
    return state;
}

ondo::OscDocumentation Reverb::getDocumentation() const
{
    return {{"/delays", "[number][number]...", "sets the delay of each line (in ms)"},
            {"/numdelays", "[int]", "the number of lines (cannot change)"},
            {"/tr0", "[number]", "sets the reverberation time (in s)"},
            {"/trl", "[number]", "sets the low-frequency decay ratio"},
            {"/trm", "[number]", "sets the mid-frequency decay ratio"},
            {"/trh", "[number]", "sets the high-frequency decay ratio"},
            {"/fl", "[number]", "sets the low crossover (in Hz)"},
            {"/fh", "[number]", "sets the high crossover (in Hz)"},
            {"/air/enable", "[boolean]", "enables the air absorption"},
            {"/air/freq", "[number]", "sets the air absorption cutoff (in Hz)"},
            {"/infinite", "[boolean]", "freezes the decay"}};
}
} // namespace Quor
