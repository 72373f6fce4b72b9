#include "filterdesign/TarvoDspPolynomial.h"

#include "containers/TarvoDspMatrix.h"
#include "filterdesign/TarvoDspEigenvalues.h"
#include "filterdesign/TarvoDspDurbinStepDown.h"

#include <algorithm>
#include <cmath>

namespace ondo
{
ComplexArray<double> polynomialRoots(const Vector<double>& polynomial)
{
    std::size_t lead = 0;
    while (lead < polynomial.size() && polynomial[lead] == 0.0)
        ++lead;
    if (lead + 1 >= polynomial.size())
        return {};
    const std::size_t degree = polynomial.size() - lead - 1;
    // Upper Hessenberg already: first row -a[i]/a[0], ones on the subdiagonal.
    Matrix<double> companion(degree, degree);
    for (std::size_t c = 0; c < degree; ++c)
        companion(0, c) = -polynomial[lead + 1 + c] / polynomial[lead];
    for (std::size_t r = 1; r < degree; ++r)
        companion(r, r - 1) = 1.0;
    return eigenvalues(companion);
}

bool isStable(const Vector<double>& a)
{
    bool allZero = true;
    for (double value : a)
        allZero = allZero && value == 0.0;
    if (allZero)
        return false;
    double largest = 0.0;
    for (const auto& root : polynomialRoots(a))
    {
        const double modulus = std::hypot(root.re, root.im);
        if (!(modulus < 1.0))
            return false;
        largest = std::max(largest, modulus);
    }
    // A root repeated on the circle comes out of the eigenvalues only to about sqrt(eps),
    // possibly just inside: that close, the reflection coefficients decide (all |k| < 1).
    if (largest < 1.0 - 1e-6)
        return true;
    std::size_t lead = 0;
    while (a[lead] == 0.0)
        ++lead;
    Vector<double> current(a.size() - lead);
    for (std::size_t i = 0; i < current.size(); ++i)
        current[i] = a[lead + i] / a[lead];
    while (current.size() > 1)
    {
        if (!(std::abs(current.back()) < 1.0))
            return false;
        current = DurbinStepDown(current).polynomial;
    }
    return true;
}

ComplexArray<double> polynomialFromRoots(const ComplexArray<double>& roots)
{
    ComplexArray<double> result(1);
    result[0] = {1.0, 0.0};
    for (const auto& r : roots)
    {
        result.pushBack({0.0, 0.0});
        for (std::size_t i = result.size() - 1; i > 0; --i)
        {
            const auto& previous = result[i - 1];
            result[i].re -= r.re * previous.re - r.im * previous.im;
            result[i].im -= r.re * previous.im + r.im * previous.re;
        }
    }
    return result;
}
} // namespace ondo
