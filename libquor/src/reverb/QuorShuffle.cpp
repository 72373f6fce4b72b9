#include "reverb/QuorShuffle.h"

#include "math/TarvoDspVectorPrimitives.h"

#include <bit>
#include <cmath>

namespace Quor
{
namespace
{
using namespace ondo::primitives;

constexpr std::uint32_t mixedGroupSize = 4;

Shuffle::Mode modeFor(std::uint32_t n)
{
    if (n == 12)
        return Shuffle::mixed;
    if (n > 0 && std::has_single_bit(n))
        return Shuffle::hadamard;
    return Shuffle::householder;
}
} // namespace

Shuffle::Shuffle(std::uint32_t n)
    : ondo::AudioProcessorWithOscInAudioInterrupt(n, n), numChannels(n), buffer(n, defaultBufferSize),
      scratch(defaultBufferSize), permutation(defaultPermutation(n)), channelPointers(permutation.size()),
      mode(modeFor(n)), columnGain(1.0f / std::sqrt(static_cast<float>(n))),
      hadamardTransform(2, ondo::FastHadamardTransform::natural, false)
{
    if (mode == hadamard || mode == mixed)
    {
        hadamardTransform.setSize(mode == mixed ? mixedGroupSize : n);
        hadamardTransform.setOrdering(ondo::FastHadamardTransform::natural);
    }
    setup(sampleRate, bufferSize, true);
}

ondo::Vector<std::uint32_t> Shuffle::defaultPermutation(std::uint32_t n)
{
    switch (n)
    {
    case 4:
        return {1, 2, 3, 0};
    case 6:
        return {1, 2, 3, 5, 4, 0};
    case 8:
        return {6, 1, 2, 3, 5, 4, 7, 0};
    case 12:
        return {11, 10, 0, 4, 3, 7, 9, 8, 6, 2, 1, 5};
    case 16:
        return {11, 15, 12, 10, 0, 4, 13, 3, 7, 9, 14, 8, 6, 2, 1, 5};
    default:
    {
        ondo::Vector<std::uint32_t> rotation(n);
        for (std::uint32_t i = 0; i < n; ++i)
            rotation[i] = (i + 1) % n;
        return rotation;
    }
    }
}

std::string Shuffle::modeToText(std::uint32_t value)
{
    switch (value)
    {
    case householder:
        return "householder";
    case hadamard:
        return "hadamard";
    case mixed:
        return "mixed";
    case hadamardQuor3:
        return "hadamard-quor3";
    default:
        return {};
    }
}

void Shuffle::setBufferSize(std::uint32_t size)
{
    scratch.resize(size);
    buffer.setSize(numChannels, size);
}

float* const* Shuffle::columnTargets(float* const* outputs)
{
    if (mode != hadamard || hadamardTransform.getOrdering() != ondo::FastHadamardTransform::natural)
        return nullptr;
    // Mixed channel permutation[c] goes straight to output c.
    for (std::uint32_t c = 0; c < numChannels; ++c)
        channelPointers[permutationEnabled ? permutation[c] : c] = outputs[c];
    return channelPointers.data();
}

bool Shuffle::mixInColumns(float** outputs, float** inputs, std::uint32_t numSamples)
{
    float* const* targets = columnTargets(outputs);
    return targets != nullptr && hadamardTransform.transformColumns(targets, inputs, numSamples, columnGain);
}

void Shuffle::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (numChannels == 0 || numSamples == 0)
        return;
    if (mode == hadamard && mixInColumns(outputs, inputs, numSamples))
        return;
    if (numSamples != buffer.getNumSamples())
        setBufferSize(numSamples);
    float** mix = buffer.getChannels();
    const int n = static_cast<int>(numSamples);
    float gain = 1.0f;

    switch (mode)
    {
    case hadamard:
        hadamardTransform.transform(mix, inputs, numSamples);
        gain = columnGain;
        break;
    case mixed:
        for (std::uint32_t c = 0; c < numChannels; ++c)
            vectorCopy32(inputs[c], mix[c], n);
        for (std::uint32_t group = 0; group < numChannels; group += mixedGroupSize)
            hadamardTransform.transform(mix + group, numSamples);
        gain = 1.0f / std::sqrt(static_cast<float>(mixedGroupSize));
        break;
    case householder:
    case hadamardQuor3:
        // The reflection through the vector of ones: x - (2/N) * sum(x) on every channel.
        for (std::uint32_t c = 0; c < numChannels; ++c)
            vectorCopy32(inputs[c], mix[c], n);
        vectorCopy32(mix[0], scratch.data(), n);
        for (std::uint32_t c = 1; c < numChannels; ++c)
            vectorAdd32InPlace(mix[c], scratch.data(), n);
        vectorMultiplyConstant32InPlace(-2.0f / static_cast<float>(numChannels), scratch.data(), n);
        for (std::uint32_t c = 0; c < numChannels; ++c)
            vectorAdd32InPlace(scratch.data(), mix[c], n);
        break;
    }

    if (permutationEnabled)
    {
        // Pointers move, samples do not.
        for (std::uint32_t c = 0; c < numChannels; ++c)
            channelPointers[c] = mix[c];
        for (std::uint32_t c = 0; c < numChannels; ++c)
            mix[c] = channelPointers[permutation[c]];
    }
    for (std::uint32_t c = 0; c < numChannels; ++c)
        vectorMultiplyConstant32(mix[c], gain, outputs[c], n);
}

bool Shuffle::processOscMessage(const ondo::OSCMessage& message, std::int32_t& context)
{
    if (handleProcessorMessages(message, context))
        return true;
    if (message.matches("/permutation") && message.matchesSingle('b'))
        setPermutationEnabled(message.getBool(0));
    else if (message.matches("/mode") && message.matchesSingle('s'))
        return message.getArgument(0).getString() == getModeName();
    else if (message.matches("/hadamard") && message.matchesSingle('s'))
        hadamardTransform.setOrdering(message.getArgument(0).getString());
    else
        return false;
    return true;
}

ondo::OSCBundle Shuffle::getState() const
{
    ondo::OSCBundle state = getProcessorState();
    state.add("/mode", ondo::String(getModeName()));
    state.add("/permutation", isPermutationEnabled());
    state.add("/hadamard", ondo::String(ondo::FastHadamardTransform::orderingToText(hadamardTransform.getOrdering())));
    return state;
}

ondo::OscDocumentation Shuffle::getDocumentation() const
{
    return {{"/permutation", "[boolean]", "applies permutation of the channels"},
            {"/mode", "[string]", "shuffling mode"},
            {"/hadamard", "[string]", "sets flavor of Hadamard processing"}};
}
} // namespace Quor
