#include "filterdesign/TarvoDspZeroPoleToSections.h"

#include "common/TarvoDspException.h"
#include "filterdesign/TarvoDspConjugatePairs.h"
#include "filterdesign/TarvoDspPolynomial.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>

namespace ondo
{
namespace
{
// One or two roots that form a real factor: a conjugate pair, two real roots or one.
struct RootGroup
{
    Complex<double> first{};
    Complex<double> second{};
    int count = 0;
};

bool intoPairs(ComplexArray<double>& roots)
{
    return sortIntoConjugatePairs(roots, 1e-6) || sortIntoConjugatePairs(roots, 1e-3);
}

double distance(const Complex<double>& x, const Complex<double>& y)
{
    return std::hypot(x.re - y.re, x.im - y.im);
}

double modulus(const Complex<double>& x)
{
    return std::hypot(x.re, x.im);
}

// The real coefficients 1, c1, c2 of the group's factor in z^-1.
void factor(const RootGroup& g, double* out)
{
    ComplexArray<double> roots;
    if (g.count > 0)
        roots.pushBack(g.first);
    if (g.count > 1)
        roots.pushBack(g.second);
    const ComplexArray<double> p = polynomialFromRoots(roots);
    out[0] = 1.0;
    out[1] = p.size() > 1 ? p[1].re : 0.0;
    out[2] = p.size() > 2 ? p[2].re : 0.0;
}

// Complex pairs first, then the real roots paired off in ascending order; an odd one out
// comes last, alone.
Vector<RootGroup> groups(const ComplexArray<double>& sorted)
{
    Vector<RootGroup> result;
    ComplexArray<double> reals;
    for (std::size_t i = 0; i < sorted.size(); ++i)
    {
        if (sorted[i].im != 0.0)
        {
            result.pushBack({sorted[i], sorted[i + 1], 2});
            ++i;
        }
        else
            reals.pushBack(sorted[i]);
    }
    for (std::size_t i = 0; i < reals.size(); i += 2)
        result.pushBack(i + 1 < reals.size() ? RootGroup{reals[i], reals[i + 1], 2} : RootGroup{reals[i], {}, 1});
    return result;
}
// The energy of the impulse response of 1 / (1 + a1 z^-1 + a2 z^-2), in closed form. The
// recursion FilterNorm runs would need about 1 / (1 - |pole|) samples: millions for the
// sections of a 10 Hz Chebyshev design, seconds for one design, for the same ranking.
double recursiveEnergy(double a1, double a2)
{
    const double energy = (1.0 + a2) / ((1.0 - a2) * ((1.0 + a2) * (1.0 + a2) - a1 * a1));
    if (!(std::abs(a2) < 1.0 && std::abs(a1) < 1.0 + a2) || !std::isfinite(energy))
        throw Exception("unstable polynomial", ONDO_SOURCE_LOCATION);
    return energy;
}
} // namespace

bool zeroPoleToSections(const ZeroPoleGain& model, Matrix<double>& sections, double& gain)
{
    gain = model.gain;
    if (model.zeros.empty() && model.poles.empty())
    {
        sections.setSize(1, 6);
        sections(0, 0) = 1.0;
        sections(0, 3) = 1.0;
        for (int k : {1, 2, 4, 5})
            sections(0, static_cast<std::uint64_t>(k)) = 0.0;
        return true;
    }
    sections.setSize(0, 6);
    ComplexArray<double> zeros(model.zeros), poles(model.poles);
    if (zeros.size() > poles.size() || !intoPairs(zeros) || !intoPairs(poles))
        return false;

    // A lone real pole (odd order) takes the real zero nearest to it, so that the zeros
    // left over group into pairs for the second-order sections.
    Vector<RootGroup> poleGroups = groups(poles);
    ComplexArray<double> remainingZeros;
    Vector<RootGroup> zeroFor(poleGroups.size());
    const std::size_t lonePole = poleGroups.back().count == 1 ? poleGroups.size() - 1 : poleGroups.size();
    std::size_t loneZero = zeros.size();
    if (lonePole < poleGroups.size())
        for (std::size_t i = 0; i < zeros.size(); ++i)
            if (zeros[i].im == 0.0 &&
                (loneZero == zeros.size() ||
                 distance(zeros[i], poleGroups[lonePole].first) < distance(zeros[loneZero], poleGroups[lonePole].first)))
                loneZero = i;
    for (std::size_t i = 0; i < zeros.size(); ++i)
        if (i != loneZero)
            remainingZeros.pushBack(zeros[i]);
    if (loneZero < zeros.size())
        zeroFor[lonePole] = {zeros[loneZero], {}, 1};

    // Pole pairs nearest the unit circle choose their zeros first: they shape the response
    // most, and the zeros nearest them keep each section's gain moderate.
    Vector<std::size_t> order;
    for (std::size_t i = 0; i < poleGroups.size(); ++i)
        if (i != lonePole)
            order.pushBack(i);
    std::stable_sort(order.begin(), order.end(), [&](std::size_t x, std::size_t y) {
        return modulus(poleGroups[x].first) > modulus(poleGroups[y].first);
    });
    Vector<RootGroup> zeroGroups = groups(remainingZeros);
    Vector<bool> used(zeroGroups.size());
    for (std::size_t i : order)
    {
        std::size_t best = zeroGroups.size();
        for (std::size_t j = 0; j < zeroGroups.size(); ++j)
            if (!used[j] && (best == zeroGroups.size() || distance(zeroGroups[j].first, poleGroups[i].first) <
                                                                distance(zeroGroups[best].first, poleGroups[i].first)))
                best = j;
        if (best < zeroGroups.size())
        {
            zeroFor[i] = zeroGroups[best];
            used[best] = true;
        }
    }

    struct Section
    {
        double row[6];
        double norm;
    };
    Vector<Section> result(poleGroups.size());
    for (std::size_t i = 0; i < poleGroups.size(); ++i)
    {
        Section& s = result[i];
        factor(zeroFor[i], s.row);
        factor(poleGroups[i], s.row + 3);
        s.norm = recursiveEnergy(s.row[4], s.row[5]);
    }
    std::stable_sort(result.begin(), result.end(), [](const Section& x, const Section& y) { return x.norm < y.norm; });

    sections.setSize(result.size(), 6);
    for (std::size_t i = 0; i < result.size(); ++i)
        for (std::uint64_t k = 0; k < 6; ++k)
            sections(i, k) = result[i].row[k];
    return true;
}
} // namespace ondo
