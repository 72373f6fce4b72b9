#include "pan/QuorVectorBasedPanning.h"

#include "common/TarvoDspException.h"

#include <algorithm>

namespace Quor
{
VectorBasedPanning::VectorBasedPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AmplitudePanning(numSources, numSpeakers)
{
    triplets.setSpeakers(ondo::Point3Array::defaultLayout(numSpeakers));
}

void VectorBasedPanning::setSpeakers(const ondo::Point3Array& speakers)
{
    if (speakers.size() != numOutputs)
        throw ondo::Exception("vbap: " + std::to_string(speakers.size()) + " speaker positions given for " +
                                  std::to_string(numOutputs) + " speakers.",
                              ondo::SourceLocation("libquor/pan/QuorVbapPanning", __LINE__));
    speakersPosition = speakers;
    if (speakers.isPlanar(0.0001f))
    {
        valid = false;
        throw ondo::Exception("cannot build a 3-D vbap : the loudspeaker setup is planar.",
                              ondo::SourceLocation("libquor/pan/QuorVbapPanning", __LINE__));
    }
    triplets.setSpeakers(speakers);
    recomputeAllSources();
}

void VectorBasedPanning::computeGains(const ondo::Point3& position, float* row, std::uint32_t)
{
    std::fill(row, row + numOutputs, 0.0f);
    if (!valid)
        return;
    const ondo::VbapTriplets::Selection s = triplets.select(position);
    for (int k = 0; k < 3; ++k)
        if (s.speakers[k] < numOutputs)
            row[s.speakers[k]] += s.gains[k];
    normalizeGains(row);
}

void VectorBasedPanning::getInfos(StringArray& lines) const
{
    Pan::getInfos(lines);
    triplets.update();
    const auto& list = triplets.getTriplets();
    for (std::size_t t = 0; t < list.size(); ++t)
    {
        std::string line = "Triplet #" + std::to_string(t + 1) + " : ";
        for (std::uint16_t speaker : list[t].speakers)
            line += std::to_string(speaker + 1) + " ";
        lines.push_back(line);
    }
}
} // namespace Quor
