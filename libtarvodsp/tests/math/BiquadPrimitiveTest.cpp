#include "math/TarvoDspBiquadPrimitive.h"

#include "TestSignals.h"
#include "math/TarvoDspPrimitiveMemory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

using namespace ondo::primitives;

namespace
{
/// Owns the memory of a cascade state for a test.
struct Cascade
{
    explicit Cascade(int sections)
    {
        int size = 0;
        EXPECT_EQ(biquadGetStateSize(sections, &size), done);
        memory = allocateBytes(size);
    }
    ~Cascade() { freeMemory(memory); }
    std::uint8_t* memory = nullptr;
    BiquadState* handle = nullptr;
};

// Direct form I in double: an independent way of running the same difference equation.
std::vector<double> directFormOne(const std::vector<float>& taps, const std::vector<float>& x)
{
    std::vector<double> signal(x.begin(), x.end());
    for (std::size_t s = 0; s < taps.size() / 6; ++s)
    {
        const float* t = &taps[6 * s];
        double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
        for (double& v : signal)
        {
            const double y = (t[0] * v + t[1] * x1 + t[2] * x2 - t[4] * y1 - t[5] * y2) / t[3];
            x2 = x1;
            x1 = v;
            y2 = y1;
            y1 = y;
            v = y;
        }
    }
    return signal;
}

TEST(BiquadPrimitive, StateSizeRefusesNoSections)
{
    int size = 0;
    EXPECT_EQ(biquadGetStateSize(0, &size), badSectionCount);
}

TEST(BiquadPrimitive, CascadeMatchesDirectFormInDouble)
{
    // A resonant low-pass and a notch, with a0 not 1 to exercise the normalisation.
    const std::vector<float> taps = {0.2f, 0.4f, 0.2f, 2.0f, -1.2f, 0.8f, //
                                     1.0f, -1.6f, 1.0f, 1.0f, -1.5f, 0.9f};
    std::vector<float> x(300);
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<float>(std::sin(0.05 * i) + (i == 10 ? 1.0 : 0.0));
    Cascade c(2);
    ASSERT_EQ(biquadInit(&c.handle, taps.data(), 2, nullptr, c.memory), done);
    std::vector<float> y(x.size());
    // Two blocks of odd sizes, the second in place: state must carry across.
    biquadProcess(x.data(), y.data(), 101, c.handle);
    std::copy(x.begin() + 101, x.end(), y.begin() + 101);
    biquadProcess(y.data() + 101, y.data() + 101, 199, c.handle);
    const auto reference = directFormOne(taps, x);
    for (std::size_t i = 0; i < x.size(); ++i)
        EXPECT_NEAR(y[i], reference[i], 1e-4) << "at " << i;
}

// A low shelf merged with a high shelf has zeros next to its poles, so b1 and b2 nearly
// equal a1 b0 and a2 b0. At 192 kHz with the low corner at 20 or 250 Hz, a recursion that
// lets those products cancel rounds to about -100 and -111 dB below the signal; the
// primitive must stay below -115 dB on the same single-precision taps.
TEST(BiquadPrimitive, ShelfNearItsPolesKeepsRoundingNoiseLow)
{
    const double rate = 192000.0;
    for (double lowCorner : {20.0, 250.0})
    {
        // First-order shelves by the bilinear transform: -6 dB below lowCorner, -3 dB above 8 kHz.
        const auto shelf = [&](double f, double g, bool low, double (&b)[2], double (&a)[2]) {
            const double k = std::tan(std::numbers::pi * f / rate);
            const double s = std::sqrt(g);
            const double a0 = low ? k / s + 1.0 : s * k + 1.0;
            b[0] = (low ? k * s + 1.0 : s * k + g) / a0;
            b[1] = (low ? k * s - 1.0 : s * k - g) / a0;
            a[0] = 1.0;
            a[1] = (low ? k / s - 1.0 : s * k - 1.0) / a0;
        };
        double bl[2], al[2], bh[2], ah[2];
        shelf(lowCorner, std::pow(10.0, -6.0 / 20.0), true, bl, al);
        shelf(8000.0, std::pow(10.0, -3.0 / 20.0), false, bh, ah);
        const std::vector<float> taps = {static_cast<float>(bl[0] * bh[0]),
                                         static_cast<float>(bl[0] * bh[1] + bl[1] * bh[0]),
                                         static_cast<float>(bl[1] * bh[1]),
                                         1.0f,
                                         static_cast<float>(al[1] + ah[1]),
                                         static_cast<float>(al[1] * ah[1])};
        const std::vector<float> x = tarvo::testing::seededNoise(100000, 1);
        Cascade c(1);
        ASSERT_EQ(biquadInit(&c.handle, taps.data(), 1, nullptr, c.memory), done);
        std::vector<float> y(x.size());
        biquadProcess(x.data(), y.data(), static_cast<int>(x.size()), c.handle);
        const auto reference = directFormOne(taps, x);
        double error = 0.0, signal = 0.0;
        for (std::size_t i = 0; i < x.size(); ++i)
        {
            error += (y[i] - reference[i]) * (y[i] - reference[i]);
            signal += reference[i] * reference[i];
        }
        EXPECT_LT(10.0 * std::log10(error / signal), -115.0) << "low corner " << lowCorner << " Hz";
    }
}

TEST(BiquadPrimitive, ReinitialisationWithSameDelayLineContinuesSeamlessly)
{
    const std::vector<float> taps = {0.3f, 0.1f, 0.05f, 1.0f, -0.7f, 0.2f};
    std::vector<float> x(128);
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<float>(std::cos(0.3 * i));
    Cascade once(1), twice(1);
    biquadInit(&once.handle, taps.data(), 1, nullptr, once.memory);
    biquadInit(&twice.handle, taps.data(), 1, nullptr, twice.memory);
    std::vector<float> a(128), b(128);
    biquadProcess(x.data(), a.data(), 128, once.handle);
    biquadProcess(x.data(), b.data(), 64, twice.handle);
    float line[2];
    biquadGetDelayLine(twice.handle, line);
    biquadInit(&twice.handle, taps.data(), 1, line, twice.memory);
    biquadProcess(x.data() + 64, b.data() + 64, 64, twice.handle);
    EXPECT_EQ(a, b);
}

TEST(BiquadPrimitive, ZeroLeadingTapStopsAtThatSectionKeepingLaterOnes)
{
    const std::vector<float> first = {1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0};
    const std::vector<float> second = {2, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0};
    Cascade c(2);
    biquadInit(&c.handle, first.data(), 2, nullptr, c.memory);
    EXPECT_EQ(biquadInit(&c.handle, second.data(), 2, nullptr, c.memory), divisionByZeroInTaps);
    // Section 0 is new (gain 2), section 1 kept its unit taps: overall gain 2.
    float x[3] = {1, 1, 1};
    biquadProcess(x, x, 3, c.handle);
    EXPECT_EQ(x[0], 2.0f);
    EXPECT_EQ(x[2], 2.0f);
}

TEST(BiquadPrimitive, DelayLineCanBeZeroedAndRefusesForeignHandles)
{
    const std::vector<float> taps = {1, 0, 0, 1, -0.5f, 0};
    Cascade c(1);
    biquadInit(&c.handle, taps.data(), 1, nullptr, c.memory);
    float impulse[4] = {1, 0, 0, 0};
    biquadProcess(impulse, impulse, 4, c.handle);
    EXPECT_EQ(impulse[3], 0.125f);
    biquadSetDelayLine(c.handle, nullptr);
    float silence[2] = {0, 0};
    biquadProcess(silence, silence, 2, c.handle);
    EXPECT_EQ(silence[1], 0.0f);

    std::vector<std::uint64_t> junk(8, 0);
    EXPECT_EQ(biquadProcess(silence, silence, 2, reinterpret_cast<BiquadState*>(junk.data())), wrongStateKind);
}

TEST(PrimitiveMemory, RefusesSillySizes)
{
    EXPECT_EQ(allocateBytes(0), nullptr);
    EXPECT_EQ(allocateFloats(-3), nullptr);
    EXPECT_EQ(allocateFloats(1 << 30), nullptr) << "4 GiB is above 2^31 - 1 bytes";
    float* p = allocateFloats(16);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 32, 0u);
    freeMemory(p);
    freeMemory(nullptr);
}
} // namespace
