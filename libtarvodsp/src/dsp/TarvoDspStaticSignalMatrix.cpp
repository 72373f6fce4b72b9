#include "dsp/TarvoDspStaticSignalMatrix.h"

#include "math/TarvoDspVectorPrimitives.h"

#include <atomic>
#include <cmath>
#include <cstring>

namespace ondo
{
StaticSignalMatrix::StaticSignalMatrix(std::uint32_t inputs, std::uint32_t outputs)
    : AudioProcessorWithOscInAudioInterrupt(inputs, outputs), gains(std::size_t(inputs) * outputs),
      activeInputs(inputs)
{
    terms.reserve(inputs);
}

void StaticSignalMatrix::setGain(std::uint32_t input, std::uint32_t output, float value)
{
    if (input < numInputs && output < numOutputs)
        std::atomic_ref<float>(gains[std::size_t(input) * numOutputs + output]).store(value, std::memory_order_relaxed);
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
    const std::uint32_t numActive = gatherActiveInputs();
    for (std::uint32_t o = 0; o < numOutputs; ++o)
    {
        if (!isOutletConnected(o))
            continue;
        gatherOutputTerms(terms, o, numActive, inputs);
        terms.addInto(outputs[o], numSamples);
    }
}

void StaticSignalMatrix::gatherTerms(MixTerms* perOutput, float** inputs)
{
    const std::uint32_t numActive = gatherActiveInputs();
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        if (isOutletConnected(o))
            gatherOutputTerms(perOutput[o], o, numActive, inputs);
}

std::uint32_t StaticSignalMatrix::gatherActiveInputs()
{
    std::uint32_t numActive = 0;
    for (std::uint32_t i = 0; i < numInputs; ++i)
        if (isInletActive(i))
            activeInputs[numActive++] = i;
    return numActive;
}

void StaticSignalMatrix::gatherOutputTerms(MixTerms& into, std::uint32_t o, std::uint32_t numActive, float** inputs)
{
    for (std::uint32_t a = 0; a < numActive; ++a)
    {
        const std::uint32_t i = activeInputs[a];
        const float g = getGain(i, o);
        // Silent pairs cost nothing.
        if (std::fabs(g) > 0.0001f)
            into.add(inputs[i], g);
    }
}
} // namespace ondo
