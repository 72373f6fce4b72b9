#pragma once

#include "WavFile.h"

#include <string>
#include <vector>

namespace tarvo::render
{
/// What a listener would first ask of a rendered response, per output channel.
struct ChannelSummary
{
    double peakDb = 0.0;   ///< largest magnitude, dB full scale
    double energyDb = 0.0; ///< sum of squares, dB
    /// T60 in seconds per octave band; 0 where the band never decays by 25 dB.
    std::vector<double> decayTimes;
};

struct ResponseSummary
{
    std::vector<double> bandCentres; ///< Hz
    std::vector<ChannelSummary> channels;
};

/// Peak, energy and octave-band decay times of every channel, for the bands from `lowest` to
/// `highest` Hz that lie below the Nyquist frequency. Offline; allocates.
ResponseSummary summarizeResponse(const Audio& audio, double lowest = 125.0, double highest = 8000.0);

/// The summary as a table, one speaker a row.
std::string formatSummary(const ResponseSummary& summary);
} // namespace tarvo::render
