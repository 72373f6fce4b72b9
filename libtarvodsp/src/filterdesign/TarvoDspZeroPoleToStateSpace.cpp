#include "filterdesign/TarvoDspZeroPoleToStateSpace.h"

#include "common/TarvoDspException.h"
#include "filterdesign/TarvoDspConjugatePairs.h"

#include <algorithm>
#include <array>

namespace ondo
{
namespace
{
// A monic polynomial of degree 0 to 2, lowest degree terms last: x^2 + c[1] x + c[2].
struct Quadratic
{
    int degree = 0;
    std::array<double, 3> c{1.0, 0.0, 0.0};
};

// Splits a conjugate-pair ordered list into monic factors of degree 2 (pairs, then real
// roots two by two) and at most one of degree 1.
Vector<Quadratic> factors(const ComplexArray<double>& roots)
{
    Vector<Quadratic> result;
    std::size_t i = 0;
    while (i < roots.size())
    {
        Quadratic q;
        const auto& r = roots[i];
        if (r.im != 0.0)
        {
            q = {2, {1.0, -2.0 * r.re, r.re * r.re + r.im * r.im}};
            i += 2;
        }
        else if (i + 1 < roots.size())
        {
            const auto& s = roots[i + 1];
            q = {2, {1.0, -(r.re + s.re), r.re * s.re}};
            i += 2;
        }
        else
        {
            q = {1, {1.0, -r.re, 0.0}};
            i += 1;
        }
        result.pushBack(q);
    }
    return result;
}

// Appends block (a, b, c, d) after the chain so far: the chain's output drives the block.
void appendBlock(Matrix<double>& A, Matrix<double>& B, Matrix<double>& C, double& D, const Matrix<double>& a,
                 const Matrix<double>& b, const Matrix<double>& c, double d)
{
    const std::uint64_t n = A.getNumRows();
    const std::uint64_t m = a.getNumRows();
    Matrix<double> newA(n + m, n + m), newB(n + m, 1), newC(1, n + m);
    for (std::uint64_t r = 0; r < n; ++r)
    {
        for (std::uint64_t k = 0; k < n; ++k)
            newA(r, k) = A(r, k);
        newB(r, 0) = B(r, 0);
    }
    for (std::uint64_t r = 0; r < m; ++r)
    {
        for (std::uint64_t k = 0; k < n; ++k)
            newA(n + r, k) = b(r, 0) * C(0, k);
        for (std::uint64_t k = 0; k < m; ++k)
            newA(n + r, n + k) = a(r, k);
        newB(n + r, 0) = b(r, 0) * D;
    }
    for (std::uint64_t k = 0; k < n; ++k)
        newC(0, k) = d * C(0, k);
    for (std::uint64_t k = 0; k < m; ++k)
        newC(0, n + k) = c(0, k);
    A = std::move(newA);
    B = std::move(newB);
    C = std::move(newC);
    D *= d;
}
} // namespace

std::vector<StateSpace> zeroPoleToStateSpaceBlocks(const ZeroPoleGain& model)
{
    ComplexArray<double> zeros(model.zeros), poles(model.poles);
    if (zeros.size() > poles.size() || !sortIntoConjugatePairs(zeros, 1e-6) || !sortIntoConjugatePairs(poles, 1e-6))
        throw Exception("invalid polynomial", ONDO_SOURCE_LOCATION);

    const Vector<Quadratic> denominators = factors(poles);
    Vector<Quadratic> numerators = factors(zeros);
    // Zero factors go to the blocks of at least their degree: quadratics first, a linear
    // factor last; a block without a factor of its own takes the constant 1.
    std::stable_sort(numerators.begin(), numerators.end(),
                     [](const Quadratic& x, const Quadratic& y) { return x.degree > y.degree; });
    Vector<Quadratic> assigned(denominators.size(), Quadratic{});
    Vector<bool> used(numerators.size());
    for (std::size_t i = 0; i < denominators.size(); ++i)
        for (std::size_t j = 0; j < numerators.size(); ++j)
            if (!used[j] && numerators[j].degree <= denominators[i].degree)
            {
                assigned[i] = numerators[j];
                used[j] = true;
                break;
            }
    for (bool u : used)
        if (!u)
            throw Exception("invalid polynomial", ONDO_SOURCE_LOCATION);

    std::vector<StateSpace> blocks;
    for (std::size_t i = 0; i < denominators.size(); ++i)
    {
        const Quadratic& den = denominators[i];
        const Quadratic& num = assigned[i];
        const auto m = static_cast<std::uint64_t>(den.degree);
        // Numerator n0 x^m + ... over the monic denominator, m = degree: D = n0 and the
        // strictly proper rest in the first row of the controller form.
        std::array<double, 3> n{0.0, 0.0, 0.0};
        for (int k = 0; k <= num.degree; ++k)
            n[static_cast<std::size_t>(den.degree - num.degree + k)] = num.c[static_cast<std::size_t>(k)];
        StateSpace block{Matrix<double>(m, m), Matrix<double>(m, 1), Matrix<double>(1, m), Matrix<double>(1, 1)};
        for (std::uint64_t k = 0; k < m; ++k)
        {
            block.A(0, k) = -den.c[k + 1];
            block.C(0, k) = n[k + 1] - n[0] * den.c[k + 1];
        }
        if (m == 2)
            block.A(1, 0) = 1.0;
        block.B(0, 0) = 1.0;
        block.D(0, 0) = n[0];
        blocks.push_back(std::move(block));
    }
    if (blocks.empty())
        blocks.push_back({Matrix<double>(0, 0), Matrix<double>(0, 1), Matrix<double>(1, 0), Matrix<double>(1, 1)});
    StateSpace& last = blocks.back();
    for (std::uint64_t k = 0; k < last.C.getNumColumns(); ++k)
        last.C(0, k) *= model.gain;
    last.D(0, 0) = blocks.size() == 1 && denominators.empty() ? model.gain : last.D(0, 0) * model.gain;
    return blocks;
}

StateSpace zeroPoleToStateSpace(const ZeroPoleGain& model)
{
    StateSpace chain{Matrix<double>(0, 0), Matrix<double>(0, 1), Matrix<double>(1, 0), Matrix<double>(1, 1)};
    double D = 1.0;
    for (const StateSpace& block : zeroPoleToStateSpaceBlocks(model))
        appendBlock(chain.A, chain.B, chain.C, D, block.A, block.B, block.C, block.D(0, 0));
    chain.D(0, 0) = D;
    return chain;
}
} // namespace ondo
