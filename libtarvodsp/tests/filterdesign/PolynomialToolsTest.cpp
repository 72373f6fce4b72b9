#include "common/TarvoDspException.h"
#include "filterdesign/TarvoDspDurbinStepDown.h"
#include "filterdesign/TarvoDspFilterNorm.h"
#include "filterdesign/TarvoDspPolynomial.h"
#include "filterdesign/TarvoDspReflectionCoefficients.h"
#include "filterdesign/TarvoDspZeroPoleToSections.h"
#include "filterdesign/TarvoDspZeroPoleToStateSpace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <string>
#include <vector>

namespace
{
using ondo::ComplexArray;
using ondo::Vector;
using Cplx = std::complex<double>;

ComplexArray<double> rootsOf(std::initializer_list<Cplx> values)
{
    ComplexArray<double> result;
    for (const Cplx& v : values)
        result.pushBack({v.real(), v.imag()});
    return result;
}

// Every expected root is matched by a distinct computed root within `tolerance`.
void expectSameRoots(const ComplexArray<double>& computed, std::vector<Cplx> expected, double tolerance)
{
    ASSERT_EQ(computed.size(), expected.size());
    for (const auto& r : computed)
    {
        const auto nearest = std::min_element(expected.begin(), expected.end(), [&](Cplx x, Cplx y) {
            return std::abs(x - Cplx(r.re, r.im)) < std::abs(y - Cplx(r.re, r.im));
        });
        EXPECT_NEAR(std::abs(*nearest - Cplx(r.re, r.im)), 0.0, tolerance) << r.re << " " << r.im;
        expected.erase(nearest);
    }
}

void expectRaises(const std::function<void()>& action, const std::string& message)
{
    try
    {
        action();
        ADD_FAILURE() << "no exception, expected \"" << message << "\"";
    }
    catch (const ondo::Exception& e)
    {
        EXPECT_EQ(e.getMessage(), message);
    }
}

TEST(PolynomialTools, RootsOfKnownPolynomials)
{
    // (x-1)(x-2)(x-3); x^2 + 1; 2 (x + 0.5)^2 with a leading zero that lowers the degree;
    // x^2 - 0.25 x with a root at 0. Simple roots come out near machine precision, the double
    // root to about sqrt(eps).
    expectSameRoots(ondo::polynomialRoots({1.0, -6.0, 11.0, -6.0}), {1.0, 2.0, 3.0}, 1e-12);
    expectSameRoots(ondo::polynomialRoots({1.0, 0.0, 1.0}), {Cplx(0, 1), Cplx(0, -1)}, 1e-14);
    expectSameRoots(ondo::polynomialRoots({0.0, 2.0, 2.0, 0.5}), {-0.5, -0.5}, 1e-7);
    expectSameRoots(ondo::polynomialRoots({1.0, -0.25, 0.0}), {0.0, 0.25}, 1e-15);
    EXPECT_EQ(ondo::polynomialRoots({3.0}).size(), 0u);
    // The fifth roots of unity: x^5 - 1.
    std::vector<Cplx> unity;
    for (int k = 0; k < 5; ++k)
        unity.push_back(std::polar(1.0, 2.0 * M_PI * k / 5.0));
    expectSameRoots(ondo::polynomialRoots({1.0, 0.0, 0.0, 0.0, 0.0, -1.0}), unity, 1e-13);
}

TEST(PolynomialTools, StabilityIsRootsStrictlyInsideTheUnitCircle)
{
    EXPECT_TRUE(ondo::isStable({1.0, -1.8, 0.81}));      // double pole at 0.9
    EXPECT_FALSE(ondo::isStable({1.0, -2.0, 1.0}));      // double pole at 1
    EXPECT_FALSE(ondo::isStable({1.0, 0.0, 1.0}));       // +-j on the circle
    EXPECT_FALSE(ondo::isStable({1.0, -2.5, 1.0}));      // 2 and 0.5
    EXPECT_TRUE(ondo::isStable({4.0}));                  // no roots
    EXPECT_FALSE(ondo::isStable({0.0, 0.0}));
}

TEST(PolynomialTools, PolynomialFromRootsMultipliesOut)
{
    const auto p = ondo::polynomialFromRoots(rootsOf({{0.6, 0.7}, {0.6, -0.7}, {-0.5, 0.0}}));
    // (x^2 - 1.2 x + 0.85)(x + 0.5) = x^3 - 0.7 x^2 + 0.25 x + 0.425
    const double expected[] = {1.0, -0.7, 0.25, 0.425};
    ASSERT_EQ(p.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i)
    {
        EXPECT_NEAR(p[i].re, expected[i], 1e-15);
        EXPECT_NEAR(p[i].im, 0.0, 1e-15); // conjugates cancel to rounding
    }
    const auto one = ondo::polynomialFromRoots({});
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0].re, 1.0);
}

TEST(PolynomialTools, FilterNormIsTheImpulseResponseEnergy)
{
    EXPECT_DOUBLE_EQ(ondo::FilterNorm({1.0}, {1.0}), 1.0);
    EXPECT_DOUBLE_EQ(ondo::FilterNorm({3.0, 4.0}, {1.0}), 5.0);
    EXPECT_EQ(ondo::FilterNorm({}, {1.0}), 0.0);
    EXPECT_EQ(ondo::FilterNorm({1.0}, {1.0, -0.5}, 1), 0.0);
    // 1 / (1 - p z^-1) has h[n] = p^n: norm 1 / sqrt(1 - p^2). Within 1e-9: the recursion stops
    // once the tail's energy has fallen by the tolerance.
    for (double p : {0.5, -0.9, 0.999})
        EXPECT_NEAR(ondo::FilterNorm({1.0}, {1.0, -p}), 1.0 / std::sqrt(1.0 - p * p), 1e-9) << p;
    // Poles r e^(+-jw): h[n] = r^n sin((n+1) w) / sin w; energy (1 + r^2) / ((1 - r^2)(1 - 2 r^2 cos 2w + r^4)).
    const double r = 0.95, w = 0.3;
    const double energy = (1 + r * r) / ((1 - r * r) * (1 - 2 * r * r * std::cos(2 * w) + std::pow(r, 4)));
    EXPECT_NEAR(ondo::FilterNorm({2.0}, {1.0, -2 * r * std::cos(w), r * r}), 2.0 * std::sqrt(energy), 1e-9);

    expectRaises([] { ondo::FilterNorm({1.0}, {1.0, 0.0, 1.0}); }, "unstable polynomial"); // +-j
    expectRaises([] { ondo::FilterNorm({1.0}, {1.0, -1.0}); }, "unstable polynomial");
}

TEST(PolynomialTools, ReflectionCoefficientsAndStepDownByHand)
{
    // [1, 0.5, 0.2]: k2 = 0.2; one step down: (0.5 - 0.2 * 0.5) / (1 - 0.04) = 0.4 / 0.96.
    const auto step = ondo::DurbinStepDown({1.0, 0.5, 0.2});
    EXPECT_DOUBLE_EQ(step.k, 0.2);
    ASSERT_EQ(step.polynomial.size(), 2u);
    EXPECT_EQ(step.polynomial[0], 1.0);
    EXPECT_DOUBLE_EQ(step.polynomial[1], 0.4 / 0.96);
    // Any leading value: [2, 1, 0.4] is the same polynomial.
    const auto k = ondo::ReflectionCoefficients({2.0, 1.0, 0.4});
    ASSERT_EQ(k.size(), 2u);
    EXPECT_DOUBLE_EQ(k[0], 0.4 / 0.96);
    EXPECT_DOUBLE_EQ(k[1], 0.2);
    // Order 3 from the lattice up (step-up recursion a_new[i] = a[i] + k a[p-i]):
    // k = 0.5, -0.3, 0.2 builds [1, 0.5] -> [1, 0.35, -0.3] -> [1, 0.29, -0.23, 0.2].
    const auto k3 = ondo::ReflectionCoefficients({1.0, 0.29, -0.23, 0.2});
    ASSERT_EQ(k3.size(), 3u);
    EXPECT_NEAR(k3[0], 0.5, 1e-15);
    EXPECT_NEAR(k3[1], -0.3, 1e-15);
    EXPECT_NEAR(k3[2], 0.2, 1e-15);

    expectRaises([] { ondo::ReflectionCoefficients({0.0, 1.0, 0.5}); }, "invalid polynomial");
    expectRaises([] { ondo::DurbinStepDown({1.0, 0.3, -1.0}); }, "invalid parameter");
    expectRaises([] { ondo::ReflectionCoefficients({1.0, 0.3, 1.0}); }, "invalid parameter");
}

TEST(PolynomialTools, StateSpaceRealisesTheZeroPoleModel)
{
    ondo::ZeroPoleGain model;
    model.zeros = rootsOf({{0.0, 2.0}, {0.0, -2.0}, {-3.0, 0.0}});
    model.poles = rootsOf({{-0.2, 1.1}, {-0.2, -1.1}, {-0.7, 0.0}, {-0.4, 0.9}, {-0.4, -0.9}});
    model.gain = 1.7;
    const ondo::StateSpace s = ondo::zeroPoleToStateSpace(model);
    ASSERT_EQ(s.getOrder(), 5u);
    // Compare with k prod(x - z) / prod(x - p) at points off the axes.
    for (Cplx x : {Cplx(0.3, 0.4), Cplx(-1.0, 2.5), Cplx(2.0, -0.1)})
    {
        Cplx direct = model.gain;
        for (const auto& z : model.zeros)
            direct *= x - Cplx(z.re, z.im);
        for (const auto& p : model.poles)
            direct /= x - Cplx(p.re, p.im);
        EXPECT_NEAR(std::abs(s.evaluate(x) - direct), 0.0, 1e-12 * std::abs(direct));
    }
    ondo::ZeroPoleGain improper;
    improper.zeros = rootsOf({1.0, 2.0});
    improper.poles = rootsOf({0.5});
    expectRaises([&] { ondo::zeroPoleToStateSpace(improper); }, "invalid polynomial");
}

TEST(PolynomialTools, SectionsFromZerosAndPoles)
{
    ondo::Matrix<double> sections;
    double gain = 0.0;
    ondo::ZeroPoleGain empty;
    empty.gain = 3.0;
    ASSERT_TRUE(ondo::zeroPoleToSections(empty, sections, gain));
    ASSERT_EQ(sections.getNumRows(), 1u);
    EXPECT_EQ(gain, 3.0);
    const double unit[] = {1, 0, 0, 1, 0, 0};
    for (std::uint64_t c = 0; c < 6; ++c)
        EXPECT_EQ(sections(0, c), unit[c]);

    ondo::ZeroPoleGain model;
    model.zeros = rootsOf({-1.0, -1.0, -1.0});
    model.poles = rootsOf({{0.5, 0.5}, 0.3, {0.5, -0.5}});
    model.gain = 0.1;
    ASSERT_TRUE(ondo::zeroPoleToSections(model, sections, gain));
    ASSERT_EQ(sections.getNumRows(), 2u);
    EXPECT_EQ(gain, 0.1);
    // The product of the sections equals the model, up to a delay, at any point.
    for (Cplx z : {Cplx(0.2, 0.9), Cplx(-0.8, 0.1)})
    {
        Cplx product = gain, direct = model.gain;
        for (std::uint64_t i = 0; i < 2; ++i)
            product *= (sections(i, 0) * z * z + sections(i, 1) * z + sections(i, 2)) /
                       (sections(i, 3) * z * z + sections(i, 4) * z + sections(i, 5));
        for (const auto& r : model.zeros)
            direct *= z - Cplx(r.re, r.im);
        for (const auto& r : model.poles)
            direct /= z - Cplx(r.re, r.im);
        EXPECT_NEAR(std::abs(product - direct), 0.0, 1e-14);
    }
    // The first-order section (0.3 alone, with one zero) has b2 = a2 = 0 and comes first:
    // its recursive part is the least resonant.
    EXPECT_EQ(sections(0, 5), 0.0);
    EXPECT_EQ(sections(0, 2), 0.0);
    EXPECT_DOUBLE_EQ(sections(0, 4), -0.3);

    ondo::ZeroPoleGain tooManyZeros;
    tooManyZeros.zeros = rootsOf({0.1, 0.2});
    tooManyZeros.poles = rootsOf({0.5});
    EXPECT_FALSE(ondo::zeroPoleToSections(tooManyZeros, sections, gain));
    EXPECT_EQ(sections.getNumRows(), 0u);
    ondo::ZeroPoleGain unpaired;
    unpaired.poles = rootsOf({{0.5, 0.5}, {0.5, -0.4}});
    EXPECT_FALSE(ondo::zeroPoleToSections(unpaired, sections, gain));
    // Within the looser of the two pairing tolerances the pair is accepted.
    unpaired.poles = rootsOf({{0.5, 0.5}, {0.5, -0.5001}});
    EXPECT_TRUE(ondo::zeroPoleToSections(unpaired, sections, gain));
}
} // namespace
