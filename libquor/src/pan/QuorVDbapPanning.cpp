#include "pan/QuorVDbapPanning.h"

#include "pan/QuorSpeakerCount.h"

namespace Quor
{
namespace
{
std::unique_ptr<AmplitudePanning> makeInner(std::uint32_t numSources, std::uint32_t numSpeakers, Pan::Type type)
{
    std::unique_ptr<Pan> panner = Pan::create(numSources, numSpeakers, type, Pan::Direct);
    if (dynamic_cast<AmplitudePanning*>(panner.get()) == nullptr)
        throw ondo::Exception("vdbap: no " + Pan::typeToString(type) + " panner for " + std::to_string(numSpeakers) +
                                  " speakers.",
                              ondo::SourceLocation("libquor/pan/QuorVDbapPanning", __LINE__), false);
    return std::unique_ptr<AmplitudePanning>(static_cast<AmplitudePanning*>(panner.release()));
}
} // namespace

VDbapPanning::VDbapPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AmplitudePanning(numSources, numSpeakers), dbap(makeInner(numSources, numSpeakers, Dbap3D)),
      vbap(makeInner(numSources, numSpeakers, Vbap3D)), dbapRows(std::size_t{numSources} * numSpeakers),
      vbapRows(std::size_t{numSources} * numSpeakers)
{
    recomputeAllSources();
}

VDbapPanning::~VDbapPanning() = default;

void VDbapPanning::setSpeakers(const ondo::Point3Array& speakers)
{
    requireSpeakerCount(speakers, numOutputs, "vdbap", ondo::SourceLocation("libquor/pan/QuorVDbapPanning", __LINE__));
    speakersPosition = speakers;
    center = speakers.centroid();
    radius = speakers.maxDistanceTo(center);
    dbap->setSpeakers(speakers);
    try
    {
        vbap->setSpeakers(speakers);
    }
    catch (...)
    {
        recomputeAllSources();
        throw;
    }
    recomputeAllSources();
}

void VDbapPanning::computeGains(const ondo::Point3& position, float* row, std::uint32_t source)
{
    float* dbapRow = dbapRows.data() + std::size_t{source} * numOutputs;
    float* vbapRow = vbapRows.data() + std::size_t{source} * numOutputs;
    const float r = position.distanceTo(center);
    const float inner = 0.7f * radius, outer = 1.3f * radius;
    float wV = 1.0f;
    if (r > outer)
        vbap->computeGains(position, vbapRow, source);
    else if (r < inner)
    {
        dbap->computeGains(position, dbapRow, source);
        wV = 0.0f;
    }
    else
    {
        vbap->computeGains(position, vbapRow, source);
        dbap->computeGains(position, dbapRow, source);
        // A setup of no extent has no band: a source at its centre goes to VBAP.
        wV = outer > inner ? (r - inner) / (outer - inner) : 1.0f;
    }
    const float wD = 1.0f - wV;
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        row[o] = wV * vbapRow[o] + wD * dbapRow[o];
}
} // namespace Quor
