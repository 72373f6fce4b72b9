#include "filterdesign/TarvoDspDurbinStepDown.h"

#include "common/TarvoDspException.h"

#include <cmath>

namespace ondo
{
DurbinStep DurbinStepDown(const Vector<double>& polynomial)
{
    DurbinStep step;
    if (polynomial.size() < 2)
    {
        step.polynomial = Vector<double>{1.0};
        return step;
    }
    const std::size_t p = polynomial.size() - 1;
    const double* a = polynomial.data() + 1; // without its leading 1
    const double k = a[p - 1];
    if (std::abs(k) == 1.0)
        throw Exception("invalid parameter", ONDO_SOURCE_LOCATION);
    step.k = k;
    step.polynomial.resize(p);
    step.polynomial[0] = 1.0;
    const double scale = 1.0 - k * k;
    for (std::size_t i = 0; i + 1 < p; ++i)
        step.polynomial[i + 1] = (a[i] - k * a[p - 2 - i]) / scale;
    return step;
}
} // namespace ondo
