#include "dsp/TarvoDspDelay.h"

#include "common/TarvoDspException.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>

namespace ondo
{
namespace
{
/// Sample counts of the ring beyond which a maximum delay is refused (1 GiB of samples).
constexpr float largestRing = static_cast<float>(1u << 28);
constexpr float sixth = 1.0f / 6.0f;
/// Keeps the allpass reader's recursion out of the denormal range: added, then taken off.
constexpr float antiDenormal = 1e-20f;
/// The window of a line that holds nothing yet; the first block widens it.
constexpr std::uint64_t smallestWindow = 64;
/// The window holds this much more than every delay read with the block, so that a delay
/// that lengthens by up to this much at once still finds its history.
constexpr float windowHeadroomSeconds = 0.05f;
/// How much older than its delay a read may look: the sample before the position, and the
/// position rounded up.
constexpr std::uint32_t readerReach = 3;

// The interpolators' polynomials in Horner form, in the order of evaluation that the
// gliding reader keeps: x points at x[0]; x[-1] is older, x[1] and x[2] newer.
inline float linearForm(const float* x, float f)
{
    return (x[1] - x[0]) * f + x[0];
}

inline float lagrange3Form(const float* x, float f)
{
    return ((((x[0] - x[1]) * 3.0f + (x[2] - x[-1])) * sixth * f + (x[1] + x[-1] - 2.0f * x[0]) * 0.5f) * f +
            (6.0f * x[1] - 2.0f * x[-1] - 3.0f * x[0] - x[2]) * sixth) *
               f +
           x[0];
}

inline float hermite3Form(const float* x, float f)
{
    return ((((x[0] - x[1]) * 1.5f + (x[2] - x[-1]) * 0.5f) * f + (x[-1] - 2.5f * x[0] + 2.0f * x[1] - 0.5f * x[2])) *
                f +
            (x[1] - x[-1]) * 0.5f) *
               f +
           x[0];
}

inline float watte3Form(const float* x, float f)
{
    const float t = x[2] + x[-1];
    return (1.5f * x[1] - (t + x[0]) * 0.5f + (t - x[0] - x[1]) * 0.5f * f) * f + x[0];
}

// Smoothing: at f = 0 this is not x[0]. Used by both readers.
inline float bspline3Form(const float* x, float f)
{
    return ((((x[2] - x[-1]) * sixth + (x[0] - x[1]) * 0.5f) * f + ((x[1] + x[-1]) * 0.5f - x[0])) * f +
            (x[1] - x[-1]) * 0.5f) *
               f +
           ((x[1] + x[-1]) * sixth + x[0] * 0.6666667f);
}

inline float parabolicForm(const float* x, float f)
{
    return (((x[2] - x[0]) - (x[1] - x[-1])) * 0.25f * f + (x[1] - x[-1]) * 0.5f) * f +
           ((x[1] + x[-1]) * 0.25f + x[0] * 0.5f);
}

inline float allpassStep(const float* x, float c, float& state)
{
    const float y = (antiDenormal + x[1] - state) * c + x[0] - antiDenormal;
    state = y;
    return y;
}

/// The four weights of a fixed fraction, applied to x[-1], x[0], x[1], x[2].
struct Weights
{
    float a = 0.0f, b = 1.0f, c = 0.0f, d = 0.0f;
};

Weights weightsFor(Delay::InterpolationMode mode, float f)
{
    const float f2 = f * f;
    const float f3 = f2 * f;
    Weights w;
    switch (mode)
    {
    case Delay::lagrange3:
        w.a = f2 / 2.0f - f3 / 6.0f - f / 3.0f;
        w.b = f3 / 2.0f - f2 - f / 2.0f + 1.0f;
        w.c = (2.0f * f + f2 - f3) / 2.0f;
        w.d = (f3 - f) / 6.0f;
        break;
    case Delay::hermite3:
        w.a = f2 - f3 / 2.0f - f / 2.0f;
        w.b = 1.5f * f3 - 2.5f * f2 + 1.0f;
        w.c = 2.0f * f2 - 1.5f * f3 + f / 2.0f;
        w.d = f3 / 2.0f - f2 / 2.0f;
        break;
    case Delay::watte3:
        w.a = w.d = f2 / 2.0f - f / 2.0f;
        w.b = 1.0f - (f / 2.0f + f2 / 2.0f);
        w.c = 1.5f * f - f2 / 2.0f;
        break;
    case Delay::parabolic:
        w.d = f2 / 4.0f;
        w.b = 0.5f - f2 / 4.0f;
        w.a = f2 / 4.0f - f / 2.0f + 0.25f;
        w.c = f / 2.0f - f2 / 4.0f + 0.25f;
        break;
    default:
        break;
    }
    return w;
}

/// Whether a position `above` past the whole sample `whole` rounds up, ties going to even.
inline bool roundsUp(float above, long long whole)
{
    return above > 0.5f || (above == 0.5f && (whole & 1) != 0);
}

/// The whole sample below a position, or the nearest one (ties to even) for the rounding
/// modes: what the round-to-nearest conversion of the floor, or of the position, gives.
/// Written with integer steps so that the loops make no library call.
template <typename Whole>
inline Whole wholeSample(float position, bool rounds)
{
    auto whole = static_cast<Whole>(position);
    whole -= static_cast<float>(whole) > position ? 1 : 0;
    if (rounds)
    {
        const float above = position - static_cast<float>(whole);
        whole += roundsUp(above, whole) ? 1 : 0;
    }
    return whole;
}

/// Replaces each delay of a block by the fraction of its position `first + i - delay`, and
/// stores the whole sample below the position, masked into the ring. A loop without
/// gathers, so that the compiler vectorises it; 32-bit indices suffice, rings being at most
/// 2^29 samples.
void locate(float* delaysThenFractions, std::int32_t* indices, std::uint32_t n, std::int32_t first, std::int32_t mask)
{
    for (std::uint32_t i = 0; i < n; ++i)
    {
        const float position = static_cast<float>(first + static_cast<std::int32_t>(i)) - delaysThenFractions[i];
        const auto whole = wholeSample<std::int32_t>(position, false);
        delaysThenFractions[i] = position - static_cast<float>(whole);
        indices[i] = whole & mask;
    }
}

/// The rounding readers: the sample below each position, or the one above it when the
/// position rounds up. The guard past the ring's end stands for ring element 0, and the
/// mask keeps a whole sample's parity.
void readNearestEach(const float* ring, const std::int32_t* indices, const float* fractions, float* out,
                     std::uint32_t n)
{
    for (std::uint32_t i = 0; i < n; ++i)
        out[i] = ring[indices[i] + (roundsUp(fractions[i], indices[i]) ? 1 : 0)];
}

/// One sample a position located beforehand.
template <typename Form>
void readEachSample(const float* ring, const std::int32_t* indices, const float* fractions, float* out,
                    std::uint32_t n, Form form)
{
    for (std::uint32_t i = 0; i < n; ++i)
        out[i] = form(ring + indices[i], fractions[i]);
}

const std::map<std::string, Delay::InterpolationMode>& nameTable()
{
    static const std::map<std::string, Delay::InterpolationMode> table{
        {"nearest", Delay::nearest},           {"linear", Delay::linear},   {"lagrange3", Delay::lagrange3},
        {"allpass", Delay::allpass},           {"nearestXfade", Delay::nearestXfade},
        {"hermite3", Delay::hermite3},         {"watte3", Delay::watte3},   {"bspline3", Delay::bspline3},
        {"parabolic", Delay::parabolic}};
    return table;
}
} // namespace

Delay::InterpolationMode Delay::interpolationModeFromName(const std::string& name)
{
    const auto& table = nameTable();
    const auto found = table.find(name);
    return found == table.end() ? linear : found->second;
}

std::string Delay::interpolationModeName(std::uint32_t mode)
{
    for (const auto& [name, value] : nameTable())
        if (value == mode)
            return name;
    return "linear";
}

Delay::Delay(float maximumDelayMs, InterpolationMode mode)
    : AudioProcessorWithOscInAudioInterrupt(1, 1), interpolationMode(mode)
{
    buffer.resize(2 * guard);
    // Large lines are common (reverberation tails); reserve their likely size at once.
    if (maximumDelayMs > 500.0f)
        buffer.reserve(8 * std::bit_ceil(static_cast<std::uint64_t>(defaultSampleRate * 0.2f)));
    setup(defaultSampleRate, defaultBufferSize, true);
    setMaximumDelay(constructionHeadroomSamples * 1000.0f / sampleRate + maximumDelayMs);
    delayRamp.setTarget(0.0f, 0.0);
}

void Delay::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    for (std::uint32_t start = 0; start < numSamples; start += maximumBlockSize)
    {
        const std::uint32_t n = std::min(numSamples - start, maximumBlockSize);
        // Write before reading, so that a delay of 0 passes the current input through.
        write(inputs[0] + start, n);
        processWritten(outputs[0] + start, n);
    }
}

void Delay::processWritten(float* output, std::uint32_t n)
{
    float state = allpassState;
    read(output, n, delayRamp, interpolationMode, state, &ownStart);
    allpassState = state;
    advance(n);
}

void Delay::setSampleRate(float rate)
{
    sampleRate = clampSampleRate(rate);
    const float target = delayRamp.getTargetValue();
    setMaximumDelay(maximumDelay);
    delayRamp.setSampleRate(sampleRate);
    ensureMaximumDelay(samplesToMs(target));
    delayRamp.setTarget(target, static_cast<double>(interpolationTime));
    handOvers.count();
}

void Delay::setBufferSize(std::uint32_t size)
{
    delayPerSample.resize(std::max<std::uint32_t>(size, 1));
    readIndices.resize(delayPerSample.size());
    setMaximumDelay(maximumDelay);
}

void Delay::clear()
{
    resetWindow();
    allpassState = 0.0f;
}

void Delay::resetWindow()
{
    // Windows only grow between two emptyings, so beyond this one and its guards the ring
    // holds zeros: the storage is zeroed when sized.
    std::memset(buffer.data(), 0, std::min<std::uint64_t>(windowSize + 2 * guard, buffer.size()) * sizeof(float));
    windowSize = std::min(ringSize, smallestWindow);
    windowMask = windowSize - 1;
    windowReach = reachOfWindow(windowSize);
    longestHeld = 0.0f;
    handOvers.count();
}

void Delay::widenWindow(float delay, std::uint32_t n)
{
    if (windowSize == ringSize)
        return;
    const float wanted = delay + static_cast<float>(n + readerReach) + headroom();
    const std::uint64_t size =
        wanted < static_cast<float>(ringSize) ? std::bit_ceil(static_cast<std::uint64_t>(wanted) + 1) : ringSize;
    if (size <= windowSize)
        return;
    // The window keeps its `held` newest samples, the block's own among them once written.
    float* ring = buffer.data() + guard;
    const std::uint64_t held = windowSize;
    const std::uint64_t end = writeIndex + written;
    for (std::uint64_t v = end - held; v != end;)
    {
        // Old places lie below `held`, new ones at the same place or above it: no overlap.
        const std::uint64_t from = v & (held - 1);
        const std::uint64_t to = v & (size - 1);
        const std::uint64_t run = std::min(held - from, end - v);
        if (to != from)
            std::memcpy(ring + to, ring + from, run * sizeof(float));
        v += run;
    }
    // Places beyond the old window and its guards are zeros already.
    const std::uint64_t reached = held + guard;
    for (std::uint64_t v = end - size; v != end - held;)
    {
        const std::uint64_t to = v & (size - 1);
        const std::uint64_t run = std::min(size - to, end - held - v);
        if (to < reached)
            std::memset(ring + to, 0, std::min(run, reached - to) * sizeof(float));
        v += run;
    }
    windowSize = size;
    windowMask = size - 1;
    windowReach = reachOfWindow(size);
    handOvers.count();
}

float Delay::headroom() const
{
    return windowHeadroomSeconds * sampleRate;
}

float Delay::reachOfWindow(std::uint64_t size) const
{
    // A whole ring holds every delay the line can be given.
    if (size == ringSize)
        return std::numeric_limits<float>::infinity();
    return std::max(0.0f, static_cast<float>(size - readerReach) - headroom());
}

void Delay::setMaximumDelay(float ms)
{
    if (!(ms >= 0.0f))
        return;
    const float samples = (ms + 50.0f) * 0.001f * sampleRate;
    if (!(samples < largestRing))
        throw Exception("maximum delay of " + std::to_string(ms) + " ms is too long for a delay line",
                        ONDO_SOURCE_LOCATION);
    maximumDelay = ms;
    ringSize = std::bit_ceil(static_cast<std::uint64_t>(samples) + 8193);
    ringMask = ringSize - 1;
    if (ringSize > allocatedSize)
    {
        buffer.reserve(2 * (ringSize + 2 * guard));
        allocatedSize = ringSize;
    }
    buffer.resize(ringSize + 2 * guard);
    writeIndex &= ringMask;
    clear();
}

void Delay::retarget(Ramp& delayInSamples, float samples, bool immediate, float glideMs)
{
    if (!(samples > 0.0f))
        samples = 0.0f;
    if (immediate)
        delayInSamples.setTarget(samples, true);
    else
        delayInSamples.setTarget(samples, static_cast<double>(glideMs));
}

void Delay::setDelay(float ms, bool immediate)
{
    setDelayInSamples(ms * 0.001f * sampleRate, immediate);
}

void Delay::setDelayInSamples(float samples, bool immediate)
{
    ensureMaximumDelay(samplesToMs(samples));
    retarget(delayRamp, samples, immediate, interpolationTime);
    handOvers.count();
}

void Delay::setInterpolationTime(float ms)
{
    if (ms > 0.0f)
        interpolationTime = ms;
}

void Delay::write(const float* input, std::uint32_t n)
{
    hold(0.0f, n);
    // Split at the end of the window: each part is one contiguous copy.
    const std::uint64_t index = writeIndex & windowMask;
    const std::uint64_t first = std::min<std::uint64_t>(n, windowSize - index);
    float* ring = buffer.data() + guard;
    std::memcpy(ring + index, input, first * sizeof(float));
    std::memcpy(ring, input + first, (n - first) * sizeof(float));
    written = n;
}

void Delay::refreshGuards()
{
    float* ring = buffer.data() + guard;
    ring[-1] = ring[windowSize - 1];
    ring[windowSize] = ring[0];
    ring[windowSize + 1] = ring[1];
}

void Delay::read(float* output, std::uint32_t n, Ramp& delayInSamples, InterpolationMode mode, float& state,
                 RoundedStart* start)
{
    if (delayInSamples.isRunning())
        readGliding(output, n, delayInSamples, mode, state);
    else
    {
        // One reading of the delay for both: a control thread may set it meanwhile.
        const float delay = delayInSamples.getValue(0);
        hold(delay, n);
        readFixed(output, n, delay, mode, state, start);
    }
}

void Delay::remember(RoundedStart& start, float delay) const
{
    // The position below is fl(P - delay), P = writeIndex + ringSize a whole number under
    // 2 * ringSize, then rounded to nearest (ties to even). With ringSize at most 2^23 every
    // float in play is exact but that difference, which lies within e = ringSize * 2^-24 (half
    // its ulp) of the true P - delay. Whenever the delay's fraction g lies farther than e from
    // one half, the true value and its float round to the same whole sample, whatever P is:
    // P - floor(delay) below one half, one less above it. Near one half (and for a delay
    // outside the ring) the float position is worked out each time, as before.
    start.delay = delay;
    start.ringSize = ringSize;
    start.exact = false;
    if (!(delay >= 0.0f && delay < static_cast<float>(ringSize)) || ringSize > (std::uint64_t{1} << 23))
        return;
    const float whole = std::floor(delay);
    const double g = static_cast<double>(delay - whole); // exact: both lie within a factor of 2
    const double e = static_cast<double>(ringSize) * 0x1p-24;
    if (!(std::fabs(g - 0.5) > e))
        return;
    start.behind = static_cast<std::uint64_t>(whole) + (g > 0.5 ? 1 : 0);
    start.exact = true;
}

std::uint64_t Delay::fixedStart(float delay, InterpolationMode mode, float& fraction, RoundedStart* start) const
{
    const bool rounds = roundsToWholeSamples(mode);
    if (rounds && start != nullptr)
    {
        if (start->ringSize != ringSize || !(start->delay == delay))
            remember(*start, delay);
        if (start->exact)
        {
            fraction = 0.0f;
            return (writeIndex + ringSize - start->behind) & windowMask;
        }
    }
    // Signed conversions give the same floats (rings hold far fewer than 2^63 samples) in one
    // instruction each on x86-64, where the unsigned ones branch.
    const float position = static_cast<float>(static_cast<std::int64_t>(writeIndex)) +
                           static_cast<float>(static_cast<std::int64_t>(ringSize)) - delay;
    const auto whole = wholeSample<long long>(position, rounds);
    fraction = rounds ? 0.0f : position - static_cast<float>(whole);
    return static_cast<std::uint64_t>(whole) & windowMask;
}

void Delay::readFixed(float* output, std::uint32_t n, float delay, InterpolationMode mode, float& state,
                      RoundedStart* start)
{
    // A fixed delay has one fraction: the weights are hoisted out of the loops, and the ring
    // is read in contiguous runs up to its end.
    float f = 0.0f;
    std::uint64_t index = fixedStart(delay, mode, f, start);
    const Weights w = weightsFor(mode, f);
    const float allpassCoefficient = mode == allpass ? f / (1.0f - f + 1.0f) : 0.0f;
    std::uint32_t done = 0;
    while (done < n)
    {
        const auto run = static_cast<std::uint32_t>(std::min<std::uint64_t>(n - done, windowSize - index));
        // Only the interpolators reach past a run's ends into the guards.
        if (!roundsToWholeSamples(mode))
            refreshGuards();
        const float* x = buffer.data() + guard + index;
        float* y = output + done;
        switch (mode)
        {
        case nearest:
        case nearestXfade:
            std::memcpy(y, x, run * sizeof(float));
            break;
        case lagrange3:
        case hermite3:
        case watte3:
        case parabolic:
            for (std::uint32_t i = 0; i < run; ++i)
            {
                const float* xi = x + i;
                y[i] = w.a * xi[-1] + w.b * xi[0] + w.c * xi[1] + w.d * xi[2];
            }
            break;
        case bspline3:
            for (std::uint32_t i = 0; i < run; ++i)
                y[i] = bspline3Form(x + i, f);
            break;
        case allpass:
            for (std::uint32_t i = 0; i < run; ++i)
                y[i] = allpassStep(x + i, allpassCoefficient, state);
            break;
        case linear:
        default:
            for (std::uint32_t i = 0; i < run; ++i)
                y[i] = linearForm(x + i, f);
            break;
        }
        done += run;
        index = 0;
    }
}

void Delay::readGliding(float* output, std::uint32_t n, Ramp& delayInSamples, InterpolationMode mode, float& state)
{
    refreshGuards();
    const float* ring = buffer.data() + guard;
    const auto chunk = static_cast<std::uint32_t>(delayPerSample.size());
    std::uint32_t k = 0;
    for (std::uint32_t start = 0; start < n; start += k)
    {
        k = std::min(chunk, n - start);
        delayInSamples.fill(delayPerSample.data(), k);
        const std::uint64_t window = windowSize;
        hold(*std::max_element(delayPerSample.data(), delayPerSample.data() + k), n);
        if (windowSize != window)
            refreshGuards();
        locate(delayPerSample.data(), readIndices.data(), k, static_cast<std::int32_t>(writeIndex + start),
               static_cast<std::int32_t>(windowMask));
        const auto each = [&](auto form) {
            readEachSample(ring, readIndices.data(), delayPerSample.data(), output + start, k, form);
        };
        switch (mode)
        {
        case nearest:
        case nearestXfade:
            readNearestEach(ring, readIndices.data(), delayPerSample.data(), output + start, k);
            break;
        case lagrange3:
            each(lagrange3Form);
            break;
        case hermite3:
            each(hermite3Form);
            break;
        case watte3:
            each(watte3Form);
            break;
        case parabolic:
            each(parabolicForm);
            break;
        case bspline3:
            each(bspline3Form);
            break;
        case allpass:
            each([&state](const float* x, float f) {
                const float g = 1.0f - f;
                return allpassStep(x, (1.0f - g) / (g + 1.0f), state);
            });
            break;
        case linear:
        default:
            each(linearForm);
            break;
        }
    }
}

bool Delay::processOscMessage(const OSCMessage& message, std::int32_t& context)
{
    if (handleProcessorMessages(message, context))
        return true;
    if (message.matches("/interpolation/mode") && message.matchesSingle('s'))
        setInterpolationMode(interpolationModeFromName(message.getArgument(0).getString()));
    else if (message.matches("/interpolation/time") && message.matchesSingle('n'))
        setInterpolationTime(message.getFloat(0));
    else if (message.matches("/delay") && message.matchesSingle('n'))
    {
        if (message.getFloat(0) >= 0.0f)
            setDelay(message.getFloat(0));
    }
    else if (message.matches("/length") && message.matchesSingle('n'))
        setMaximumDelay(message.getFloat(0));
    else
        return false;
    return true;
}

OSCBundle Delay::getState() const
{
    OSCBundle state = getProcessorState();
    state.add("/delay", samplesToMs(delayRamp.getTargetValue()));
    state.add("/length", getMaximumDelay());
    state.add("/interpolation/mode", String(interpolationModeName(getInterpolationMode())));
    state.add("/interpolation/time", getInterpolationTime());
    return state;
}

OscDocumentation Delay::getDocumentation() const
{
    return {
        {"/interpolation/mode", "[string]", "sets the interpolation mode"},
        {"/interpolation/time", "[number]", "sets the glide time of delay changes (in ms)"},
        {"/delay", "[number]", "sets the delay (in ms)"},
        {"/length", "[number]", "sets the maximum delay (in ms)"},
    };
}
} // namespace ondo
