#include "pan/QuorHoaEncodingVector.h"

#include "pan/QuorHoaLookupTable.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace Quor
{
using ondo::Ambisonics;

namespace
{
constexpr double radiansToDegrees = 57.295779513082320876;
/// The order from which the recurrence runs in double precision.
constexpr std::uint32_t doublePrecisionOrder = 21;

/// The factor that takes the N3D value of component (l, m) to `n`. "Unnormalized" here is
/// the Legendre function itself, with the factorial ratio of the negative orders folded
/// the way the complex harmonic does.
double factorFromN3D(int l, int m, Ambisonics::Normalization n)
{
    const int am = std::abs(m);
    switch (n)
    {
        case Ambisonics::N3D: return 1.0;
        case Ambisonics::SN3D: return 1.0 / Ambisonics::sqrtTwoLPlusOne(l);
        case Ambisonics::Unnormalized:
        {
            if (m == 0)
                return 1.0 / Ambisonics::sqrtTwoLPlusOne(l);
            const double ratio = Ambisonics::factorial(l - am) / Ambisonics::factorial(l + am);
            const double root = std::sqrt(4.0 * l + 2.0);
            return m > 0 ? ((am % 2 != 0) ? -1.0 : 1.0) * std::sqrt(ratio) / root : 1.0 / (root * std::sqrt(ratio));
        }
        default: return Ambisonics::normalizationFactor(l, m, Ambisonics::N3D, n);
    }
}
} // namespace

ondo::String HoaEncodingVector::toString(Mode m)
{
    return m == Fast ? "fast" : "precise";
}

HoaEncodingVector::Mode HoaEncodingVector::modeFromString(const ondo::String& name)
{
    return name == "fast" ? Fast : Precise;
}

HoaEncodingVector::HoaEncodingVector(std::uint32_t o, std::uint32_t d, Ambisonics::Normalization n, Mode m)
    : order(o), dimension(d), numComponents(Ambisonics::countFromOrder(d, o)), normalization(n),
      degrees(numComponents), orders(numComponents), factors(numComponents), factorsSingle(numComponents),
      legendreSingle(order < doublePrecisionOrder ? Ambisonics::legendreCount(static_cast<int>(order)) : 0),
      legendreDouble(order >= doublePrecisionOrder ? Ambisonics::legendreCount(static_cast<int>(order)) : 0),
      cosines(order + 1), sines(order + 1)
{
    for (std::uint32_t k = 0; k < numComponents; ++k)
    {
        const Ambisonics::Component c = Ambisonics::component(k, dimension, Ambisonics::ACN);
        degrees[k] = c.l;
        orders[k] = c.m;
    }
    setNormalization(n);
    setMode(m);
}

HoaEncodingVector::~HoaEncodingVector() = default;

void HoaEncodingVector::setNormalization(Ambisonics::Normalization n)
{
    normalization = n;
    for (std::uint32_t k = 0; k < numComponents; ++k)
    {
        // The real harmonics of non-zero order carry sqrt 2 against the complex ones.
        factors[k] = factorFromN3D(degrees[k], orders[k], n) * (orders[k] == 0 ? 1.0 : std::sqrt(2.0));
        factorsSingle[k] = static_cast<float>(factors[k]);
    }
    if (mode == Fast)
        table = HoaLookupTable::share(order, dimension, normalization);
}

void HoaEncodingVector::setMode(Mode m)
{
    mode = m == Fast ? Fast : Precise;
    if (mode == Fast)
        table = HoaLookupTable::share(order, dimension, normalization);
    else
        table.reset();
}

void HoaEncodingVector::encode(const ondo::Point3& position, float* out)
{
    ondo::Point3 p = position;
    if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
        p = ondo::Point3::origin();
    const double x = p.x, y = p.y, z = p.z;
    const double d = std::sqrt(x * x + y * y + z * z);
    const double azimuth = std::atan2(y, x);
    const double elevation = d > 0.0 ? std::asin(std::clamp(z / d, -1.0, 1.0)) : 0.0;
    if (table)
        table->lookUp(static_cast<float>(azimuth * radiansToDegrees), static_cast<float>(elevation * radiansToDegrees),
                      out);
    else
        encodePrecise(azimuth, elevation, out);
}

void HoaEncodingVector::encodePrecise(double azimuth, double elevation, float* out)
{
    const double x = std::sin(elevation), s = std::max(0.0, std::cos(elevation));
    for (std::uint32_t m = 0; m <= order; ++m)
    {
        cosines[m] = std::cos(m * azimuth);
        sines[m] = std::sin(m * azimuth);
    }
    if (order < doublePrecisionOrder)
        evaluate<float>(static_cast<float>(x), static_cast<float>(s), legendreSingle.data(), out);
    else
        evaluate<double>(x, s, legendreDouble.data(), out);
}

template <typename T>
void HoaEncodingVector::evaluate(T x, T s, T* legendre, float* out) const
{
    Ambisonics::legendre<T>(static_cast<int>(order), x, s, legendre);
    for (std::uint32_t k = 0; k < numComponents; ++k)
    {
        const int l = degrees[k], m = orders[k];
        const T trig = static_cast<T>(m >= 0 ? cosines[static_cast<std::size_t>(m)] : sines[static_cast<std::size_t>(-m)]);
        const T factor = sizeof(T) == sizeof(float) ? static_cast<T>(factorsSingle[k]) : static_cast<T>(factors[k]);
        const T v = factor * legendre[Ambisonics::legendreIndex(l, std::abs(m))] * trig;
        // Gains this small would only feed denormals to the mix; the unnormalised ones of
        // high degree would overflow single precision.
        out[k] = std::fabs(v) < T(1e-30) ? 0.0f : static_cast<float>(std::clamp<T>(v, -FLT_MAX, FLT_MAX));
    }
}
} // namespace Quor
