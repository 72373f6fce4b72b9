#include "pan/QuorNFCHOAPanning.h"

#include "pan/QuorNFCHOAPanning2DOneSource.h"
#include "pan/QuorNFCHOAPanning3DOneSource.h"
#include "text/TarvoDspString.h"

#include <algorithm>
#include <cstring>

namespace Quor
{
using ondo::Ambisonics;

NFCHOAPanning::NFCHOAPanning(std::uint32_t numSources, std::uint32_t numSpeakers, std::uint32_t dim)
    : Pan(numSources, numSpeakers), dimension(dim),
      order(static_cast<std::uint32_t>(std::max(Ambisonics::orderFromCount(dim, numSpeakers), 0)))
{
    voices.reserve(numSources);
    for (std::uint32_t s = 0; s < numSources; ++s)
    {
        if (dimension == 2)
            voices.push_back(std::make_unique<NFCHOAPanning2DOneSource>(numSpeakers));
        else
            voices.push_back(std::make_unique<NFCHOAPanning3DOneSource>(numSpeakers));
        voices[s]->setSpeakersRadius(1.0);
        voices[s]->setSourcePosition(sourcesPosition[s], true);
    }
}

void NFCHOAPanning::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        if (isOutletConnected(o))
            std::memset(outputs[o], 0, numSamples * sizeof(float));
    processAdd(outputs, inputs, numSamples);
}

void NFCHOAPanning::processAdd(float** outputs, float** inputs, std::uint32_t numSamples)
{
    for (std::uint32_t s = 0; s < numInputs; ++s)
    {
        // A muted or silent source costs nothing.
        if (!isInletActive(s) || isSourceMuted(s))
        {
            voices[s]->rest();
            continue;
        }
        voices[s]->process(outputs, inputs + s, numSamples);
    }
}

void NFCHOAPanning::setSampleRate(float rate)
{
    for (auto& voice : voices)
        voice->changeSampleRate(rate);
}

void NFCHOAPanning::setBufferSize(std::uint32_t size)
{
    for (auto& voice : voices)
        voice->changeBufferSize(size);
}

void NFCHOAPanning::clear()
{
    for (auto& voice : voices)
        voice->clear();
}

void NFCHOAPanning::setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool immediate)
{
    if (source >= numInputs)
        return;
    if (position == sourcesPosition[source] && !immediate)
        return;
    sourcesPosition[source] = position;
    voices[source]->setSourcePosition(position, immediate);
}

void NFCHOAPanning::setNfcCompensation(bool enabled)
{
    for (auto& voice : voices)
        voice->setUseHighPass(enabled);
}

void NFCHOAPanning::setNfcSpeakersRadius(float metres)
{
    for (auto& voice : voices)
        voice->setSpeakersRadius(metres);
}

Pan::AmbisonicNormalization NFCHOAPanning::getAmbisonicNormalization() const
{
    return voices.empty() ? Pan::getAmbisonicNormalization() : voices[0]->getEncoder().getAmbisonicNormalization();
}

void NFCHOAPanning::setAmbisonicNormalization(AmbisonicNormalization normalization)
{
    for (auto& voice : voices)
        voice->setAmbisonicNormalization(normalization);
}

void NFCHOAPanning::setComputationMode(const ondo::String& name)
{
    setComputationMode(HoaEncodingVector::modeFromString(name));
}

void NFCHOAPanning::setComputationMode(ComputationMode mode)
{
    for (auto& voice : voices)
        voice->setComputationMode(mode);
}

void NFCHOAPanning::getInfos(StringArray& lines) const
{
    Pan::getInfos(lines);
    if (voices.empty())
        return;
    const NFCHOAPanningOneSource& first = *voices[0];
    lines.push_back("order : " + std::to_string(first.getOrder()));
    lines.push_back("encoding norm : " + Ambisonics::toString(first.getEncoder().getAmbisonicNormalization()));
    lines.push_back("nfc compensation : true");
    lines.push_back("nfc high pass : " + ondo::StringHelper::toString(first.getUseHighPass()));
    lines.push_back("nfc speakers radius : " +
                    ondo::StringHelper::toString(static_cast<float>(first.getSpeakersRadius())) + " m");
    lines.push_back("computation mode : " + HoaEncodingVector::toString(first.getEncoder().getComputationMode()));
}

std::string NFCHOAPanning::getOutletName(std::int32_t index) const
{
    if (index < 0 || static_cast<std::uint32_t>(index) >= numOutputs)
        return "dumpout";
    return "output #" + std::to_string(index + 1) + " : " +
           Ambisonics::label(static_cast<std::uint32_t>(index), dimension, Ambisonics::ACN, false);
}
} // namespace Quor
