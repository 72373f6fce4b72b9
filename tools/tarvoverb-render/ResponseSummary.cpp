#include "ResponseSummary.h"

#include "dsp/TarvoDspDecayAnalysis.h"

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

ResponseSummary summarizeResponse(const Audio& audio, double lowest, double highest)
{
    ResponseSummary summary;
    // A band is measured only when its upper edge lies below the Nyquist frequency.
    for (double centre : ondo::DecayAnalysis::octaveCentres(lowest, highest))
        if (centre * std::sqrt(2.0) < 0.5 * audio.sampleRate)
            summary.bandCentres.push_back(centre);
    for (const std::vector<float>& channel : audio.channels)
    {
        ChannelSummary row;
        double peak = 0.0, energy = 0.0;
        for (float v : channel)
        {
            peak = std::max(peak, std::abs(double(v)));
            energy += double(v) * v;
        }
        row.peakDb = toDb(peak * peak);
        row.energyDb = toDb(energy);
        for (double centre : summary.bandCentres)
            row.decayTimes.push_back(
                ondo::DecayAnalysis::bandDecayTime(channel.data(), channel.size(), audio.sampleRate, centre));
        summary.channels.push_back(std::move(row));
    }
    return summary;
}

std::string formatSummary(const ResponseSummary& summary)
{
    std::string text = "speaker  peak dBFS  energy dB   T60 (s) in octave bands:";
    char cell[512];
    for (double centre : summary.bandCentres)
    {
        std::snprintf(cell, sizeof cell, " %6s", bandLabel(centre).c_str());
        text += cell;
    }
    text += "\n";
    for (std::size_t c = 0; c < summary.channels.size(); ++c)
    {
        const ChannelSummary& row = summary.channels[c];
        std::snprintf(cell, sizeof cell, "%7zu  %9.2f  %9.2f", c + 1, row.peakDb, row.energyDb);
        text += cell;
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
    return text;
}
} // namespace tarvo::render
