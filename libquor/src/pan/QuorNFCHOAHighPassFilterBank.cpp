#include "pan/QuorNFCHOAHighPassFilterBank.h"

#include "math/TarvoDspVectorPrimitives.h"

namespace Quor
{
NFCHOAHighPassFilterBank::NFCHOAHighPassFilterBank(std::uint32_t dimension, std::uint32_t order)
    : AudioProcessorWithOscInAudioInterrupt(order + 1, order + 1), highPasses(order + 1)
{
    for (std::uint32_t l = 1; l <= order; ++l)
        highPasses[l] = std::make_unique<NFCHOAHighPass>(dimension, l);
}

void NFCHOAHighPassFilterBank::setDistance(double metres, bool immediate)
{
    for (std::size_t l = 1; l < highPasses.size(); ++l)
        highPasses[l]->setDistance(metres, immediate);
}

void NFCHOAHighPassFilterBank::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (outputs[0] != inputs[0])
        ondo::primitives::vectorCopy32(inputs[0], outputs[0], static_cast<int>(numSamples));
    for (std::size_t l = 1; l < highPasses.size(); ++l)
        highPasses[l]->process(outputs + l, inputs + l, numSamples);
}

void NFCHOAHighPassFilterBank::setSampleRate(float rate)
{
    for (std::size_t l = 1; l < highPasses.size(); ++l)
        highPasses[l]->changeSampleRate(rate);
}

void NFCHOAHighPassFilterBank::setBufferSize(std::uint32_t size)
{
    for (std::size_t l = 1; l < highPasses.size(); ++l)
        highPasses[l]->changeBufferSize(size);
}

void NFCHOAHighPassFilterBank::clear()
{
    for (std::size_t l = 1; l < highPasses.size(); ++l)
        highPasses[l]->clear();
}
} // namespace Quor
