#include "filterdesign/TarvoDspConjugatePairs.h"

#include <algorithm>
#include <cmath>

namespace ondo
{
bool sortIntoConjugatePairs(ComplexArray<double>& roots, double tolerance)
{
    const auto scale = [tolerance](const Complex<double>& r) { return tolerance * std::max(1.0, std::hypot(r.re, r.im)); };
    ComplexArray<double> upper, lower, real;
    for (const auto& r : roots)
    {
        if (std::abs(r.im) <= scale(r))
            real.pushBack({r.re, 0.0});
        else
            (r.im > 0.0 ? upper : lower).pushBack(r);
    }
    if (upper.size() != lower.size())
        return false;
    upper.sortByAscendingReal();
    Vector<bool> taken(lower.size());
    ComplexArray<double> result;
    result.reserve(roots.size());
    for (const auto& u : upper)
    {
        std::size_t best = lower.size();
        double bestDistance = 0.0;
        for (std::size_t i = 0; i < lower.size(); ++i)
        {
            const double distance = std::hypot(u.re - lower[i].re, u.im + lower[i].im);
            if (!taken[i] && (best == lower.size() || distance < bestDistance))
            {
                best = i;
                bestDistance = distance;
            }
        }
        if (best == lower.size() || bestDistance > scale(u))
            return false;
        taken[best] = true;
        // The pair's mean, so that a quadratic built from it has exactly real coefficients.
        const Complex<double> mean{0.5 * (u.re + lower[best].re), 0.5 * (u.im - lower[best].im)};
        result.pushBack(mean);
        result.pushBack({mean.re, -mean.im});
    }
    real.sortByAscendingReal();
    for (const auto& r : real)
        result.pushBack(r);
    roots = std::move(result);
    return true;
}
} // namespace ondo
