#include "pan/QuorHoaOptimization.h"

#include "math/TarvoDspAmbisonics.h"

#include <cmath>
#include <utility>

namespace Quor
{
namespace
{
constexpr double pi = 3.14159265358979323846;

const std::pair<HoaOptimization::Type, std::vector<const char*>> names[] = {
    {HoaOptimization::Basic, {"basic"}},
    {HoaOptimization::MaxRe, {"maxRe", "max-re"}},
    {HoaOptimization::InPhase, {"in-phase", "inphase"}},
    {HoaOptimization::InverseMaxRe, {"inv-maxRe", "inv-max-re"}},
    {HoaOptimization::InverseInPhase, {"inv-in-phase", "inv-inphase"}},
};

/// P_l(x) by Bonnet's recurrence.
double legendrePolynomial(std::uint32_t l, double x)
{
    double previous = 1.0, current = x;
    if (l == 0)
        return previous;
    for (std::uint32_t n = 2; n <= l; ++n)
    {
        const double next = ((2.0 * n - 1.0) * x * current - (n - 1.0) * previous) / n;
        previous = current;
        current = next;
    }
    return current;
}

double maxReWeight(std::uint32_t l, std::uint32_t order, std::uint32_t dimension)
{
    if (dimension == 2)
        return std::cos(l * pi / (2.0 * order + 2.0));
    return legendrePolynomial(l, HoaOptimization::largestLegendreRoot(order + 1));
}

double inPhaseWeight(std::uint32_t l, std::uint32_t order, std::uint32_t dimension)
{
    using ondo::Ambisonics;
    const int m = static_cast<int>(order), d = static_cast<int>(l);
    const double square = Ambisonics::factorial(m) * Ambisonics::factorial(m);
    if (dimension == 2)
        return square / (Ambisonics::factorial(m - d) * Ambisonics::factorial(m + d));
    return (m + 1.0) * square / (Ambisonics::factorial(m - d) * Ambisonics::factorial(m + d + 1));
}
} // namespace

ondo::String HoaOptimization::toString(Type type)
{
    for (const auto& [value, list] : names)
        if (value == type)
            return list.front();
    return "basic";
}

HoaOptimization::Type HoaOptimization::fromString(const ondo::String& name)
{
    for (const auto& [value, list] : names)
        for (const char* n : list)
            if (name == n)
                return value;
    return Basic;
}

double HoaOptimization::largestLegendreRoot(std::uint32_t degree)
{
    static const double roots[] = {0.0,
                                   0.0,
                                   0.577350269189626,
                                   0.774596669241483,
                                   0.86113631159405,
                                   0.90617984593866,
                                   0.932469514203152,
                                   0.949107912342759,
                                   0.960289856497536,
                                   0.968160239507626,
                                   0.973906528517172,
                                   0.978228658146057,
                                   0.981560634246719,
                                   0.984183054718588,
                                   0.986283808696812,
                                   0.987992518020485,
                                   0.98940093499165};
    if (degree <= 16)
        return roots[degree];
    const double n = degree;
    return std::cos(3.0 * pi / (4.0 * n + 2.0)) * (1.0 - 1.0 / (8.0 * n * n) + 1.0 / (8.0 * n * n * n));
}

double HoaOptimization::degreeWeight(Type type, std::uint32_t l, std::uint32_t order, std::uint32_t dimension)
{
    if (l == 0)
        return 1.0;
    switch (type)
    {
        case MaxRe: return maxReWeight(l, order, dimension);
        case InPhase: return inPhaseWeight(l, order, dimension);
        case InverseMaxRe: return 1.0 / maxReWeight(l, order, dimension);
        case InverseInPhase: return 1.0 / inPhaseWeight(l, order, dimension);
        default: return 1.0;
    }
}

std::vector<float> HoaOptimization::weights(Type type, std::uint32_t order, std::uint32_t dimension)
{
    std::vector<float> w(ondo::Ambisonics::countFromOrder(dimension, order), 1.0f);
    for (std::uint32_t i = 1; i < w.size(); ++i)
    {
        // 2-D: degree l at 2l - 1 and 2l. 3-D: at l^2 to (l + 1)^2 - 1.
        const auto l = dimension == 2 ? (i + 1) / 2 : static_cast<std::uint32_t>(std::sqrt(static_cast<double>(i)));
        w[i] = static_cast<float>(degreeWeight(type, l, order, dimension));
    }
    return w;
}
} // namespace Quor
