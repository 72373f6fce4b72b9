#include "dsp/TarvoDspBiquadCookbook.h"

#include <cmath>

namespace ondo
{
namespace
{
// 2 pi as the single-precision constant it has always been, widened.
constexpr double twoPi = static_cast<double>(6.2831854820251465f);
} // namespace

BiquadCookbook::BiquadCookbook(FilterShape shape)
    : type(shape), piOverSampleRate(0.5 * twoPi / 44100.0), twoPiOverSampleRate(twoPi / 44100.0)
{
    design();
}

void BiquadCookbook::setSampleRate(double rate)
{
    sampleRate = rate;
    twoPiOverSampleRate = twoPi / rate;
    piOverSampleRate = 0.5 * twoPiOverSampleRate;
    design();
}

void BiquadCookbook::setFrequency(double hertz)
{
    frequency = hertz;
    design();
}

void BiquadCookbook::setQ(double quality)
{
    q = quality;
    design();
}

void BiquadCookbook::setGain(double dB)
{
    gain = dB;
    design();
}

void BiquadCookbook::setType(FilterShape shape)
{
    type = shape;
    design();
}

void BiquadCookbook::setShelf(const HLShelfParameters& parameters)
{
    shelf = parameters;
    design();
}

void BiquadCookbook::design()
{
    const double w = twoPiOverSampleRate * frequency;
    const double c = std::cos(w);
    const double s = std::sin(w);
    const double alpha = s / (2.0 * q);
    const double g = std::pow(10.0, gain / 20.0);
    const double A = std::pow(10.0, gain * 0.025);
    // The absolute value keeps a slope past its limit from giving a NaN.
    const double beta = std::sqrt(std::fabs((1.0 / q - 1.0) * (1.0 / A + A) + 2.0)) * (s / 2.0) * 2.0 * std::sqrt(A);
    const double u = A + 1.0 - (A - 1.0) * c;
    const double v = A + 1.0 + (A - 1.0) * c;
    BiquadCoefficients& k = coefficients;
    switch (type)
    {
    case FilterShape::hlshelf:
        k = designHLShelf(shelf, static_cast<float>(sampleRate));
        break;
    case FilterShape::lowpass:
        k = {(1.0 - c) * g / 2.0, (1.0 - c) * g, (1.0 - c) * g / 2.0, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
        break;
    case FilterShape::highpass:
        k = {(1.0 + c) * g / 2.0, -(1.0 + c) * g, (1.0 + c) * g / 2.0, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
        break;
    case FilterShape::bandpassPeak:
        k = {alpha * g, 0.0, -alpha * g, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
        break;
    case FilterShape::bandpassSkirt:
        k = {g * s / 2.0, 0.0, -g * s / 2.0, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
        break;
    case FilterShape::notch:
        k = {g, -2.0 * g * c, g, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
        break;
    case FilterShape::allpass:
        k = {1.0 - alpha, -2.0 * c, 1.0 + alpha, 1.0 + alpha, -2.0 * c, 1.0 - alpha};
        break;
    case FilterShape::peak:
        k = {1.0 + alpha * A, -2.0 * c, 1.0 - alpha * A, 1.0 + alpha / A, -2.0 * c, 1.0 - alpha / A};
        break;
    case FilterShape::lowShelf:
        k = {A * (u + beta), 2.0 * A * (A - 1.0 - (A + 1.0) * c), A * (u - beta), v + beta,
             -2.0 * (A - 1.0 + (A + 1.0) * c), v - beta};
        break;
    case FilterShape::highShelf:
        k = {A * (v + beta), -2.0 * A * (A - 1.0 + (A + 1.0) * c), A * (v - beta), u + beta,
             2.0 * (A - 1.0 - (A + 1.0) * c), u - beta};
        break;
    case FilterShape::gain:
        k = {g, 0.0, 0.0, 1.0, 0.0, 0.0};
        break;
    default:
        k.setUnit();
        break;
    }
    updateProducts();
}

void BiquadCookbook::updateProducts()
{
    const BiquadCoefficients& k = coefficients;
    numeratorProduct = k.b0 * k.b2;
    denominatorProduct = k.a0 * k.a2;
    numeratorSumSquared = (k.b0 + k.b1 + k.b2) * (k.b0 + k.b1 + k.b2);
    numeratorCross = k.b1 * (k.b0 + k.b2) + 4.0 * k.b0 * k.b2;
    denominatorSumSquared = (k.a0 + k.a1 + k.a2) * (k.a0 + k.a1 + k.a2);
    denominatorCross = k.a1 * (k.a0 + k.a2) + 4.0 * k.a0 * k.a2;
}

double BiquadCookbook::getMagnitude(double hertz) const
{
    // With phi = sin^2(w/2): |N|^2 = (b0+b1+b2)^2 - 4 phi (b1 (b0+b2) + 4 b0 b2) + 16 phi^2 b0 b2.
    const double sine = std::sin(piOverSampleRate * hertz);
    const double phi = sine * sine;
    const double numerator = numeratorSumSquared - 4.0 * phi * numeratorCross + 16.0 * phi * phi * numeratorProduct;
    const double denominator =
        denominatorSumSquared - 4.0 * phi * denominatorCross + 16.0 * phi * phi * denominatorProduct;
    return std::sqrt(std::fabs(numerator / denominator));
}

double BiquadCookbook::getMagnitudeDb(double hertz) const
{
    return 20.0 * std::log10(getMagnitude(hertz));
}
} // namespace ondo
