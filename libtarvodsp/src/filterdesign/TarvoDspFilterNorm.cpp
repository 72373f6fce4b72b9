#include "filterdesign/TarvoDspFilterNorm.h"

#include "common/TarvoDspException.h"
#include "filterdesign/TarvoDspPolynomial.h"

#include <algorithm>
#include <cmath>

namespace ondo
{
namespace
{
double l2(const Vector<double>& v)
{
    double sum = 0.0;
    for (double x : v)
        sum += x * x;
    return std::sqrt(sum);
}
} // namespace

double FilterNorm(const Vector<double>& b, const Vector<double>& a, int normType, double tolerance)
{
    if (normType != 0)
        return 0.0;
    if (a.size() == 1 && a[0] == 1.0)
        return l2(b);
    if (a.empty() || a[0] == 0.0)
        throw Exception("invalid polynomial", ONDO_SOURCE_LOCATION);

    double largest = 0.0;
    for (const auto& root : polynomialRoots(a))
        largest = std::max(largest, std::hypot(root.re, root.im));
    if (!(largest < 1.0))
        throw Exception("unstable polynomial", ONDO_SOURCE_LOCATION);

    // The tail's energy decays as largest^(2n), times a polynomial in n where roots repeat:
    // the length where it falls below `tolerance`, half as long again for the repeats, and
    // at least the length of the coefficients.
    const double tol = std::clamp(tolerance, 1e-300, 0.5);
    const double decay = largest > 0.0 ? std::log(tol) / (2.0 * std::log(largest)) : 1.0;
    const auto length = static_cast<std::size_t>(
        std::min(1.0e7, std::ceil(1.5 * decay) + static_cast<double>(std::max(a.size(), b.size()) + 1)));

    Vector<double> h(length);
    for (std::size_t n = 0; n < length; ++n)
    {
        double y = n < b.size() ? b[n] : 0.0;
        for (std::size_t k = 1; k < a.size() && k <= n; ++k)
            y -= a[k] * h[n - k];
        h[n] = y / a[0];
    }
    return l2(h);
}
} // namespace ondo
