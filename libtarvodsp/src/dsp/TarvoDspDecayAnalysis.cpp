#include "dsp/TarvoDspDecayAnalysis.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ondo
{
namespace
{
/// A band-pass biquad of 0 dB peak gain (bilinear transform of s / (s^2 + s/Q + 1)), run
/// in direct form I in double over `x`, forward or backward.
void bandPass(std::vector<double>& x, double sampleRate, double centre, double q, bool backward)
{
    const double w = 2.0 * std::numbers::pi * centre / sampleRate;
    const double alpha = std::sin(w) / (2.0 * q);
    const double a0 = 1.0 + alpha;
    const double b0 = alpha / a0;
    const double b2 = -alpha / a0;
    const double a1 = -2.0 * std::cos(w) / a0;
    const double a2 = (1.0 - alpha) / a0;
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
    const auto step = [&](double& v) {
        const double y = b0 * v + b2 * x2 - a1 * y1 - a2 * y2;
        x2 = x1;
        x1 = v;
        y2 = y1;
        y1 = y;
        v = y;
    };
    if (backward)
        std::for_each(x.rbegin(), x.rend(), step);
    else
        std::for_each(x.begin(), x.end(), step);
}
} // namespace

std::vector<double> DecayAnalysis::octaveCentres(double lowest, double highest)
{
    std::vector<double> centres;
    for (int k = -6; k <= 5; ++k)
    {
        const double centre = 1000.0 * std::pow(2.0, k);
        if (centre >= lowest * 0.99 && centre <= highest * 1.01)
            centres.push_back(centre);
    }
    return centres;
}

std::vector<double> DecayAnalysis::octaveBand(const float* signal, std::size_t n, double sampleRate, double centre)
{
    std::vector<double> band(signal, signal + n);
    const double q = std::numbers::sqrt2; // one octave between the -3 dB points
    for (bool backward : {false, true})
        for (int section = 0; section < 2; ++section)
            bandPass(band, sampleRate, centre, q, backward);
    return band;
}

std::vector<double> DecayAnalysis::energyDecayCurve(const std::vector<double>& signal)
{
    std::vector<double> curve(signal.size());
    double energy = 0.0;
    for (std::size_t i = signal.size(); i-- > 0;)
    {
        energy += signal[i] * signal[i];
        curve[i] = energy;
    }
    const double total = curve.empty() ? 0.0 : curve.front();
    for (double& e : curve)
        e = (total > 0.0 && e > 0.0) ? 10.0 * std::log10(e / total) : -400.0;
    return curve;
}

double DecayAnalysis::decayTime(const std::vector<double>& curveDb, double sampleRate, double startDb, double endDb)
{
    const auto first = std::find_if(curveDb.begin(), curveDb.end(), [&](double v) { return v <= startDb; });
    const auto last = std::find_if(first, curveDb.end(), [&](double v) { return v <= endDb; });
    if (first == curveDb.end() || last == curveDb.end() || last - first < 2)
        return 0.0;
    // Least-squares slope in dB per sample.
    double sumT = 0, sumY = 0, sumTT = 0, sumTY = 0;
    const double count = static_cast<double>(last - first);
    for (auto it = first; it != last; ++it)
    {
        const double t = static_cast<double>(it - curveDb.begin());
        sumT += t;
        sumY += *it;
        sumTT += t * t;
        sumTY += t * *it;
    }
    const double slope = (count * sumTY - sumT * sumY) / (count * sumTT - sumT * sumT);
    return slope < 0.0 ? -60.0 / slope / sampleRate : 0.0;
}

double DecayAnalysis::bandDecayTime(const float* signal, std::size_t n, double sampleRate, double centre,
                                    double startDb, double endDb)
{
    return decayTime(energyDecayCurve(octaveBand(signal, n, sampleRate, centre)), sampleRate, startDb, endDb);
}
} // namespace ondo
