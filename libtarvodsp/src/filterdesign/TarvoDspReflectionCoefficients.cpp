#include "filterdesign/TarvoDspReflectionCoefficients.h"

#include "common/TarvoDspException.h"
#include "filterdesign/TarvoDspDurbinStepDown.h"

namespace ondo
{
Vector<double> ReflectionCoefficients(const Vector<double>& polynomial)
{
    if (polynomial.empty() || polynomial[0] == 0.0)
        throw Exception("invalid polynomial", ONDO_SOURCE_LOCATION);
    Vector<double> current(polynomial);
    const double scale = 1.0 / current[0];
    for (double& value : current)
        value *= scale;
    Vector<double> k(current.size() - 1);
    for (std::size_t order = k.size(); order > 0; --order)
    {
        DurbinStep step = DurbinStepDown(current);
        k[order - 1] = step.k;
        current = std::move(step.polynomial);
    }
    return k;
}
} // namespace ondo
