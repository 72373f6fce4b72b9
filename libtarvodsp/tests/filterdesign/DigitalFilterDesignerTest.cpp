#include "common/TarvoDspException.h"
#include "dsp/FilterResponse.h"
#include "filterdesign/TarvoDspDigitalFilterDesigner.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <map>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

namespace
{
using ondo::DigitalFilterDesigner;
using Designer = DigitalFilterDesigner;

double cascadeDb(const ondo::CascadeCoefficients& sections, double hertz, double sampleRate)
{
    double db = 0.0;
    for (std::size_t i = 0; i < sections.size(); ++i)
        db += tarvo::testing::magnitudeDb(sections[i], hertz, sampleRate);
    return db;
}

std::vector<std::string> splitCsv(const std::string& line)
{
    std::vector<std::string> fields;
    std::stringstream stream(line);
    for (std::string field; std::getline(stream, field, ',');)
        fields.push_back(field);
    return fields;
}

const char* const shapes[] = {"lowpass", "highpass", "bandpass", "bandstop"};

// Magnitude responses written by golden/make_golden.py from scipy.signal's butter, cheby1,
// ellip and bessel (norm='phase', the normalisation of the stored Bessel table).
TEST(DigitalFilterDesigner, MatchesScipyReferenceDesigns)
{
    std::ifstream file(TARVODSP_TEST_SOURCE_DIR "/filterdesign/golden/designs.csv");
    ASSERT_TRUE(file.is_open());
    std::map<int, std::vector<double>> grids;
    int designs = 0, floorsChecked = 0;
    for (std::string line; std::getline(file, line);)
    {
        const auto f = splitCsv(line);
        if (f[0] == "grid")
        {
            for (std::size_t i = 2; i < f.size(); ++i)
                grids[std::stoi(f[1])].push_back(std::stod(f[i]));
            continue;
        }
        ASSERT_EQ(f.size(), 50u);
        const int order = std::stoi(f[2]);
        const double fs = std::stod(f[3]), f1 = std::stod(f[4]), f2 = std::stod(f[5]);
        const double rp = std::stod(f[6]), rs = std::stod(f[7]), stop1 = std::stod(f[8]), stop2 = std::stod(f[9]);
        const auto sections = Designer::design(order, f1, f2, rp, rs, fs, f[1], f[0]);
        const auto& grid = grids.at(static_cast<int>(fs));
        for (std::size_t i = 0; i < grid.size(); ++i)
        {
            const double reference = std::stod(f[10 + i]);
            const double ours = cascadeDb(sections, grid[i], fs);
            // Above -60 dB both are accurate to far better than 0.01 dB; below, the reference's
            // own rounding dominates and only the depth is required.
            if (reference > -60.0)
                EXPECT_NEAR(ours, reference, 0.01) << line.substr(0, 40) << " at " << grid[i] << " Hz";
            else
                EXPECT_LT(ours, -59.99) << line.substr(0, 40) << " at " << grid[i] << " Hz";
        }
        // Elliptic stop bands, scanned densely: the floor holds to 0.01 dB everywhere in them.
        if (stop1 > 0.0)
        {
            std::vector<std::pair<double, double>> bands;
            const std::string shape = f[1];
            if (shape == "lowpass")
                bands = {{stop1, fs / 2}};
            else if (shape == "highpass")
                bands = {{1.0, stop1}};
            else if (shape == "bandpass")
                bands = {{1.0, stop1}, {stop2, fs / 2}};
            else
                bands = {{stop1, stop2}};
            double worst = -1000.0;
            for (const auto& [lo, hi] : bands)
                for (int k = 0; k <= 400; ++k)
                    worst = std::max(worst, cascadeDb(sections, lo + (hi - lo) * k / 400.0, fs));
            EXPECT_LT(worst, -rs + 0.01) << line.substr(0, 40);
            ++floorsChecked;
        }
        ++designs;
    }
    EXPECT_EQ(designs, 4 * 4 * 8 * 3);
    EXPECT_EQ(floorsChecked, 4 * 8 * 3);
}

// T_N(x), the Chebyshev polynomial, for any real x.
double chebyshevT(int n, double x)
{
    if (std::abs(x) <= 1.0)
        return std::cos(n * std::acos(x));
    const double t = std::cosh(n * std::acosh(std::abs(x)));
    return x < 0.0 && n % 2 == 1 ? -t : t;
}

// Type II here is the type I prototype with the stop-band figure as its ripple, not scipy's
// cheby2 (the inverse form, flat pass band, equiripple stop band); so the reference is the
// type I closed form |H|^2 = 1 / (1 + eps^2 T_N(x)^2), x the prewarped frequency mapped
// through the shape's transformation. A ripple above 30 dB is taken as 30.
TEST(DigitalFilterDesigner, ChebyshevType2IsTypeOneWithTheStopBandFigure)
{
    const double fs = 44100.0, f1 = 800.0, f2 = 3000.0;
    const auto warp = [fs](double hz) { return std::tan(std::numbers::pi * hz / fs); };
    int checked = 0;
    for (double rs : {20.0, 45.0})
        for (int type = 0; type < 4; ++type)
            for (int order = 1; order <= 8; ++order)
            {
                const auto sections = Designer::design(order, f1, f2, 1.0, rs, fs, Designer::FilterType(type),
                                                       Designer::chebyshevType2);
                const double eps2 = std::pow(10.0, 0.1 * std::min(rs, 30.0)) - 1.0;
                const double wc = warp(f1), wl = warp(f1), wu = warp(f2);
                const double wn2 = wl * wu, bw = wu - wl;
                for (double hz = 25.0; hz < 20000.0; hz *= 1.13)
                {
                    const double w = warp(hz);
                    const double x = type == 0 ? w / wc : type == 1 ? wc / w : type == 2 ? (w * w - wn2) / (bw * w)
                                                                                        : bw * w / (wn2 - w * w);
                    const double reference = -10.0 * std::log10(1.0 + eps2 * std::pow(chebyshevT(order, x), 2));
                    // Below -60 dB the closed form outruns the rounding of the sections.
                    if (reference > -60.0)
                    {
                        EXPECT_NEAR(cascadeDb(sections, hz, fs), reference, 0.01)
                            << shapes[type] << " order " << order << " rs " << rs << " at " << hz;
                        ++checked;
                    }
                }
            }
    EXPECT_GT(checked, 2000);
}

// The stability triangle of a section 1 + a1 z^-1 + a2 z^-2: both poles inside the unit
// circle exactly when |a2| < 1 and |a1| < 1 + a2.
void expectStableSections(const ondo::CascadeCoefficients& sections, const std::string& what)
{
    for (std::size_t i = 0; i < sections.size(); ++i)
    {
        const auto& s = sections[i];
        ASSERT_EQ(s.a0, 1.0);
        ASSERT_TRUE(std::isfinite(s.b0) && std::isfinite(s.b1) && std::isfinite(s.b2)) << what;
        EXPECT_TRUE(std::abs(s.a2) < 1.0 && std::abs(s.a1) < 1.0 + s.a2)
            << what << " section " << i << ": a1 " << s.a1 << " a2 " << s.a2;
    }
}

TEST(DigitalFilterDesigner, EverySectionIsStable)
{
    struct Setting
    {
        double fs, f1, f2;
    };
    const Setting settings[] = {{96000, 10, 40}, {44100, 1000, 1100}, {48000, 15000, 21000}};
    for (int topology : {Designer::butterworth, Designer::chebyshevType1, Designer::chebyshevType2, Designer::bessel})
        for (int type = 0; type < 4; ++type)
            for (const auto& s : settings)
                for (int order = 1; order <= 20; ++order)
                {
                    const auto sections = Designer::design(order, s.f1, s.f2, 0.5, 40.0, s.fs, Designer::FilterType(type),
                                                           Designer::AnalogFilterTopology(topology));
                    const std::size_t expected = static_cast<std::size_t>(type < 2 ? (order + 1) / 2 : order);
                    EXPECT_EQ(sections.size(), expected);
                    expectStableSections(sections, "topology " + std::to_string(topology) + " " + shapes[type] +
                                                       " order " + std::to_string(order) + " at " +
                                                       std::to_string(s.f1));
                }
}

// Elliptic designs go up to the order at which the degree equation's modulus rounds to 1.
// Every order below is stable, except that a band-pass or band-stop a few orders short of
// the limit may need a pole nearer the unit circle than double precision can place: that
// design is refused as "unstable polynomial", and only when the prototype's nearest pole
// lies within 1e-14 (relative) of the imaginary axis.
TEST(DigitalFilterDesigner, EveryEllipticOrderAllowedIsStable)
{
    for (double rs : {1.0, 10.0, 40.0})
    {
        int refused = 0, largest = 0;
        for (int order = 1; order <= 60 && refused == 0; ++order)
            for (int type = 0; type < 4 && refused == 0; ++type)
            {
                const std::string what = "elliptic rs " + std::to_string(rs) + " order " + std::to_string(order);
                try
                {
                    expectStableSections(Designer::design(order, 1000, 3000, 0.5, rs, 44100, Designer::FilterType(type),
                                                          Designer::elliptic),
                                         what + " " + shapes[type]);
                    largest = order;
                }
                catch (const ondo::Exception& e)
                {
                    if (e.getMessage() == "FilterOrderTooLarge")
                    {
                        refused = order;
                        continue;
                    }
                    EXPECT_EQ(e.getMessage(), "unstable polynomial") << what;
                    double nearest = 1.0;
                    for (const auto& p : Designer::makePrototype(order, 0.5, rs, Designer::elliptic).poles)
                        nearest = std::min(nearest, std::abs(p.re) / std::hypot(p.re, p.im));
                    EXPECT_LT(nearest, 1e-14) << what << " " << shapes[type];
                }
            }
        // Rs below Rp + 1 is taken as Rp + 1 = 1.5 dB: order 16 is already too much.
        if (rs < 40.0)
        {
            EXPECT_GT(refused, 10) << rs;
        }
        EXPECT_GE(largest, 14) << rs;
    }
}

void expectSameSections(const ondo::CascadeCoefficients& a, const ondo::CascadeCoefficients& b, double tolerance,
                        const std::string& what)
{
    ASSERT_EQ(a.size(), b.size()) << what;
    for (std::size_t i = 0; i < a.size(); ++i)
    {
        const double x[] = {a[i].b0, a[i].b1, a[i].b2, a[i].a0, a[i].a1, a[i].a2};
        const double y[] = {b[i].b0, b[i].b1, b[i].b2, b[i].a0, b[i].a1, b[i].a2};
        for (int k = 0; k < 6; ++k)
            EXPECT_NEAR(x[k], y[k], tolerance * std::max(1.0, std::abs(y[k]))) << what << " section " << i << " #" << k;
    }
}

TEST(DigitalFilterDesigner, NamesOfShapesAndFamilies)
{
    const std::pair<const char*, int> topologies[] = {
        {"butterworth", 0},    {"chebyshevType1", 1}, {"chebyshev1", 1}, {"chebyshev 1", 1}, {"chebyshev-1", 1},
        {"chebyshevType2", 2}, {"chebyshev2", 2},     {"chebyshev 2", 2}, {"chebyshev-2", 2}, {"bessel", 3},
        {"elliptic", 4},       {"cauer", 4},          {"Butterworth", 0}, {"sinc", 0},        {"", 0}};
    for (const auto& [name, value] : topologies)
        EXPECT_EQ(Designer::topologyFromName(name), value) << name;
    const std::pair<const char*, int> types[] = {
        {"lowpass", 0}, {"highpass", 1}, {"bandpass", 2}, {"bandstop", 3}, {"notch", 0}};
    for (const auto& [name, value] : types)
        EXPECT_EQ(Designer::filterTypeFromName(name), value) << name;
    // Names and values design the same filter; values outside 1 to 4 are Butterworth.
    expectSameSections(Designer::design(5, 700, 2000, 1, 40, 48000, "bandstop", "cauer"),
                       Designer::design(5, 700, 2000, 1, 40, 48000, Designer::bandstop, Designer::elliptic), 0, "names");
    for (int unknown : {-1, 5, 99})
        expectSameSections(Designer::design(4, 700, 0, 1, 40, 48000, Designer::highpass,
                                            Designer::AnalogFilterTopology(unknown)),
                           Designer::design(4, 700, 0, 1, 40, 48000, Designer::highpass, Designer::butterworth), 0,
                           "topology " + std::to_string(unknown));
}

TEST(DigitalFilterDesigner, EdgeRules)
{
    // Edges are clamped to [10, 22050] Hz whatever the rate.
    expectSameSections(Designer::design(4, 5, 0, 1, 40, 48000, Designer::lowpass, Designer::butterworth),
                       Designer::design(4, 10, 0, 1, 40, 48000, Designer::lowpass, Designer::butterworth), 0, "5 Hz");
    expectSameSections(Designer::design(3, 30000, 0, 1, 40, 96000, Designer::highpass, Designer::chebyshevType1),
                       Designer::design(3, 22050, 0, 1, 40, 96000, Designer::highpass, Designer::chebyshevType1), 0,
                       "30 kHz");
    // Reversed band edges design the same band.
    for (int type : {Designer::bandpass, Designer::bandstop})
        expectSameSections(Designer::design(3, 4000, 500, 1, 40, 44100, Designer::FilterType(type), Designer::bessel),
                           Designer::design(3, 500, 4000, 1, 40, 44100, Designer::FilterType(type), Designer::bessel),
                           0, "reversed");
    // Equal edges: the upper prewarped edge times 1.01, i.e. the frequency whose tangent is
    // 1.01 times as large; within 1e-9, the rounding of going through atan and back.
    const double fs = 44100, f = 1000;
    const double upper = fs / std::numbers::pi * std::atan(1.01 * std::tan(std::numbers::pi * f / fs));
    expectSameSections(Designer::design(2, f, f, 1, 40, fs, Designer::bandpass, Designer::butterworth),
                       Designer::design(2, f, upper, 1, 40, fs, Designer::bandpass, Designer::butterworth), 1e-9,
                       "equal edges");
    // The elliptic attenuation is at least the ripple plus 1 dB.
    expectSameSections(Designer::design(4, 1000, 0, 2, 0.5, fs, Designer::lowpass, Designer::elliptic),
                       Designer::design(4, 1000, 0, 2, 3, fs, Designer::lowpass, Designer::elliptic), 0, "floor");
    // Order 0: one unit section.
    for (int order : {0, -3})
    {
        const auto unit = Designer::design(order, 1000, 0, 1, 40, fs, Designer::lowpass, Designer::elliptic);
        ASSERT_EQ(unit.size(), 1u);
        EXPECT_EQ(unit[0], ondo::BiquadCoefficients{});
    }
}

TEST(DigitalFilterDesigner, RefusalsAreClearErrors)
{
    const auto raises = [](const std::function<void()>& action, const std::string& message) {
        try
        {
            action();
            ADD_FAILURE() << "expected " << message;
        }
        catch (const ondo::Exception& e)
        {
            EXPECT_EQ(e.getMessage(), message);
        }
    };
    // 1.5 dB of attenuation cannot be told from 0.5 dB of ripple at order 30 in double precision.
    raises([] { Designer::design(30, 1000, 0, 0.5, 1.5, 44100, Designer::lowpass, Designer::elliptic); },
           "FilterOrderTooLarge");
    // No stored Bessel poles above order 25: they stay at 0, an integrator chain.
    raises([] { Designer::design(26, 1000, 0, 1, 40, 44100, Designer::lowpass, Designer::bessel); },
           "unstable polynomial");
    raises([] { Designer::design(2, 1000, 0, 1, 40, 0, Designer::lowpass, Designer::bessel); }, "invalid parameter");
    raises([] { Designer::design(2, 1000, 0, 1, 40, NAN, Designer::lowpass, Designer::bessel); }, "invalid parameter");
}

// Whatever the numbers, a design gives finite stable sections or raises the library's
// exception: edges at and beyond Nyquist, tiny rates, absurd ripples.
TEST(DigitalFilterDesigner, OddInputsGiveStableSectionsOrClearErrors)
{
    const double rates[] = {8000, 20, 1e6};
    const double edges[] = {0, 4000, 22050, 1e9, -5, NAN};
    const double ripples[] = {0, -3, 200, INFINITY};
    int designed = 0;
    for (double fs : rates)
        for (double f : edges)
            for (double ripple : ripples)
                for (int topology = 0; topology < 5; ++topology)
                    for (int type = 0; type < 4; ++type)
                    {
                        try
                        {
                            expectStableSections(Designer::design(3, f, 1000, ripple, ripple, fs, Designer::FilterType(type),
                                                                  Designer::AnalogFilterTopology(topology)),
                                                 "odd input");
                            ++designed;
                        }
                        catch (const ondo::Exception&)
                        {
                        }
                    }
    EXPECT_GT(designed, 0);
}

TEST(DigitalFilterDesigner, BesselTableStartsAsPrinted)
{
    const auto first = Designer::makePrototype(1, 0, 0, Designer::bessel);
    ASSERT_EQ(first.poles.size(), 1u);
    EXPECT_EQ(first.poles[0].re, -1.0);
    const auto third = Designer::makePrototype(3, 0, 0, Designer::bessel);
    ASSERT_EQ(third.poles.size(), 3u);
    EXPECT_EQ(third.poles[0].re, -0.9416000265332067);
    EXPECT_EQ(third.poles[1].re, -0.7456403858480767);
    EXPECT_NEAR(std::abs(third.poles[1].im), 0.7113666249728353, 1e-15);
    // The normalisation: the product of the pole moduli is 1 at every order (the asymptote of
    // the Butterworth), so the DC gain is 1.
    for (int order = 1; order <= 25; ++order)
    {
        double product = 1.0;
        for (const auto& p : Designer::makePrototype(order, 0, 0, Designer::bessel).poles)
            product *= std::hypot(p.re, p.im);
        EXPECT_NEAR(product, 1.0, 1e-12) << order;
    }
}
} // namespace
