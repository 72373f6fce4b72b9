#pragma once

#include "containers/TarvoDspVector.h"
#include "math/TarvoDspAmbisonics.h"

#include <cstdint>
#include <memory>

namespace Quor
{
/// The Ambisonic components of every direction on a one-degree grid: elevations -90 to 90
/// (181 rows) by azimuths 0 to 360 (361 columns, both ends kept so that rounding up to 360
/// needs no wrap), for one order, dimension and normalisation. Built once off the audio
/// thread by the precise encoder; read without a computation.
class HoaLookupTable
{
public:
    static constexpr std::uint32_t rows = 181;
    static constexpr std::uint32_t columns = 361;

    /// Control thread; allocates 181 x 361 floats a component.
    HoaLookupTable(std::uint32_t order, std::uint32_t dimension, ondo::Ambisonics::Normalization normalization);

    /// The table of these settings, shared with every encoder that asked for the same one
    /// and still holds it. Control thread; may allocate.
    static std::shared_ptr<const HoaLookupTable> share(std::uint32_t order, std::uint32_t dimension,
                                                       ondo::Ambisonics::Normalization normalization);

    /// The components at the grid point nearest to a mathematical azimuth and an elevation
    /// in degrees: the azimuth wrapped to [0, 360) and both rounded. Real-time safe.
    void lookUp(float azimuthDegrees, float elevationDegrees, float* out) const;

    std::uint32_t getOrder() const { return order; }
    std::uint32_t getDimension() const { return dimension; }
    std::uint32_t getNumComponents() const { return numComponents; }
    ondo::Ambisonics::Normalization getNormalization() const { return normalization; }
    /// One cell: component `k` at grid row and column.
    float value(std::uint32_t k, std::uint32_t row, std::uint32_t column) const
    {
        return values[(std::size_t(row) * columns + column) * numComponents + k];
    }

private:
    std::uint32_t order;
    std::uint32_t dimension;
    std::uint32_t numComponents;
    ondo::Ambisonics::Normalization normalization;
    /// Grid point by grid point, the components of each side by side: one lookup reads one
    /// contiguous run.
    ondo::Vector<float> values;
};
} // namespace Quor
