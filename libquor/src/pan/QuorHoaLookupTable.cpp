#include "pan/QuorHoaLookupTable.h"

#include "pan/QuorHoaEncodingVector.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <tuple>

namespace Quor
{
HoaLookupTable::HoaLookupTable(std::uint32_t o, std::uint32_t d, ondo::Ambisonics::Normalization n)
    : order(o), dimension(d), numComponents(ondo::Ambisonics::countFromOrder(d, o)), normalization(n),
      values(std::size_t(rows) * columns * numComponents)
{
    constexpr double degreesToRadians = 3.14159265358979323846 / 180.0;
    HoaEncodingVector encoder(order, dimension, normalization, HoaEncodingVector::Precise);
    for (std::uint32_t r = 0; r < rows; ++r)
        for (std::uint32_t c = 0; c < columns; ++c)
            encoder.encodePrecise(c * degreesToRadians, (static_cast<double>(r) - 90.0) * degreesToRadians,
                                  values.data() + (std::size_t(r) * columns + c) * numComponents);
}

std::shared_ptr<const HoaLookupTable> HoaLookupTable::share(std::uint32_t order, std::uint32_t dimension,
                                                            ondo::Ambisonics::Normalization normalization)
{
    // Tables are large (16 MB at order 7): encoders of the same settings share one, and
    // the last holder to let go frees it.
    static std::mutex mutex;
    static std::map<std::tuple<std::uint32_t, std::uint32_t, std::int32_t>, std::weak_ptr<const HoaLookupTable>> cache;
    const std::lock_guard<std::mutex> lock(mutex);
    auto& slot = cache[{order, dimension, normalization}];
    auto table = slot.lock();
    if (!table)
    {
        table = std::make_shared<const HoaLookupTable>(order, dimension, normalization);
        slot = table;
    }
    return table;
}

void HoaLookupTable::lookUp(float azimuthDegrees, float elevationDegrees, float* out) const
{
    float a = std::isfinite(azimuthDegrees) ? std::fmod(azimuthDegrees, 360.0f) : 0.0f;
    if (a < 0.0f)
        a += 360.0f;
    const float e = std::isfinite(elevationDegrees) ? std::clamp(elevationDegrees, -90.0f, 90.0f) : 0.0f;
    // An azimuth just below 360 rounds to the last column, which repeats the first.
    const auto column = static_cast<std::size_t>(std::lround(a));
    const auto row = static_cast<std::size_t>(std::lround(e) + 90);
    const float* cell = values.data() + (row * columns + std::min<std::size_t>(column, columns - 1)) * numComponents;
    std::copy(cell, cell + numComponents, out);
}
} // namespace Quor
