#include "ResponseSummary.h"

#include "dsp/TarvoDspDecayAnalysis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tarvo::render
{
namespace
{
double toDb(double power)
{
    // A silent channel reads as -999 dB rather than minus infinity.
    return power > 0.0 ? 10.0 * std::log10(power) : -999.0;
}

std::string bandLabel(double centre)
{
    char text[16];
    if (centre >= 1000.0)
        std::snprintf(text, sizeof text, "%gk", centre / 1000.0);
    else
        std::snprintf(text, sizeof text, "%g", centre);
    return text;
}
} // namespace

ResponseMeter::ResponseMeter(std::uint32_t numChannels, double rate, std::size_t keep)
    : sampleRate(rate), keepFrames(keep), peaks(numChannels, 0.0), energies(numChannels, 0.0), nonFinite(numChannels, 0),
      kept(numChannels)
{
}

void ResponseMeter::add(const float* const* channels, std::uint32_t n)
{
    const std::size_t keepNow =
        numFrames >= keepFrames ? 0 : static_cast<std::size_t>(std::min<std::uint64_t>(n, keepFrames - numFrames));
    for (std::size_t c = 0; c < peaks.size(); ++c)
    {
        double peak = peaks[c], energy = energies[c];
        for (std::uint32_t i = 0; i < n; ++i)
        {
            const double v = channels[c][i];
            // A NaN would slip past the comparison below unseen: it is counted instead.
            if (!std::isfinite(v))
            {
                ++nonFinite[c];
                continue;
            }
            peak = std::max(peak, std::abs(v));
            energy += v * v;
        }
        peaks[c] = peak;
        energies[c] = energy;
        kept[c].insert(kept[c].end(), channels[c], channels[c] + keepNow);
    }
    numFrames += n;
}

ResponseSummary ResponseMeter::summary(double lowest, double highest) const
{
    ResponseSummary summary;
    summary.totalSeconds = double(numFrames) / sampleRate;
    if (keepFrames > 0)
    {
        summary.analysedSeconds = double(std::min<std::uint64_t>(numFrames, keepFrames)) / sampleRate;
        // A band is measured only when its upper edge lies below the Nyquist frequency.
        for (double centre : ondo::DecayAnalysis::octaveCentres(lowest, highest))
            if (centre * std::sqrt(2.0) < 0.5 * sampleRate)
                summary.bandCentres.push_back(centre);
    }
    for (std::size_t c = 0; c < peaks.size(); ++c)
    {
        ChannelSummary row;
        row.peakDb = toDb(peaks[c] * peaks[c]);
        row.energyDb = toDb(energies[c]);
        row.nonFiniteSamples = nonFinite[c];
        for (double centre : summary.bandCentres)
            row.decayTimes.push_back(
                ondo::DecayAnalysis::bandDecayTime(kept[c].data(), kept[c].size(), sampleRate, centre));
        summary.channels.push_back(std::move(row));
    }
    return summary;
}

ResponseSummary summarizeResponse(const Audio& audio, double lowest, double highest)
{
    ResponseMeter meter(static_cast<std::uint32_t>(audio.channels.size()), audio.sampleRate, audio.numFrames());
    std::vector<const float*> channels;
    for (const auto& channel : audio.channels)
        channels.push_back(channel.data());
    meter.add(channels.data(), static_cast<std::uint32_t>(audio.numFrames()));
    return meter.summary(lowest, highest);
}

std::string formatSummary(const ResponseSummary& summary)
{
    const bool decay = !summary.bandCentres.empty();
    std::string text = decay ? "speaker  peak dBFS  energy dB   T60 (s) in octave bands:" : "speaker  peak dBFS  energy dB";
    char cell[512];
    for (double centre : summary.bandCentres)
    {
        std::snprintf(cell, sizeof cell, " %6s", bandLabel(centre).c_str());
        text += cell;
    }
    text += "\n";
    double loudest = -999.0;
    std::uint64_t nonFinite = 0;
    for (std::size_t c = 0; c < summary.channels.size(); ++c)
    {
        const ChannelSummary& row = summary.channels[c];
        loudest = std::max(loudest, row.peakDb);
        nonFinite += row.nonFiniteSamples;
        std::snprintf(cell, sizeof cell, "%7zu  %9.2f  %9.2f", c + 1, row.peakDb, row.energyDb);
        text += cell;
        if (decay)
            text += std::string(31, ' ');
        for (double t : row.decayTimes)
        {
            if (t > 0.0)
                std::snprintf(cell, sizeof cell, " %6.2f", t);
            else
                std::snprintf(cell, sizeof cell, " %6s", "-");
            text += cell;
        }
        text += "\n";
    }
    if (decay && summary.analysedSeconds < summary.totalSeconds)
    {
        std::snprintf(cell, sizeof cell, "decay times from the first %.1f s of %.1f s\n", summary.analysedSeconds,
                      summary.totalSeconds);
        text += cell;
    }
    if (nonFinite > 0)
        text += "warning: " + std::to_string(nonFinite) + " output samples are NaN or infinite; the figures above leave them out\n";
    if (loudest > 0.0)
    {
        std::snprintf(cell, sizeof cell, "the response peaks at %+.2f dBFS, above full scale: the float file keeps it, "
                                         "but lower it before playing or converting to integer samples",
                      loudest);
        text += cell;
        text += summary.impulseOnEverySource ? " (the impulse went to every source at once; --impulse-source N sends "
                                               "it to one)\n"
                                             : "\n";
    }
    return text;
}
} // namespace tarvo::render
