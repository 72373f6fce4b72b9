#pragma once

// Independent references for filter tests: the magnitude evaluated from the transfer
// function on the unit circle, and the amplitude of a sine measured at a filter's output.

#include "dsp/TarvoDspBiquadCoefficients.h"

#include <cmath>
#include <complex>
#include <functional>
#include <numbers>
#include <vector>

namespace tarvo::testing
{
/// A repeatable uniform noise in [-1, 1), from a linear congruential generator.
inline std::vector<float> noise(std::size_t n, unsigned seed = 7)
{
    std::vector<float> v(n);
    for (auto& x : v)
    {
        seed = seed * 1664525u + 1013904223u;
        x = static_cast<float>(seed >> 8) / 8388608.0f - 1.0f;
    }
    return v;
}

/// |H(e^jw)| of one section at `hertz`, evaluated in double with complex arithmetic.
inline double magnitude(const ondo::BiquadCoefficients& c, double hertz, double sampleRate)
{
    const std::complex<double> z1 = std::polar(1.0, -2.0 * std::numbers::pi * hertz / sampleRate);
    const std::complex<double> z2 = z1 * z1;
    return std::abs((c.b0 + c.b1 * z1 + c.b2 * z2) / (c.a0 + c.a1 * z1 + c.a2 * z2));
}

inline double magnitudeDb(const ondo::BiquadCoefficients& c, double hertz, double sampleRate)
{
    return 20.0 * std::log10(magnitude(c, hertz, sampleRate));
}

/// Runs a unit sine of `hertz` through `run` (a block kernel out, in, n) for `settle`
/// samples, then measures the amplitude of the next `measure` samples by projecting onto
/// sine and cosine: exact for a steady sinusoid over whole periods.
inline double measuredGain(const std::function<void(float*, const float*, int)>& run, double hertz,
                           double sampleRate, int settle = 44100, int blockSize = 64)
{
    const double w = 2.0 * std::numbers::pi * hertz / sampleRate;
    const int periods = std::max(1, static_cast<int>(std::round(4096.0 * hertz / sampleRate)));
    const int measure = static_cast<int>(std::round(periods * sampleRate / hertz));
    const int total = settle + measure;
    std::vector<float> in(static_cast<std::size_t>(total)), out(in.size());
    for (int i = 0; i < total; ++i)
        in[static_cast<std::size_t>(i)] = static_cast<float>(std::sin(w * i));
    for (int start = 0; start < total; start += blockSize)
    {
        const int n = std::min(blockSize, total - start);
        run(out.data() + start, in.data() + start, n);
    }
    double s = 0.0, c = 0.0;
    for (int i = settle; i < total; ++i)
    {
        s += out[static_cast<std::size_t>(i)] * std::sin(w * i);
        c += out[static_cast<std::size_t>(i)] * std::cos(w * i);
    }
    return 2.0 * std::hypot(s, c) / measure;
}
} // namespace tarvo::testing
