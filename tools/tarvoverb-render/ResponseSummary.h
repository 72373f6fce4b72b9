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
    /// NaN and infinite samples, which peak and energy leave out.
    std::uint64_t nonFiniteSamples = 0;
    /// T60 in seconds per octave band; 0 where the band never decays by 25 dB.
    std::vector<double> decayTimes;
};

struct ResponseSummary
{
    /// Hz; empty when no decay was measured (a recording, where it means nothing).
    std::vector<double> bandCentres;
    std::vector<ChannelSummary> channels;
    /// Seconds at the head of the response that the decay times come from.
    double analysedSeconds = 0.0;
    /// Seconds of the whole response.
    double totalSeconds = 0.0;
    /// True for an impulse that went to every source at once.
    bool impulseOnEverySource = false;
};

/// Measures a response as it streams past: peak and energy of every sample, and the decay
/// times of the first `keepFrames` frames of each channel (0: no decay times). Offline;
/// allocates at most `keepFrames` floats a channel.
class ResponseMeter
{
public:
    ResponseMeter(std::uint32_t numChannels, double sampleRate, std::size_t keepFrames);
    /// `n` more frames, one pointer a channel.
    void add(const float* const* channels, std::uint32_t n);
    /// Octave bands from `lowest` to `highest` Hz that lie below the Nyquist frequency.
    ResponseSummary summary(double lowest = 125.0, double highest = 8000.0) const;

private:
    double sampleRate;
    std::size_t keepFrames;
    std::uint64_t numFrames = 0;
    std::vector<double> peaks;
    std::vector<double> energies;
    std::vector<std::uint64_t> nonFinite;
    std::vector<std::vector<float>> kept;
};

/// Peak, energy and octave-band decay times of every channel of a response in memory.
ResponseSummary summarizeResponse(const Audio& audio, double lowest = 125.0, double highest = 8000.0);

/// The summary as a table, one speaker a row, with a warning when the response peaks above
/// full scale.
std::string formatSummary(const ResponseSummary& summary);
} // namespace tarvo::render
