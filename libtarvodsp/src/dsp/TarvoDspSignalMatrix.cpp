#include "dsp/TarvoDspSignalMatrix.h"

#include "math/TarvoDspVectorPrimitives.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>

namespace ondo
{
namespace
{
// Gains are shared element by element between the control thread and the audio thread.
float load(const Vector<float>& v, std::size_t i)
{
    return std::atomic_ref<float>(const_cast<float&>(v[i])).load(std::memory_order_relaxed);
}

void store(Vector<float>& v, std::size_t i, float value)
{
    std::atomic_ref<float>(v[i]).store(value, std::memory_order_relaxed);
}

// The pending set is the one a control thread writes while the audio thread copies it. Its
// elements are stored with release and read with acquire, so that a copy which saw any new
// gain also sees the odd write sequence that preceded it (the check in `advanceGrid`). On x86
// these are plain moves.
float loadPending(const Vector<float>& v, std::size_t i)
{
    return std::atomic_ref<float>(const_cast<float&>(v[i])).load(std::memory_order_acquire);
}

void storePending(Vector<float>& v, std::size_t i, float value)
{
    std::atomic_ref<float>(v[i]).store(value, std::memory_order_release);
}

void copyGains(const Vector<float>& from, Vector<float>& to)
{
    for (std::size_t i = 0; i < to.size(); ++i)
        store(to, i, load(from, i));
}

void copyPendingGains(const Vector<float>& pending, Vector<float>& to)
{
    for (std::size_t i = 0; i < to.size(); ++i)
        store(to, i, loadPending(pending, i));
}

/// Below this a standing gain is not worth a multiply-add.
constexpr float silentGain = 0.0001f;
/// Below this a start and a target are the same gain.
constexpr float sameGain = 1e-06f;

/// `position` modulo `length`; blocks are mostly shorter than a ramp, so the division is rare.
inline std::int32_t wrapPosition(std::int64_t position, std::int32_t length)
{
    return static_cast<std::int32_t>(position < length ? position : position % length);
}
} // namespace

SignalMatrix::SignalMatrix(std::uint32_t inputs, std::uint32_t outputs)
    : AudioProcessorWithOscInAudioInterrupt(inputs, outputs)
{
    startGains.resize(std::size_t(inputs) * outputs);
    targetGains.resize(startGains.size());
    pendingGains.resize(startGains.size());
    setRampTime(defaultRampTimeMs);
    activeInputs.resize(inputs);
    terms.reserve(inputs);
    steadyInputs.resize(startGains.size());
    steadyGains.resize(startGains.size());
    steadyStart.resize(std::size_t(outputs) + 1);
    inputActive.resize(inputs);
}

void SignalMatrix::addRamped(const float* in, float* out, std::uint32_t n, float from, float to)
{
    if (n == 0)
        return;
    if (from == to)
    {
        primitives::vectorAddProductConstant32(in, from, out, static_cast<int>(n));
        return;
    }
    if (n == 1)
    {
        out[0] += to * in[0];
        return;
    }
    const float step = (to - from) / static_cast<float>(n - 1);
    for (std::uint32_t j = 0; j < n; ++j)
        out[j] += (from + step * static_cast<float>(j)) * in[j];
}

template <typename Write>
void SignalMatrix::writeGains(bool immediately, Write&& write)
{
    const bool jump = immediately || rampLength == 0;
    writeSequence.fetch_add(1, std::memory_order_relaxed);
    write(pendingGains, storePending);
    if (jump)
    {
        write(targetGains, store);
        write(startGains, store);
    }
    writeSequence.fetch_add(1, std::memory_order_release);
}

void SignalMatrix::setGain(std::uint32_t input, std::uint32_t output, float value, bool immediately)
{
    if (input >= numInputs || output >= numOutputs)
        return;
    const std::size_t i = std::size_t(input) * numOutputs + output;
    writeGains(immediately, [&](Vector<float>& g, auto put) { put(g, i, value); });
}

void SignalMatrix::setGains(float value, bool immediately)
{
    writeGains(immediately, [&](Vector<float>& g, auto put) {
        for (std::size_t i = 0; i < g.size(); ++i)
            put(g, i, value);
    });
}

void SignalMatrix::setGainsForInput(std::uint32_t input, const float* values, bool immediately)
{
    if (input >= numInputs || values == nullptr)
        return;
    const std::size_t row = std::size_t(input) * numOutputs;
    writeGains(immediately, [&](Vector<float>& g, auto put) {
        for (std::uint32_t o = 0; o < numOutputs; ++o)
            put(g, row + o, values[o]);
    });
}

void SignalMatrix::setRampTime(float ms)
{
    rampTime = std::max(ms, 0.0f);
    const float samples = rampTime * 0.001f * getSampleRate();
    const std::int32_t length = samples < 1.0f ? 0 : static_cast<std::int32_t>(std::min(samples, 2.0e9f));
    rampLength = length;
    if (length < 1)
    {
        rampStep = 1.0f;
        copyGains(targetGains, startGains);
        copyPendingGains(pendingGains, targetGains);
    }
    else
        rampStep = 1.0f / static_cast<float>(length);
    rampPosition = 0;
    // The gains moved outside a write: the audio thread's list of terms is out of date.
    writeSequence.fetch_add(2, std::memory_order_release);
}

void SignalMatrix::setSize(std::uint32_t inputs, std::uint32_t outputs)
{
    if (inputs == numInputs && outputs == numOutputs)
        return;
    const std::size_t n = std::size_t(inputs) * outputs;
    for (Vector<float>* g : {&startGains, &targetGains, &pendingGains})
    {
        g->resize(n);
        g->clear();
    }
    activeInputs.resize(inputs);
    terms.reserve(inputs);
    steadyInputs.resize(n);
    steadyGains.resize(n);
    steadyStart.resize(std::size_t(outputs) + 1);
    inputActive.resize(inputs);
    gatheredSettled = false;
    setRampTime(defaultRampTimeMs);
    setNumberOfInputs(inputs);
    setNumberOfOutputs(outputs);
}

void SignalMatrix::setSampleRate(float)
{
    setRampTime(rampTime);
}

float SignalMatrix::getStartGain(std::uint32_t input, std::uint32_t output) const
{
    return load(startGains, std::size_t(input) * numOutputs + output);
}

float SignalMatrix::getTargetGain(std::uint32_t input, std::uint32_t output) const
{
    return load(targetGains, std::size_t(input) * numOutputs + output);
}

float SignalMatrix::getPendingGain(std::uint32_t input, std::uint32_t output) const
{
    return load(pendingGains, std::size_t(input) * numOutputs + output);
}

void SignalMatrix::advanceGrid()
{
    copyGains(targetGains, startGains);
    const std::uint32_t before = writeSequence.load(std::memory_order_acquire);
    // Acquire loads of the pending gains keep the second look at the sequence after them.
    copyPendingGains(pendingGains, targetGains);
    // A write was under way: the copy may be torn, so stand still for one ramp and take
    // the completed set at the next boundary.
    const bool torn = (before & 1u) != 0 || writeSequence.load(std::memory_order_relaxed) != before;
    if (torn)
        copyGains(startGains, targetGains);
    findSteadyTerms();
    // Every gain now stands exactly at the pending one, taken whole: until the next write,
    // a boundary would copy each gain onto itself.
    settled = !torn && steady && steadyIsExact && steadySequence == before;
}

void SignalMatrix::findSteadyTerms()
{
    steady = false;
    steadyIsExact = true;
    steadySequence = writeSequence.load(std::memory_order_acquire);
    if ((steadySequence & 1u) != 0)
        return;
    std::uint32_t count = 0;
    for (std::uint32_t o = 0; o < numOutputs; ++o)
    {
        steadyStart[o] = count;
        for (std::uint32_t i = 0; i < numInputs; ++i)
        {
            const std::size_t index = std::size_t(i) * numOutputs + o;
            const float target = load(targetGains, index);
            const float start = load(startGains, index);
            if (std::fabs(target - start) > sameGain)
                return;
            steadyIsExact = steadyIsExact && target == start;
            // The terms addSegment would keep, in its order.
            if (std::fabs(target) > silentGain)
            {
                steadyInputs[count] = i;
                steadyGains[count] = target;
                ++count;
            }
        }
    }
    steadyStart[numOutputs] = count;
    // A write that began while the list was read leaves it unused.
    steady = writeSequence.load(std::memory_order_acquire) == steadySequence;
}

void SignalMatrix::addSteady(float** outputs, float** inputs, std::uint32_t offset, std::uint32_t n)
{
    for (std::uint32_t i = 0; i < numInputs; ++i)
        inputActive[i] = isInletActive(i) ? 1 : 0;
    for (std::uint32_t o = 0; o < numOutputs; ++o)
    {
        const std::uint32_t first = steadyStart[o];
        const std::uint32_t last = steadyStart[o + 1];
        if (first == last || !isOutletConnected(o))
            continue;
        for (std::uint32_t t = first; t < last; ++t)
            if (inputActive[steadyInputs[t]] != 0)
                terms.add(inputs[steadyInputs[t]] + offset, steadyGains[t]);
        terms.addInto(outputs[o] + offset, n);
    }
}

bool SignalMatrix::steadyTermsUnchanged() const
{
    // With every gain settled, only a write (which moves the sequence on), a new grid length
    // (which may bring a boundary) or a change of inlets or outlets can change the terms.
    const std::int32_t length = rampLength;
    return gatheredSettled && settled && steady && length == gatheredLength && rampPosition < length &&
           writeSequence.load(std::memory_order_acquire) == steadySequence &&
           gatheredActivity.matches(getInletsAnalyzer());
}

void SignalMatrix::repeatSteadyTerms(std::uint32_t numSamples)
{
    const std::int32_t length = rampLength;
    rampPosition = wrapPosition(static_cast<std::int64_t>(rampPosition) + numSamples, length);
}

bool SignalMatrix::gatherSteadyTerms(MixTerms* perOutput, float** inputs, std::uint32_t numSamples)
{
    gatheredSettled = false;
    const std::int32_t length = rampLength;
    if (length <= 0)
        return false;
    // The head of the block as processAdd would begin it.
    if (rampPosition >= length)
    {
        advanceGrid();
        rampPosition = 0;
    }
    const std::int32_t position = rampPosition;
    if (!steady || writeSequence.load(std::memory_order_acquire) != steadySequence)
        return false;
    // Boundaries inside the block change nothing while the grid is settled and no write
    // came: the block keeps its terms across them, and only the position moves on.
    const bool idleBoundaries = settled;
    if (static_cast<std::int64_t>(numSamples) > length - position && !idleBoundaries)
        return false;
    for (std::uint32_t i = 0; i < numInputs; ++i)
        inputActive[i] = isInletActive(i) ? 1 : 0;
    for (std::uint32_t o = 0; o < numOutputs; ++o)
    {
        if (!isOutletConnected(o))
            continue;
        for (std::uint32_t t = steadyStart[o]; t < steadyStart[o + 1]; ++t)
            if (inputActive[steadyInputs[t]] != 0)
                perOutput[o].add(inputs[steadyInputs[t]], steadyGains[t]);
    }
    if (idleBoundaries)
    {
        rampPosition = wrapPosition(static_cast<std::int64_t>(position) + numSamples, length);
        gatheredSettled = true;
        gatheredLength = length;
        gatheredActivity.take(getInletsAnalyzer());
        return true;
    }
    gatheredSettled = false;
    rampPosition = position + static_cast<std::int32_t>(numSamples);
    if (rampPosition >= length)
    {
        advanceGrid();
        rampPosition = 0;
    }
    return true;
}

void SignalMatrix::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        if (isOutletConnected(o))
            std::memset(outputs[o], 0, numSamples * sizeof(float));
    processAdd(outputs, inputs, numSamples);
}

void SignalMatrix::processAdd(float** outputs, float** inputs, std::uint32_t numSamples)
{
    gatheredSettled = false;
    const std::int32_t length = rampLength;
    if (length <= 0)
    {
        addStatic(outputs, inputs, 0, numSamples);
        rampPosition = 0;
        return;
    }
    std::int32_t position = rampPosition;
    std::uint32_t done = 0;
    while (done < numSamples)
    {
        if (position >= length)
        {
            advanceGrid();
            position = 0;
        }
        const std::uint32_t k = std::min<std::uint32_t>(numSamples - done, static_cast<std::uint32_t>(length - position));
        addSegment(outputs, inputs, done, k, position);
        position += static_cast<std::int32_t>(k);
        done += k;
    }
    if (position >= length)
    {
        advanceGrid();
        position = 0;
    }
    rampPosition = position;
}

std::uint32_t SignalMatrix::gatherActiveInputs()
{
    std::uint32_t numActive = 0;
    for (std::uint32_t i = 0; i < numInputs; ++i)
        if (isInletActive(i))
            activeInputs[numActive++] = i;
    return numActive;
}

// Output by output, the inputs in order: each output gets the same sums as input by input,
// with the standing gains of a run of inputs added in one pass.

void SignalMatrix::addStatic(float** outputs, float** inputs, std::uint32_t offset, std::uint32_t n)
{
    const std::uint32_t numActive = gatherActiveInputs();
    for (std::uint32_t o = 0; o < numOutputs; ++o)
    {
        if (!isOutletConnected(o))
            continue;
        for (std::uint32_t a = 0; a < numActive; ++a)
        {
            const std::uint32_t i = activeInputs[a];
            const float g = load(targetGains, std::size_t(i) * numOutputs + o);
            if (std::fabs(g) > silentGain)
                terms.add(inputs[i] + offset, g);
        }
        terms.addInto(outputs[o] + offset, n);
    }
}

void SignalMatrix::addSegment(float** outputs, float** inputs, std::uint32_t offset, std::uint32_t n,
                              std::int32_t position)
{
    if (steady && writeSequence.load(std::memory_order_acquire) == steadySequence)
    {
        addSteady(outputs, inputs, offset, n);
        return;
    }
    const float step = rampStep;
    const std::uint32_t numActive = gatherActiveInputs();
    for (std::uint32_t o = 0; o < numOutputs; ++o)
    {
        if (!isOutletConnected(o))
            continue;
        float* out = outputs[o] + offset;
        for (std::uint32_t a = 0; a < numActive; ++a)
        {
            const std::uint32_t i = activeInputs[a];
            const std::size_t index = std::size_t(i) * numOutputs + o;
            const float start = load(startGains, index);
            const float target = load(targetGains, index);
            float d = target - start;
            if (std::fabs(d) <= sameGain)
            {
                if (std::fabs(target) > silentGain)
                    terms.add(inputs[i] + offset, target);
                continue;
            }
            // A gliding gain adds on its own, after the standing ones before it.
            terms.addInto(out, n);
            d *= step;
            addRamped(inputs[i] + offset, out, n, static_cast<float>(position) * d + start,
                      static_cast<float>(position + static_cast<std::int32_t>(n)) * d + start);
        }
        terms.addInto(out, n);
    }
}
} // namespace ondo
