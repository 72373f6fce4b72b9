#include "pan/QuorHOA2DPanning.h"
#include "pan/QuorHOA3DPanning.h"
#include "pan/QuorNFCHOAPanning2D.h"
#include "pan/QuorNFCHOAPanning3D.h"

#include "AllocationCounter.h"
#include "PanTestSupport.h"
#include "common/TarvoDspException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <iostream>
#include <memory>
#include <numbers>

namespace
{
using namespace Quor::testing;
using Quor::Pan;

constexpr float rate = 48000.0f;
constexpr double c = 343.2; // m/s, the speed of sound the panners use

std::unique_ptr<Quor::NFCHOAPanning> makeNfc(std::uint32_t dimension, std::uint32_t channels, std::uint32_t sources = 1)
{
    std::unique_ptr<Quor::NFCHOAPanning> p;
    if (dimension == 2)
        p = std::make_unique<Quor::NFCHOAPanning2D>(sources, channels);
    else
        p = std::make_unique<Quor::NFCHOAPanning3D>(sources, channels);
    p->setup(rate, 64, true);
    return p;
}

/// The plain encoder's gains for `position`: what a source on the speaker ring must give.
std::vector<float> plainGains(std::uint32_t dimension, std::uint32_t channels, const ondo::Point3& position)
{
    std::unique_ptr<Quor::HOAPanning> p;
    if (dimension == 2)
        p = std::make_unique<Quor::HOA2DPanning>(1, channels);
    else
        p = std::make_unique<Quor::HOA3DPanning>(1, channels);
    p->setSourcePosition(0, position, true);
    return gainsOf(*p, 0);
}

/// The first `length` samples of every channel for `input` fed to source 0 in blocks of 64.
std::vector<std::vector<float>> render(Pan& panner, const std::vector<float>& input)
{
    const std::uint32_t channels = panner.getNumOutputs(), sources = panner.getNumInputs();
    std::vector<std::vector<float>> out(channels, std::vector<float>(input.size()));
    Block in(sources, 64), block(channels, 64);
    for (std::size_t start = 0; start < input.size(); start += 64)
    {
        std::copy_n(input.begin() + static_cast<std::ptrdiff_t>(start), 64, in.data[0].begin());
        panner.process(block.get(), in.get(), 64);
        for (std::uint32_t ch = 0; ch < channels; ++ch)
            std::copy_n(block.data[ch].begin(), 64, out[ch].begin() + static_cast<std::ptrdiff_t>(start));
    }
    return out;
}

std::vector<std::vector<float>> impulseResponse(Pan& panner, std::size_t length = 16384)
{
    std::vector<float> impulse(length);
    impulse[0] = 1.0f;
    return render(panner, impulse);
}

/// |H(f)| of an impulse response, by its discrete-time Fourier transform.
double magnitudeAt(const std::vector<float>& h, double hz)
{
    std::complex<double> sum = 0.0;
    const double w = 2.0 * std::numbers::pi * hz / rate;
    for (std::size_t n = 0; n < h.size(); ++n)
        sum += double(h[n]) * std::polar(1.0, -w * double(n));
    return std::abs(sum);
}

double dB(double x)
{
    return 20.0 * std::log10(x);
}

/// |h_l(x) / h_0(x)| of the spherical Hankel functions: the near-field term of order l.
double nearFieldTerm(unsigned l, double x)
{
    const std::complex<double> hl(std::sph_bessel(l, x), std::sph_neumann(l, x));
    const std::complex<double> h0(std::sph_bessel(0, x), std::sph_neumann(0, x));
    return std::abs(hl / h0);
}

/// The bilinear transform hears analog frequency (fs / pi) tan(pi f / fs) at digital f.
double analogOf(double hz)
{
    return rate / std::numbers::pi * std::tan(std::numbers::pi * hz / rate);
}

/// The ACN order of component k.
unsigned orderOfComponent(std::uint32_t dimension, std::uint32_t k)
{
    return dimension == 2 ? (k + 1) / 2 : static_cast<unsigned>(std::sqrt(double(k)));
}

std::vector<double> logFrequencies(double from, double to, int count)
{
    std::vector<double> f(count);
    for (int i = 0; i < count; ++i)
        f[i] = from * std::pow(to / from, double(i) / (count - 1));
    return f;
}

TEST(NFCHOAPanning, SourceOnTheSpeakerRingSoundsAsThePlainEncoder)
{
    struct Row
    {
        std::uint32_t dimension, channels;
        float radius;
    };
    const Row rows[] = {{2, 3, 1.0f}, {2, 7, 2.5f}, {2, 11, 0.6f}, {3, 4, 1.0f}, {3, 16, 2.5f}, {3, 25, 0.6f}};
    double worst = 0.0;
    for (const Row& row : rows)
    {
        auto panner = makeNfc(row.dimension, row.channels);
        panner->setNfcSpeakersRadius(row.radius);
        const ondo::Point3 position = ondo::Point3{0.6f, 0.64f, 0.48f} * row.radius; // a unit direction
        panner->setSourcePosition(0, position, true);
        const auto plain = plainGains(row.dimension, row.channels, position);
        const auto h = impulseResponse(*panner, 4096);
        for (std::uint32_t k = 0; k < row.channels; ++k)
            for (double f : logFrequencies(20.0, 20000.0, 30))
            {
                ASSERT_GT(std::abs(plain[k]), 0.01f) << "every component is heard from this direction";
                const double error = std::abs(dB(magnitudeAt(h[k], f) / std::abs(plain[k])));
                worst = std::max(worst, error);
                EXPECT_LT(error, 0.05) << row.dimension << "D, component " << k << ", " << f << " Hz";
            }
    }
    std::cout << "[ flat ] largest deviation " << worst << " dB\n";
}

// A source at r with the ring at R: order l is scaled by the ratio of the near-field terms
// |h_l(kr) / h_0(kr)| / |h_l(kR) / h_0(kR)|, written from the spherical Hankel functions,
// at the analog frequency the bilinear map puts at f; with compensation on, also by a
// Butterworth high-pass of order l, whose digital magnitude is 1 / sqrt(1 + (tan(pi fc /
// fs) / tan(pi f / fs))^(2 l)).
TEST(NFCHOAPanning, NearSourceScalesEachOrderByTheNearFieldRatio)
{
    struct Row
    {
        std::uint32_t dimension, channels;
        double source, radius;
        bool highPass;
    };
    const Row rows[] = {
        {2, 5, 0.3, 2.0, false}, {2, 5, 0.7, 2.0, false}, {3, 9, 1.4, 2.0, false},
        {3, 9, 0.3, 2.0, false}, {3, 9, 3.5, 2.0, false}, {3, 9, 0.7, 2.0, true},
    };
    double worst = 0.0;
    for (const Row& row : rows)
    {
        auto panner = makeNfc(row.dimension, row.channels);
        panner->setNfcSpeakersRadius(static_cast<float>(row.radius));
        panner->setNfcCompensation(row.highPass);
        const ondo::Point3 position = ondo::Point3{0.6f, 0.64f, 0.48f} * static_cast<float>(row.source);
        panner->setSourcePosition(0, position, true);
        const auto plain = plainGains(row.dimension, row.channels, position);
        const auto h = impulseResponse(*panner);
        for (std::uint32_t k = 1; k < row.channels; ++k)
        {
            const unsigned l = orderOfComponent(row.dimension, k);
            // The cut-off law of the compensation: k c / (2 pi r) with k linear in l.
            const double kl = row.dimension == 2 ? 0.9942727 * l + 0.4176 : 1.048 * l + 0.746;
            const double cutoff = kl * c / (2.0 * std::numbers::pi * row.source);
            for (double f : {20.0, 50.0, 100.0, 200.0, 500.0, 1000.0, 3000.0})
            {
                const double x = 2.0 * std::numbers::pi * analogOf(f) / c;
                double expected = nearFieldTerm(l, x * row.source) / nearFieldTerm(l, x * row.radius);
                if (row.highPass)
                    expected /= std::sqrt(1.0 + std::pow(std::tan(std::numbers::pi * cutoff / rate) /
                                                             std::tan(std::numbers::pi * f / rate),
                                                         2.0 * l));
                const double error = std::abs(dB(magnitudeAt(h[k], f) / std::abs(plain[k]) / expected));
                worst = std::max(worst, error);
                // Single-precision sections: their low end rests on differences of order 1e-5.
                EXPECT_LT(error, 0.05) << row.dimension << "D, r " << row.source << ", order " << l << ", " << f
                                       << " Hz, expected " << dB(expected) << " dB";
            }
        }
    }
    std::cout << "[ near field ] largest deviation " << worst << " dB\n";
}

TEST(NFCHOAPanning, DistancesBelowTwentyCentimetresAreTwentyCentimetres)
{
    std::vector<float> noise(1024);
    std::uint32_t seed = 7;
    for (float& v : noise)
        v = float((seed = seed * 1664525u + 1013904223u) >> 8) / float(1 << 24) - 0.5f;
    for (std::uint32_t dimension : {2u, 3u})
    {
        auto heard = [&](float x) {
            auto panner = makeNfc(dimension, 9);
            panner->setSourcePosition(0, {x, 0.0f, 0.0f}, true);
            return render(*panner, noise);
        };
        // The origin has the direction +x. The float 0.2f lies 3e-9 m above the floor.
        const auto origin = heard(0.0f), near = heard(0.05f), floor = heard(0.2f), beyond = heard(0.3f);
        EXPECT_EQ(near, origin) << dimension << "D";
        double floorError = 0.0, beyondError = 0.0;
        for (std::size_t ch = 0; ch < origin.size(); ++ch)
            for (std::size_t i = 0; i < origin[ch].size(); ++i)
            {
                floorError = std::max(floorError, double(std::abs(floor[ch][i] - origin[ch][i])));
                beyondError = std::max(beyondError, double(std::abs(beyond[ch][i] - origin[ch][i])));
            }
        EXPECT_LT(floorError, 1e-5) << dimension << "D";
        EXPECT_GT(beyondError, 0.01) << dimension << "D: distance must matter above the floor";
    }
}

TEST(NFCHOAPanning, OrderZeroPassesThroughAtAnyDistance)
{
    std::vector<float> noise(512);
    for (std::size_t i = 0; i < noise.size(); ++i)
        noise[i] = std::sin(0.37f * float(i * i % 101));
    for (std::uint32_t dimension : {2u, 3u})
        for (std::uint32_t channels : {1u, 9u})
        {
            auto panner = makeNfc(dimension, channels);
            panner->setNfcCompensation(true);
            panner->setSourcePosition(0, {0.0f, 0.25f, 0.1f}, true);
            // W has gain 1 in SN2D and SN3D.
            EXPECT_EQ(render(*panner, noise)[0], noise) << dimension << "D, " << channels << " channels";
        }
}

TEST(NFCHOAPanning, TheSameRadiusAgainRedesignsNothing)
{
    auto panner = makeNfc(3, 16, 2);
    panner->setNfcCompensation(true);
    panner->setSourcePosition(1, {0.3f, 0.2f, 0.0f}, false);
    panner->setNfcSpeakersRadius(1.5f);
    std::vector<float> silence(64 * 40);
    render(*panner, silence); // every fade ends
    auto pending = [&](bool highPass) {
        int count = 0;
        for (std::uint32_t s = 0; s < 2; ++s)
            for (std::uint32_t l = 1; l <= 3; ++l)
                count += highPass ? panner->getVoice(s).getHighPassBank().getHighPass(l).getCascade().isChangePending()
                                  : panner->getVoice(s).getFilterBank().getFilter(l).isChangePending();
        return count;
    };
    ASSERT_EQ(pending(false) + pending(true), 0);
    panner->setNfcSpeakersRadius(1.5f);
    EXPECT_EQ(pending(false) + pending(true), 0);
    panner->setNfcSpeakersRadius(1.6f);
    EXPECT_EQ(pending(false), 6) << "a new radius redesigns every order of every source";
    EXPECT_EQ(pending(true), 0) << "the high-passes follow the source alone";
}

TEST(NFCHOAPanning, MutedSourceFallsSilentAndReturnsWithoutItsOldTail)
{
    for (std::uint32_t dimension : {2u, 3u})
    {
        auto panner = makeNfc(dimension, 9);
        panner->setSourcePosition(0, ondo::Point3{0.6f, 0.64f, 0.48f} * 0.25f, true);
        std::vector<float> loud(64 * 20, 0.5f);
        std::vector<float> silence(64 * 4);
        const auto playing = render(*panner, loud);
        for (const auto& channel : playing)
            ASSERT_NE(channel.back(), 0.0f);
        panner->setSourceMute(0, true);
        for (const auto& channel : render(*panner, loud))
            EXPECT_TRUE(std::all_of(channel.begin(), channel.end(), [](float v) { return v == 0.0f; })) << "muted";
        panner->setSourceMute(0, false);
        for (const auto& channel : render(*panner, silence))
            EXPECT_TRUE(std::all_of(channel.begin(), channel.end(), [](float v) { return v == 0.0f; }))
                << "the filters held the loud block";
    }
}

TEST(NFCHOAPanning, NothingAllocatesInProcessWhileSourcesMove)
{
    for (std::uint32_t dimension : {2u, 3u})
    {
        auto panner = makeNfc(dimension, 9, 3);
        panner->setNfcCompensation(true);
        Block in(3, 64, 0.25f), out(9, 64);
        std::size_t allocations = 0;
        for (int b = 0; b < 200; ++b)
        {
            for (std::uint32_t s = 0; s < 3; ++s)
                panner->setSourcePosition(s, {0.1f + 0.02f * float(b % 90), 1.0f - 0.5f * float(s), 0.1f}, b % 50 == 0);
            tarvo::testing::AllocationScope scope;
            panner->process(out.get(), in.get(), 64);
            panner->processAdd(out.get(), in.get(), 64);
            allocations += scope.count();
        }
        EXPECT_EQ(allocations, 0u) << dimension << "D";
        for (const auto& channel : out.data)
            for (float v : channel)
                ASSERT_TRUE(std::isfinite(v));
    }
}

// At 8 kHz the high-pass of order 14 for a source at 0.2 m would sit at 4.1 kHz, past Nyquist.
TEST(NFCHOAPanning, CloseSourceAtALowRateKeepsEveryHighPassBelowNyquist)
{
    Quor::NFCHOAPanning3D panner(1, 225);
    panner.setup(8000.0f, 64, true);
    panner.setNfcCompensation(true);
    EXPECT_NO_THROW(panner.setSourcePosition(0, {0.0f, 0.1f, 0.0f}, false));
    Block in(1, 64), out(225, 64);
    in.data[0][0] = 1.0f;
    double peak = 0.0;
    for (int b = 0; b < 20; ++b)
    {
        panner.process(out.get(), in.get(), 64);
        in.data[0][0] = 0.0f;
        for (const auto& channel : out.data)
            for (float v : channel)
                peak = std::max(peak, double(std::abs(v)));
    }
    EXPECT_TRUE(std::isfinite(peak)) << peak;
}

TEST(NFCHOAPanning, FactoryBuildsBothFamiliesWhichDescribeThemselves)
{
    const auto two = Pan::create(2, 5, Pan::NfcHoa2D, Pan::Direct);
    const auto three = Pan::create(2, 9, Pan::NfcHoa3D, Pan::Direct);
    ASSERT_NE(dynamic_cast<Quor::NFCHOAPanning2D*>(two.get()), nullptr);
    ASSERT_NE(dynamic_cast<Quor::NFCHOAPanning3D*>(three.get()), nullptr);
    EXPECT_TRUE(two->is2D());
    EXPECT_FALSE(three->is2D());
    EXPECT_EQ(Pan::create(2, 4, Pan::NfcHoa2D, Pan::Direct)->getType(), Pan::Null);
    EXPECT_EQ(Pan::create(2, 8, Pan::NfcHoa3D, Pan::Direct)->getType(), Pan::Null);
    EXPECT_EQ(three->getOutletName(3), "output #4 : Y(1,1)");
    EXPECT_THROW(three->setAmbisonicNormalization(ondo::Ambisonics::SN2D), ondo::Exception);
    EXPECT_EQ(three->getAmbisonicNormalization(), ondo::Ambisonics::SN3D);
    three->setNfcCompensation(true);
    three->setNfcSpeakersRadius(2.5f);
    three->setComputationMode("fast");
    Quor::StringArray lines;
    three->getInfos(lines);
    const Quor::StringArray expected = {"panning type : nfchoa3d", "panning subtype : direct", "order : 2",
                                        "encoding norm : SN3D",     "nfc compensation : true",  "nfc high pass : true",
                                        "nfc speakers radius : 2.5 m", "computation mode : fast"};
    EXPECT_EQ(lines, expected);
}
} // namespace
