#pragma once

#include "containers/TarvoDspVector.h"
#include "math/TarvoDspAmbisonics.h"
#include "math/TarvoDspPoint3.h"

#include <cstdint>
#include <memory>

namespace Quor
{
class HoaLookupTable;

/// Encodes a direction into Ambisonic components in ACN order: the real spherical harmonics
/// of the direction (circular harmonics in 2-D, the sectoral ones), distance ignored.
/// Channel 1 carries sin t and channel 3 cos t, t being the mathematical azimuth from +x
/// towards +y; a point at the origin encodes as +x.
///
/// "precise" evaluates the Legendre recurrence at each call, in single precision below
/// order 21 and in double precision above. "fast" reads a table on a one-degree grid
/// instead, at the memory cost of 181 x 361 floats a component.
///
/// One control thread at a time; `encode` allocates nothing.
class HoaEncodingVector
{
public:
    enum Mode : std::int32_t
    {
        Precise = 0,
        Fast = 1
    };

    static ondo::String toString(Mode mode);
    /// Exact case; unknown names give `Precise`.
    static Mode modeFromString(const ondo::String& name);

    /// Control thread; allocates (and builds the table in "fast" mode).
    HoaEncodingVector(std::uint32_t order, std::uint32_t dimension, ondo::Ambisonics::Normalization normalization,
                      Mode mode = Precise);
    ~HoaEncodingVector();

    std::uint32_t getOrder() const { return order; }
    std::uint32_t getDimension() const { return dimension; }
    std::uint32_t getNumComponents() const { return numComponents; }
    ondo::Ambisonics::Normalization getNormalization() const { return normalization; }
    Mode getMode() const { return mode; }

    /// Control thread; allocates. In "fast" mode the table of the new normalisation
    /// replaces the old one.
    void setNormalization(ondo::Ambisonics::Normalization newNormalization);
    /// Control thread. Entering "fast" builds (or shares) a table; leaving it lets it go.
    void setMode(Mode newMode);

    /// The components of the direction of `position`, into `out` (`getNumComponents()`
    /// floats). Real-time safe.
    void encode(const ondo::Point3& position, float* out);
    /// The components of a direction given by mathematical azimuth and elevation in
    /// radians, by the recurrence whatever the mode. Real-time safe.
    void encodePrecise(double azimuth, double elevation, float* out);

private:
    template <typename T>
    void evaluate(T x, T s, T* legendre, float* out) const;

    std::uint32_t order;
    std::uint32_t dimension;
    std::uint32_t numComponents;
    ondo::Ambisonics::Normalization normalization;
    Mode mode = Precise;
    std::shared_ptr<const HoaLookupTable> table;
    /// Per component: degree, order, and the factor from the N3D Legendre value (the
    /// normalisation and the sqrt 2 of the non-zero orders).
    ondo::Vector<std::int32_t> degrees;
    ondo::Vector<std::int32_t> orders;
    ondo::Vector<double> factors;
    ondo::Vector<float> factorsSingle;
    ondo::Vector<float> legendreSingle;
    ondo::Vector<double> legendreDouble;
    /// cos(m t) and sin(m t) for m = 0 .. order, shared by all degrees.
    ondo::Vector<double> cosines;
    ondo::Vector<double> sines;
};
} // namespace Quor
