#include "pan/QuorNFCHOAFilterBank.h"

#include "math/TarvoDspVectorPrimitives.h"

namespace Quor
{
NFCHOAFilterBank::NFCHOAFilterBank(std::uint32_t l)
    : AudioProcessorWithOscInAudioInterrupt(1, l + 1), order(l), filterModels(l + 1), filters(l + 1)
{
    for (std::uint32_t k = 1; k <= order; ++k)
    {
        filterModels[k] = std::make_unique<NFCHOAFilterModeling>(k);
        filters[k] = std::make_unique<ondo::FadedCascade>(static_cast<int>((k + 1) / 2));
        filters[k]->requestCoefficients(filterModels[k]->getSections(), true);
    }
}

void NFCHOAFilterBank::setSourceDistance(double metres, bool immediate)
{
    for (std::uint32_t k = 1; k <= order; ++k)
        filterModels[k]->setSourceDistance(metres);
    publish(immediate);
}

void NFCHOAFilterBank::setSpeakerDistance(double metres, bool immediate)
{
    for (std::uint32_t k = 1; k <= order; ++k)
        filterModels[k]->setSpeakerDistance(metres);
    publish(immediate);
}

void NFCHOAFilterBank::publish(bool immediate)
{
    for (std::uint32_t k = 1; k <= order; ++k)
        if (filterModels[k]->update())
            filters[k]->requestCoefficients(filterModels[k]->getSections(), immediate);
}

void NFCHOAFilterBank::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (outputs[0] != inputs[0])
        ondo::primitives::vectorCopy32(inputs[0], outputs[0], static_cast<int>(numSamples));
    for (std::uint32_t k = 1; k <= order; ++k)
        filters[k]->filterBlock(outputs[k], inputs[0], numSamples);
}

void NFCHOAFilterBank::setSampleRate(float rate)
{
    for (std::uint32_t k = 1; k <= order; ++k)
    {
        filters[k]->changeSampleRate(rate);
        filterModels[k]->setSamplingRate(filters[k]->getSampleRate());
    }
    publish(true);
}

void NFCHOAFilterBank::setBufferSize(std::uint32_t size)
{
    for (std::uint32_t k = 1; k <= order; ++k)
        filters[k]->changeBufferSize(size);
}

void NFCHOAFilterBank::clear()
{
    for (std::uint32_t k = 1; k <= order; ++k)
        filters[k]->clear();
}
} // namespace Quor
