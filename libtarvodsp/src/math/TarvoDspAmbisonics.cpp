#include "math/TarvoDspAmbisonics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace ondo
{
namespace
{
constexpr double pi = 3.14159265358979323846;

const char* const normalizationNames[] = {"Unnormalized", "SN3D", "SN2D", "N3D", "N2D", "FuMa", "MaxN"};

const std::array<double, Ambisonics::tabulatedDegree + 1>& factorials()
{
    static const auto table = [] {
        std::array<double, Ambisonics::tabulatedDegree + 1> t{};
        t[0] = 1.0;
        for (std::size_t n = 1; n < t.size(); ++n)
            t[n] = t[n - 1] * static_cast<double>(n);
        return t;
    }();
    return table;
}

const std::array<double, Ambisonics::tabulatedDegree + 1>& rootsOfTwoLPlusOne()
{
    static const auto table = [] {
        std::array<double, Ambisonics::tabulatedDegree + 1> t{};
        for (std::size_t l = 0; l < t.size(); ++l)
            t[l] = std::sqrt(2.0 * static_cast<double>(l) + 1.0);
        return t;
    }();
    return table;
}

/// |SN3D Legendre| of every (l, m) up to degree 16 at colatitude `theta`, into `out`.
void seminormalizedMagnitudes(double theta, double* out)
{
    constexpr int n = Ambisonics::maxFuMaDegree;
    Ambisonics::legendre(n, std::cos(theta), std::sin(theta), out);
    for (int l = 0; l <= n; ++l)
        for (int m = 0; m <= l; ++m)
            out[Ambisonics::legendreIndex(l, m)] =
                std::fabs(out[Ambisonics::legendreIndex(l, m)] * (m == 0 ? 1.0 : std::sqrt(2.0)) /
                          Ambisonics::sqrtTwoLPlusOne(l));
}

/// The factor that brings each SN3D component's largest value on the sphere to 1, up to
/// degree 16: the maximum of the Legendre part over the colatitude (the azimuth part peaks
/// at 1), found on a grid and refined by golden-section search. Its values to degree 3 are
/// the published Furse-Malham weights.
const std::vector<double>& maxNormWeights()
{
    static const std::vector<double> weights = [] {
        constexpr int n = Ambisonics::maxFuMaDegree;
        const std::size_t count = Ambisonics::legendreCount(n);
        constexpr int steps = 2000;
        const double step = (pi / 2.0) / steps; // |P| is symmetric about the equator
        std::vector<double> best(count, -1.0), where(count, 0.0), values(count);
        for (int k = 0; k <= steps; ++k)
        {
            seminormalizedMagnitudes(k * step, values.data());
            for (std::size_t i = 0; i < count; ++i)
                if (values[i] > best[i])
                {
                    best[i] = values[i];
                    where[i] = k * step;
                }
        }
        const double ratio = (std::sqrt(5.0) - 1.0) / 2.0;
        std::vector<double> w(count);
        for (std::size_t i = 0; i < count; ++i)
        {
            double a = std::max(0.0, where[i] - step), b = std::min(pi / 2.0, where[i] + step);
            auto at = [&](double theta) {
                seminormalizedMagnitudes(theta, values.data());
                return values[i];
            };
            for (int it = 0; it < 60; ++it)
            {
                const double c = b - ratio * (b - a), d = a + ratio * (b - a);
                if (at(c) > at(d))
                    b = d;
                else
                    a = c;
            }
            w[i] = 1.0 / std::max(best[i], at((a + b) / 2.0));
        }
        return w;
    }();
    return weights;
}

/// The factor of a component in `n` relative to the same component in N3D; 0 where `n`
/// has no such component.
double relativeToN3D(int l, int m, Ambisonics::Normalization n)
{
    const int am = std::abs(m);
    const double sn3d = 1.0 / Ambisonics::sqrtTwoLPlusOne(l);
    switch (n)
    {
        case Ambisonics::N3D: return 1.0;
        case Ambisonics::SN3D: return sn3d;
        case Ambisonics::Unnormalized:
            return m == 0 ? 1.0 / std::sqrt(4.0 * pi) : ((am % 2 != 0) ? -1.0 : 1.0) / std::sqrt(8.0 * pi);
        case Ambisonics::FuMa:
            if (l > Ambisonics::maxFuMaDegree)
                return 0.0;
            return l == 0 ? sn3d / std::sqrt(2.0) : sn3d * maxNormWeights()[Ambisonics::legendreIndex(l, am)];
        case Ambisonics::MaxN:
            if (l > Ambisonics::maxFuMaDegree)
                return 0.0;
            return sn3d * maxNormWeights()[Ambisonics::legendreIndex(l, am)];
        case Ambisonics::SN2D:
        case Ambisonics::N2D:
        {
            if (am != l)
                return 0.0;
            if (l == 0)
                return 1.0;
            // The sectoral harmonic in SN3D peaks at sqrt(2 (2l)!) / (2^l l!) on the horizon.
            const double sn2d = sn3d * std::exp(l * std::log(2.0) + std::lgamma(l + 1.0) -
                                                0.5 * (std::log(2.0) + std::lgamma(2.0 * l + 1.0)));
            return n == Ambisonics::SN2D || m == 0 ? sn2d : sn2d * std::sqrt(2.0);
        }
    }
    return 0.0;
}
} // namespace

String Ambisonics::toString(Normalization n)
{
    if (n < Unnormalized || n > MaxN)
        return "unknown";
    return normalizationNames[n];
}

Ambisonics::Normalization Ambisonics::normalizationFromString(const String& name, Normalization unknown)
{
    for (int n = Unnormalized; n <= MaxN; ++n)
        if (name == normalizationNames[n])
            return static_cast<Normalization>(n);
    return unknown;
}

String Ambisonics::toString(ChannelOrder order)
{
    switch (order)
    {
        case ACN: return "ACN";
        case SID: return "SID";
        case FMH: return "FMH";
    }
    return "unknown";
}

bool Ambisonics::isLegal(Normalization n, std::uint32_t dimension)
{
    switch (n)
    {
        case Unnormalized:
        case FuMa:
        case MaxN: return dimension == 2 || dimension == 3;
        case SN3D:
        case N3D: return dimension == 3;
        case SN2D:
        case N2D: return dimension == 2;
    }
    return false;
}

int Ambisonics::orderFromCount(std::uint32_t dimension, std::uint32_t numChannels)
{
    // In single precision, as the factory tests the counts.
    float order = -1.0f;
    if (dimension == 2)
        order = (static_cast<float>(numChannels) - 1.0f) / 2.0f;
    else if (dimension == 3)
        order = std::sqrt(static_cast<float>(numChannels)) - 1.0f;
    else
        return -1;
    return order == std::trunc(order) ? static_cast<int>(order) : -1;
}

std::uint32_t Ambisonics::countFromOrder(std::uint32_t dimension, std::uint32_t order)
{
    if (dimension == 2)
        return 2 * order + 1;
    if (dimension == 3)
        return (order + 1) * (order + 1);
    return 0;
}

Ambisonics::Component Ambisonics::component(std::uint32_t index, std::uint32_t dimension, ChannelOrder ordering)
{
    const float x = static_cast<float>(index);
    if (dimension == 2)
    {
        if (index == 0)
            return {0, 0};
        const int l = static_cast<int>(std::ceil(x / 2.0f));
        const int m = (static_cast<int>(index) + 2 * (1 - l) == 1) ? -l : l;
        return {l, ordering == ACN ? m : -m};
    }
    const int l = static_cast<int>(std::floor(std::sqrt(x)));
    switch (ordering)
    {
        case SID:
        {
            const float t = -((x - static_cast<float>((l + 1) * (l + 1)) + 1.0f) / 2.0f);
            return {l, t == std::trunc(t) ? static_cast<int>(t) : -static_cast<int>(std::ceil(t))};
        }
        case FMH:
        {
            if (index == 0)
                return {0, 0};
            if (index <= 3)
                return {1, index == 1 ? 1 : (index == 2 ? -1 : 0)};
            const int r = static_cast<int>(index) - l * l;
            const int s = static_cast<int>(std::round(static_cast<float>(r) / 2.0f));
            return {l, r % 2 == 0 ? -s : s};
        }
        default: return {l, static_cast<int>(index) - (l + 1) * l};
    }
}

String Ambisonics::label(std::uint32_t index, std::uint32_t dimension, ChannelOrder ordering, bool extended)
{
    const Component c = component(index, dimension, ordering);
    String text = "Y(" + std::to_string(c.l) + "," + std::to_string(c.m) + ")";
    if (!extended || c.l > 3)
        return text;
    // Furse-Malham letters by degree, from m = -l to m = l.
    static const char* const letters[] = {"W", "YZX", "VTRSU", "QOMKLNP"};
    return text + " (" + String(1, letters[c.l][c.m + c.l]) + ")";
}

double Ambisonics::normalizationFactor(int l, int m, Normalization from, Normalization to)
{
    if (from == to)
        return 1.0;
    if (l < 0 || std::abs(m) > l)
        return 0.0;
    const double a = relativeToN3D(l, m, from), b = relativeToN3D(l, m, to);
    return a == 0.0 || b == 0.0 ? 0.0 : b / a;
}

double Ambisonics::factorial(int n)
{
    if (n < 0)
        return 0.0;
    if (n <= tabulatedDegree)
        return factorials()[static_cast<std::size_t>(n)];
    return std::tgamma(static_cast<double>(n) + 1.0);
}

double Ambisonics::sqrtTwoLPlusOne(int l)
{
    if (l >= 0 && l <= tabulatedDegree)
        return rootsOfTwoLPlusOne()[static_cast<std::size_t>(l)];
    return std::sqrt(2.0 * l + 1.0);
}
} // namespace ondo
