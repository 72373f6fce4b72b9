#include "pan/QuorAmbisonicEquivalentPanningAnalytic.h"

#include "common/TarvoDspException.h"
#include "math/TarvoDspAmbisonics.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
using ondo::Ambisonics;

namespace
{
std::uint32_t orderOf(std::uint32_t numSpeakers, std::uint32_t dimension)
{
    const double n = numSpeakers;
    const double order = dimension == 2 ? std::floor((n - 1.0) / 2.0) : std::floor(std::sqrt(n) - 1.0);
    return order > 0.0 ? static_cast<std::uint32_t>(order) : 0u;
}
} // namespace

AmbisonicEquivalentPanningAnalytic::AmbisonicEquivalentPanningAnalytic(std::uint32_t numSources,
                                                                       std::uint32_t numSpeakers, std::uint32_t dim)
    : AmplitudePanning(numSources, numSpeakers), dimension(dim), order(orderOf(numSpeakers, dim)),
      normalization(Ambisonics::defaultNormalization(dim))
{
    setOptimization(HoaOptimization::Basic);
    setSpeakers(ondo::Point3Array::defaultLayout(numSpeakers));
}

void AmbisonicEquivalentPanningAnalytic::setSpeakers(const ondo::Point3Array& speakers)
{
    speakersPosition = speakers;
    recomputeAllSources();
}

void AmbisonicEquivalentPanningAnalytic::setAmbisonicNormalization(AmbisonicNormalization n)
{
    if (!Ambisonics::isLegal(n, dimension))
        throw ondo::Exception("invalid normalization for " + std::to_string(dimension) + "D : " + Ambisonics::toString(n),
                              ondo::SourceLocation("libquor/pan/QuorAmbisonicEquivalentPanningAnalytic", __LINE__));
    normalization = n;
    setOptimization(optimization);
}

void AmbisonicEquivalentPanningAnalytic::setOptimization(HoaOptimization::Type type)
{
    optimization = type;
    degreeWeights.assign(order + 1, 0.0f);
    kernel.assign(order + 1, 0.0f);
    for (std::uint32_t l = 0; l <= order; ++l)
    {
        degreeWeights[l] = static_cast<float>(HoaOptimization::degreeWeight(type, l, order, dimension));
        // The sum over the orders of one degree of the product of two harmonics is 2l + 1
        // Legendre polynomials in N3D, two cosines in N2D (one for degree 0), and one
        // polynomial or cosine in the semi-normalised forms.
        float factor = 0.0f;
        switch (normalization)
        {
            case Ambisonics::N3D: factor = 2.0f * l + 1.0f; break;
            case Ambisonics::N2D: factor = l == 0 ? 1.0f : 2.0f; break;
            case Ambisonics::SN3D:
            case Ambisonics::SN2D: factor = 1.0f; break;
            default: factor = 0.0f; break;
        }
        kernel[l] = factor * degreeWeights[l];
    }
    recomputeAllSources();
}

void AmbisonicEquivalentPanningAnalytic::computeGains(const ondo::Point3& position, float* row, std::uint32_t)
{
    const std::uint32_t n = numOutputs;
    std::fill(row, row + n, 0.0f);
    const std::uint32_t placed = std::min<std::uint32_t>(n, static_cast<std::uint32_t>(speakersPosition.size()));
    const float scale = n > 0 ? 1.0f / static_cast<float>(n) : 0.0f;
    for (std::uint32_t i = 0; i < placed; ++i)
    {
        const float angle = ondo::vectorAngle(position, speakersPosition[i]);
        float gain = kernel[0];
        if (dimension == 2)
        {
            for (std::uint32_t l = 1; l <= order; ++l)
                gain += kernel[l] * std::cos(static_cast<float>(l) * angle);
        }
        else
        {
            // Bonnet's recurrence for P_l(cos angle).
            const float x = std::cos(angle);
            float previous = 1.0f, current = x;
            for (std::uint32_t l = 1; l <= order; ++l)
            {
                gain += kernel[l] * current;
                const float next = ((2.0f * l + 1.0f) * x * current - static_cast<float>(l) * previous) / (l + 1.0f);
                previous = current;
                current = next;
            }
        }
        row[i] = gain * scale;
    }
}

void AmbisonicEquivalentPanningAnalytic::getInfos(StringArray& lines) const
{
    Pan::getInfos(lines);
    lines.push_back("normalization : " + Ambisonics::toString(normalization));
    lines.push_back("HOA order : " + std::to_string(order));
    lines.push_back("dimension : " + std::to_string(dimension));
    lines.push_back("optimization : " + HoaOptimization::toString(optimization));
}
} // namespace Quor
