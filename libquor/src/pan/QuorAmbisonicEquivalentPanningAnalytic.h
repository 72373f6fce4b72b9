#pragma once

#include "pan/QuorAmplitudePanning.h"
#include "pan/QuorHoaOptimization.h"

#include <vector>

namespace Quor
{
/// The gains that encoding a source in Ambisonics and decoding it by sampling onto real
/// speakers would give, in closed form: each speaker's gain is a sum of Legendre
/// polynomials (cosines in 2-D) of its angle to the source, weighted per degree by the
/// optimisation. The order is the highest the speaker count supports.
class AmbisonicEquivalentPanningAnalytic : public AmplitudePanning
{
public:
    /// Installs the default layout. Control thread; allocates.
    AmbisonicEquivalentPanningAnalytic(std::uint32_t numSources, std::uint32_t numSpeakers, std::uint32_t dimension);

    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    bool is2D() const override { return dimension == 2; }
    /// Stores the layout and recomputes every source. Speakers beyond the given ones stay
    /// silent. Control thread; allocates.
    void setSpeakers(const ondo::Point3Array& speakers) override;

    AmbisonicNormalization getAmbisonicNormalization() const override { return normalization; }
    /// A normalisation of the other dimension raises an `ondo::Exception` and changes
    /// nothing; otherwise every source is recomputed. Control thread.
    void setAmbisonicNormalization(AmbisonicNormalization normalization) override;
    /// Control thread; allocates.
    void setOptimization(HoaOptimization::Type type);
    HoaOptimization::Type getOptimization() const { return optimization; }

    void getInfos(StringArray& lines) const override;

    std::uint32_t getDimension() const { return dimension; }
    std::uint32_t getOrder() const { return order; }

private:
    std::uint32_t dimension;
    std::uint32_t order;
    AmbisonicNormalization normalization;
    HoaOptimization::Type optimization = HoaOptimization::Basic;
    /// Weight of each degree, and the same pre-multiplied by the normalisation's
    /// factor of the degree (2l + 1, or 2, or 1).
    std::vector<float> degreeWeights;
    std::vector<float> kernel;
};
} // namespace Quor
