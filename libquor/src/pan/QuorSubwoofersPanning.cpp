#include "pan/QuorSubwoofersPanning.h"

#include "dsp/TarvoDspBiquadCookbook.h"
#include "math/TarvoDspVectorPrimitives.h"

#include <algorithm>
#include <cstring>

namespace Quor
{
SubwoofersPanning::SubwoofersPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : Pan(numSources, numSpeakers), panner(numSources, std::max<std::uint32_t>(2, numSpeakers)),
      filtered(numSources, blockLength), outputsAtOffset(numSpeakers)
{
    for (std::uint32_t s = 0; s < numSources; ++s)
    {
        lowPass.push_back(std::make_unique<ondo::BiquadIPP>());
        lowPass.back()->changeBufferSize(blockLength);
    }
    designLowPass();
}

void SubwoofersPanning::designLowPass()
{
    ondo::BiquadCookbook design(ondo::FilterShape::lowpass);
    design.setSampleRate(getSampleRate());
    design.setFrequency(crossoverHz);
    design.setQ(crossoverQ);
    design.setGain(0.0);
    design.design();
    for (auto& f : lowPass)
        f->setCoefficients(design.getCoefficients());
}

void SubwoofersPanning::setSampleRate(float rate)
{
    panner.changeSampleRate(rate);
    designLowPass();
}

void SubwoofersPanning::clear()
{
    panner.clear();
    filtered.clear();
    for (auto& f : lowPass)
        f->clear();
}

void SubwoofersPanning::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        std::memset(outputs[o], 0, numSamples * sizeof(float));
    processAdd(outputs, inputs, numSamples);
}

void SubwoofersPanning::processAdd(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (numOutputs == 0)
        return;
    for (std::uint32_t done = 0; done < numSamples; done += blockLength)
    {
        const std::uint32_t n = std::min(blockLength, numSamples - done);
        for (std::uint32_t s = 0; s < numInputs; ++s)
            lowPass[s]->filter(filtered[s], inputs[s] + done, static_cast<int>(n));
        if (numOutputs < 2)
        {
            for (std::uint32_t s = 0; s < numInputs; ++s)
                ondo::primitives::vectorAdd32InPlace(filtered[s], outputs[0] + done, static_cast<int>(n));
            continue;
        }
        for (std::uint32_t o = 0; o < numOutputs; ++o)
            outputsAtOffset[o] = outputs[o] + done;
        panner.processAdd(outputsAtOffset.data(), filtered.getChannels(), n);
    }
}

void SubwoofersPanning::setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool immediate)
{
    if (source >= numInputs)
        return;
    const bool changed = !(sourcesPosition[source] == position);
    sourcesPosition[source] = position;
    if (numOutputs >= 2 && changed)
        panner.setSourcePosition(source, position, immediate);
}

void SubwoofersPanning::setSpeakers(const ondo::Point3Array& speakers)
{
    speakersPosition = speakers;
    if (numOutputs >= 2)
        panner.setSpeakers(speakers);
}
} // namespace Quor
