#include "dsp/TarvoDspStaticSignalMatrix.h"

#include "math/TarvoDspVectorPrimitives.h"

#include <atomic>
#include <cmath>
#include <cstring>

namespace ondo
{
StaticSignalMatrix::StaticSignalMatrix(std::uint32_t inputs, std::uint32_t outputs)
    : AudioProcessorWithOscInAudioInterrupt(inputs, outputs), gains(std::size_t(inputs) * outputs),
      audibleInputs(std::size_t(inputs) * outputs), audibleGains(std::size_t(inputs) * outputs),
      audibleStart(std::size_t(outputs) + 1)
{
    terms.reserve(inputs);
}

void StaticSignalMatrix::setGain(std::uint32_t input, std::uint32_t output, float value)
{
    if (input < numInputs && output < numOutputs)
    {
        std::atomic_ref<float>(gains[std::size_t(input) * numOutputs + output]).store(value, std::memory_order_relaxed);
        gainsVersion.fetch_add(1, std::memory_order_release);
    }
}

void StaticSignalMatrix::setGainsForInput(std::uint32_t input, const float* values)
{
    if (values == nullptr)
        return;
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        setGain(input, o, values[o]);
}

void StaticSignalMatrix::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        if (isOutletConnected(o))
            std::memset(outputs[o], 0, numSamples * sizeof(float));
    processAdd(outputs, inputs, numSamples);
}

void StaticSignalMatrix::processAdd(float** outputs, float** inputs, std::uint32_t numSamples)
{
    // Output by output, the inputs in order: each output gets the same sums as input by input.
    refreshAudiblePairs();
    for (std::uint32_t o = 0; o < numOutputs; ++o)
    {
        if (!isOutletConnected(o))
            continue;
        gatherOutputTerms(terms, o, inputs);
        terms.addInto(outputs[o], numSamples);
    }
}

void StaticSignalMatrix::gatherTerms(MixTerms* perOutput, float** inputs)
{
    refreshAudiblePairs();
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        if (isOutletConnected(o))
            gatherOutputTerms(perOutput[o], o, inputs);
    gathered = true;
    gatheredActivity.take(getInletsAnalyzer());
}

bool StaticSignalMatrix::termsUnchanged() const
{
    return gathered && gainsVersion.load(std::memory_order_acquire) == listedVersion &&
           gatheredActivity.matches(getInletsAnalyzer());
}

void StaticSignalMatrix::refreshAudiblePairs()
{
    // A gain written after this look moves the version on again, and is listed next block.
    const std::uint32_t version = gainsVersion.load(std::memory_order_acquire);
    if (version == listedVersion)
        return;
    std::uint32_t count = 0;
    for (std::uint32_t o = 0; o < numOutputs; ++o)
    {
        audibleStart[o] = count;
        for (std::uint32_t i = 0; i < numInputs; ++i)
        {
            const float g = getGain(i, o);
            // Silent pairs cost nothing.
            if (std::fabs(g) > 0.0001f)
            {
                audibleInputs[count] = i;
                audibleGains[count] = g;
                ++count;
            }
        }
    }
    audibleStart[numOutputs] = count;
    listedVersion = version;
}

void StaticSignalMatrix::gatherOutputTerms(MixTerms& into, std::uint32_t o, float** inputs)
{
    for (std::uint32_t t = audibleStart[o]; t < audibleStart[o + 1]; ++t)
        if (isInletActive(audibleInputs[t]))
            into.add(inputs[audibleInputs[t]], audibleGains[t]);
}
} // namespace ondo
