#include "pan/QuorNFCHOAPanningOneSource.h"

#include "pan/QuorHOA2DPanning.h"
#include "pan/QuorHOA3DPanning.h"

#include <algorithm>
#include <cstring>

namespace Quor
{
namespace
{
std::unique_ptr<HOAPanning> makeEncoder(std::uint32_t dimension, std::uint32_t numChannels)
{
    if (dimension == 2)
        return std::make_unique<HOA2DPanning>(1, numChannels);
    return std::make_unique<HOA3DPanning>(1, numChannels);
}
} // namespace

NFCHOAPanningOneSource::NFCHOAPanningOneSource(std::uint32_t dim, std::uint32_t numChannels)
    : AudioProcessorWithOscInAudioInterrupt(1, numChannels), dimension(dim), encoder(makeEncoder(dim, numChannels)),
      order(encoder->getOrder()), mono(1, maximumChunk), filterBank(order), highPassBank(dim, order),
      gainsMatrix(order + 1, numChannels), encoded(numChannels), row(numChannels), filtered(order + 1, maximumChunk),
      outputChunk(numChannels)
{
}

std::uint32_t NFCHOAPanningOneSource::firstComponent(std::uint32_t l) const
{
    if (dimension == 2)
        return l == 0 ? 0 : 2 * l - 1;
    return l * l;
}

std::uint32_t NFCHOAPanningOneSource::componentsOf(std::uint32_t l) const
{
    if (dimension == 2)
        return l == 0 ? 1 : 2;
    return 2 * l + 1;
}

void NFCHOAPanningOneSource::setSourcePosition(const ondo::Point3& p, bool immediate)
{
    position = p;
    const double distance = p.length();
    filterBank.setSourceDistance(distance, immediate);
    highPassBank.setDistance(distance, immediate);
    if (numOutputs < firstComponent(order) + componentsOf(order))
        return; // a voice without channels
    encoded.clear();
    encoder->computeGains(p, encoded.data(), 0);
    for (std::uint32_t l = 0; l <= order; ++l)
    {
        row.clear();
        const std::uint32_t first = firstComponent(l);
        std::copy_n(encoded.data() + first, componentsOf(l), row.data() + first);
        gainsMatrix.setGainsForInput(l, row.data(), immediate);
    }
}

void NFCHOAPanningOneSource::setSpeakersRadius(double metres)
{
    speakersRadius = metres;
    filterBank.setSpeakerDistance(metres, false);
    placeAgain();
}

void NFCHOAPanningOneSource::setAmbisonicNormalization(ondo::Ambisonics::Normalization normalization)
{
    encoder->setAmbisonicNormalization(normalization);
    placeAgain();
}

void NFCHOAPanningOneSource::setComputationMode(HoaEncodingVector::Mode mode)
{
    encoder->setComputationMode(mode);
    placeAgain();
}

void NFCHOAPanningOneSource::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (resting)
    {
        // Whatever the filters held when the voice stopped belongs to the past.
        clear();
        resting = false;
    }
    const bool highPass = useHighPass;
    if (highPass && !highPassRunning)
        highPassBank.clear();
    highPassRunning = highPass;
    for (std::uint32_t start = 0; start < numSamples; start += maximumChunk)
    {
        const std::uint32_t n = std::min(maximumChunk, numSamples - start);
        // A copy, so that the voice reads its input whole even where it aliases an output.
        std::memcpy(mono[0], inputs[0] + start, n * sizeof(float));
        float* in = mono[0];
        filterBank.process(filtered.getChannels(), &in, n);
        if (highPass)
            highPassBank.process(filtered.getChannels(), filtered.getChannels(), n);
        outputChunk.refer(outputs, numOutputs, n, start);
        gainsMatrix.processAdd(outputChunk.getChannels(), filtered.getChannels(), n);
    }
}

void NFCHOAPanningOneSource::setSampleRate(float rate)
{
    filterBank.changeSampleRate(rate);
    highPassBank.changeSampleRate(rate);
    gainsMatrix.changeSampleRate(rate);
}

void NFCHOAPanningOneSource::setBufferSize(std::uint32_t size)
{
    filterBank.changeBufferSize(size);
    highPassBank.changeBufferSize(size);
    gainsMatrix.changeBufferSize(size);
}

void NFCHOAPanningOneSource::clear()
{
    filterBank.clear();
    highPassBank.clear();
    gainsMatrix.clear();
}
} // namespace Quor
