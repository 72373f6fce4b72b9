#pragma once

#include "pan/QuorAmplitudePanning.h"
#include "pan/QuorHoaEncodingVector.h"

namespace Quor
{
/// Encodes each source into Ambisonic components of any order: here each "speaker" is one
/// component in ACN order, and the order follows from the count (2M + 1 in 2-D,
/// (M + 1)^2 in 3-D). The gain of a component is the real spherical harmonic of the
/// source's direction in the chosen normalisation; distance plays no part.
class HOAPanning : public AmplitudePanning
{
public:
    /// Control thread; allocates. A count of no Ambisonic form for `dimension` raises an
    /// `ondo::Exception`.
    HOAPanning(std::uint32_t numSources, std::uint32_t numSpeakers, std::uint32_t dimension);

    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    bool is2D() const override { return dimension == 2; }

    AmbisonicNormalization getAmbisonicNormalization() const override { return encoder.getNormalization(); }
    /// Control thread; allocates in "fast" mode. A normalisation of the other dimension
    /// raises an `ondo::Exception` and changes nothing; a change recomputes every source.
    void setAmbisonicNormalization(AmbisonicNormalization normalization) override;
    /// "precise" or "fast"; unknown names give "precise". Entering "fast" builds the table
    /// (allocates), leaving it frees it. Control thread.
    void setComputationMode(const ondo::String& name) override;
    void setComputationMode(ComputationMode mode) override;
    ComputationMode getComputationMode() const { return encoder.getMode(); }

    void getInfos(StringArray& lines) const override;
    /// "output #n : Y(l,m)" for each component, "dumpout" beyond.
    std::string getOutletName(std::int32_t index) const override;

    std::uint32_t getDimension() const { return dimension; }
    std::uint32_t getOrder() const { return encoder.getOrder(); }

private:
    std::uint32_t dimension;
    HoaEncodingVector encoder;
};
} // namespace Quor
