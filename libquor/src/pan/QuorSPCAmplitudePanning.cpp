#include "pan/QuorSPCAmplitudePanning.h"

#include "pan/QuorSpeakerCount.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
SPCAmplitudePanning::SPCAmplitudePanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AmplitudePanning(numSources, numSpeakers), speakerAngles(numSpeakers), speakerWeights(numSpeakers),
      sourcesCompactness(numSources)
{
    setSpeakers(ondo::Point3Array::defaultLayout(numSpeakers));
}

void SPCAmplitudePanning::setSpeakers(const ondo::Point3Array& speakers)
{
    requireSpeakerCount(speakers, numOutputs, "spcap",
                        ondo::SourceLocation("libquor/pan/QuorSPCAmplitudePanning", __LINE__));
    speakersPosition = speakers;
    for (std::uint32_t i = 0; i < numOutputs; ++i)
        speakerAngles[i] = std::atan2(speakers[i].y, speakers[i].x);
    for (std::uint32_t i = 0; i < numOutputs; ++i)
    {
        float sum = 0.0f;
        for (std::uint32_t j = 0; j < numOutputs; ++j)
            sum += std::cos(speakerAngles[i] - speakerAngles[j]) + 1.0f;
        speakerWeights[i] = 0.5f * sum;
    }
    recomputeAllSources();
}

void SPCAmplitudePanning::computeGains(const ondo::Point3& position, float* row, std::uint32_t source)
{
    const float t = std::atan2(position.y, position.x);
    const float exponent = 1.0f - sourcesCompactness[source] * 0.01f;
    float power = 0.0f;
    for (std::uint32_t i = 0; i < numOutputs; ++i)
    {
        row[i] = 0.5f * std::pow(1.0f + std::cos(speakerAngles[i] - t), exponent) / speakerWeights[i];
        power += row[i] * row[i];
    }
    // Only a source exactly opposite every speaker has no share anywhere: it stays silent
    // rather than turning the row into 0 / 0.
    const float scale = power > 0.0f ? 1.0f / std::sqrt(power) : 0.0f;
    for (std::uint32_t i = 0; i < numOutputs; ++i)
        row[i] = std::fabs(row[i]) * scale;
}
} // namespace Quor
