#include "pan/QuorHOAPanning.h"

#include "common/TarvoDspException.h"

#include <algorithm>

namespace Quor
{
using ondo::Ambisonics;

namespace
{
std::uint32_t orderOf(std::uint32_t numSpeakers, std::uint32_t dimension)
{
    // No channel at all still makes a (silent) panner of order 0.
    if (numSpeakers == 0)
        return 0;
    const int order = Ambisonics::orderFromCount(dimension, numSpeakers);
    if (order < 0)
        throw ondo::Exception("hoa: " + std::to_string(numSpeakers) + " channels make no Ambisonic order in " +
                                  std::to_string(dimension) + "D",
                              ondo::SourceLocation("libquor/pan/QuorHigherOrderAmbisonicPanning", __LINE__));
    return static_cast<std::uint32_t>(order);
}
} // namespace

HOAPanning::HOAPanning(std::uint32_t numSources, std::uint32_t numSpeakers, std::uint32_t dim)
    : AmplitudePanning(numSources, numSpeakers), dimension(dim),
      encoder(orderOf(numSpeakers, dim), dim, Ambisonics::defaultNormalization(dim))
{
    recomputeAllSources();
}

void HOAPanning::computeGains(const ondo::Point3& position, float* row, std::uint32_t)
{
    if (numOutputs < encoder.getNumComponents())
        return;
    encoder.encode(position, row);
}

void HOAPanning::setAmbisonicNormalization(AmbisonicNormalization n)
{
    if (!Ambisonics::isLegal(n, dimension))
        throw ondo::Exception("invalid normalization for " + std::to_string(dimension) + "D : " + Ambisonics::toString(n),
                              ondo::SourceLocation("libquor/pan/QuorHigherOrderAmbisonicPanning", __LINE__));
    if (n == encoder.getNormalization())
        return;
    encoder.setNormalization(n);
    recomputeAllSources();
}

void HOAPanning::setComputationMode(const ondo::String& name)
{
    setComputationMode(HoaEncodingVector::modeFromString(name));
}

void HOAPanning::setComputationMode(ComputationMode mode)
{
    const ComputationMode m = mode == HoaEncodingVector::Fast ? HoaEncodingVector::Fast : HoaEncodingVector::Precise;
    if (m == encoder.getMode())
        return;
    encoder.setMode(m);
    recomputeAllSources();
}

void HOAPanning::getInfos(StringArray& lines) const
{
    Pan::getInfos(lines);
    lines.push_back("order : " + std::to_string(encoder.getOrder()));
    lines.push_back("encoding norm : " + Ambisonics::toString(encoder.getNormalization()));
    lines.push_back("computation mode : " + HoaEncodingVector::toString(encoder.getMode()));
}

std::string HOAPanning::getOutletName(std::int32_t index) const
{
    if (index < 0 || static_cast<std::uint32_t>(index) >= numOutputs)
        return "dumpout";
    return "output #" + std::to_string(index + 1) + " : " +
           Ambisonics::label(static_cast<std::uint32_t>(index), dimension, Ambisonics::ACN, false);
}
} // namespace Quor
