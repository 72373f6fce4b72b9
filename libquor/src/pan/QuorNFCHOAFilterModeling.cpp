#include "pan/QuorNFCHOAFilterModeling.h"

#include "filterdesign/TarvoDspPolynomial.h"

#include <algorithm>
#include <cmath>

namespace Quor
{
namespace
{
/// The polynomial of the near-field series of order l in u = 2 s r / c: the sum over n of
/// (l + n)! / ((l - n)! n!) u^(l - n), highest power first. Its roots are twice those of the
/// reverse Bessel polynomial, which the warp 4 r fs / c (twice the bilinear 2 fs) matches.
ondo::Vector<double> nearFieldPolynomial(std::uint32_t order)
{
    ondo::Vector<double> polynomial(order + 1);
    polynomial[0] = 1.0;
    for (std::uint32_t n = 1; n <= order; ++n)
        polynomial[n] = polynomial[n - 1] * double(order + n) * double(order - n + 1) / double(n);
    return polynomial;
}
} // namespace

NFCHOAFilterModeling::NFCHOAFilterModeling(std::uint32_t l) : order(l)
{
    const std::size_t numSections = (order + 1) / 2;
    polesReal.resize(numSections);
    polesMag2.resize(numSections);
    sourceCoefficients.resize(3 * numSections);
    speakerCoefficients.resize(3 * numSections);
    sections.resize(numSections);
    if (order == 0)
        return;
    // One root of each conjugate pair (the upper one), then the real root of an odd order.
    ondo::ComplexArray<double> roots = ondo::polynomialRoots(nearFieldPolynomial(order));
    std::sort(roots.begin(), roots.end(), [](const auto& a, const auto& b) { return a.im > b.im; });
    for (std::size_t k = 0; k < numSections; ++k)
    {
        const bool real = order % 2 == 1 && k + 1 == numSections;
        const auto& z = real ? roots[order / 2] : roots[k];
        polesReal[k] = z.re;
        polesMag2[k] = real ? z.re * z.re : z.re * z.re + z.im * z.im;
    }
    sourceWarp = warpOf(sourceDistance);
    speakerWarp = warpOf(speakerDistance);
    update();
}

bool NFCHOAFilterModeling::setSourceDistance(double metres)
{
    const double d = std::max(metres, minimumDistance);
    if (d == sourceDistance)
        return false;
    sourceDistance = d;
    sourceWarp = warpOf(d);
    sourceDirty = true;
    return true;
}

bool NFCHOAFilterModeling::setSpeakerDistance(double metres)
{
    const double d = std::max(metres, minimumDistance);
    if (d == speakerDistance)
        return false;
    speakerDistance = d;
    speakerWarp = warpOf(d);
    speakerDirty = true;
    return true;
}

void NFCHOAFilterModeling::setSamplingRate(double rate)
{
    if (rate == samplingRate)
        return;
    samplingRate = rate;
    sourceWarp = warpOf(sourceDistance);
    speakerWarp = warpOf(speakerDistance);
    sourceDirty = speakerDirty = true;
}

void NFCHOAFilterModeling::computeCoefficients(double warp, ondo::Vector<double>& c) const
{
    for (std::size_t k = 0; k < polesReal.size(); ++k)
    {
        double* three = c.data() + 3 * k;
        if (order % 2 == 1 && k + 1 == polesReal.size())
        {
            // (1 - z^-1) - (root / A)(1 + z^-1): the real root.
            const double p = polesReal[k] / warp;
            three[0] = 1.0 - p;
            three[1] = -(1.0 + p);
            three[2] = 0.0;
            continue;
        }
        // (1 - z^-1)^2 - p (1 - z^-2) + q (1 + z^-1)^2: a pair of roots.
        const double p = 2.0 * polesReal[k] / warp;
        const double q = polesMag2[k] / (warp * warp);
        three[0] = 1.0 - p + q;
        three[1] = -2.0 * (1.0 - q);
        three[2] = 1.0 + p + q;
    }
}

bool NFCHOAFilterModeling::update()
{
    if (!sourceDirty && !speakerDirty)
        return false;
    if (sourceDirty)
        computeCoefficients(sourceWarp, sourceCoefficients);
    if (speakerDirty)
        computeCoefficients(speakerWarp, speakerCoefficients);
    sourceDirty = speakerDirty = false;
    // Source zeros over speaker poles, narrowed to single precision as the filter runs.
    for (std::size_t k = 0; k < sections.size(); ++k)
    {
        const double* num = sourceCoefficients.data() + 3 * k;
        const double* den = speakerCoefficients.data() + 3 * k;
        const float lead = static_cast<float>(den[0]);
        ondo::BiquadCoefficients& s = sections[k];
        s.b0 = static_cast<float>(num[0]) / lead;
        s.b1 = static_cast<float>(num[1]) / lead;
        s.b2 = static_cast<float>(num[2]) / lead;
        s.a0 = 1.0;
        s.a1 = static_cast<float>(den[1]) / lead;
        s.a2 = static_cast<float>(den[2]) / lead;
    }
    return true;
}
} // namespace Quor
