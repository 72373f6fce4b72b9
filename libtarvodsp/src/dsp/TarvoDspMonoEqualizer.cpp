#include "dsp/TarvoDspMonoEqualizer.h"

#include <algorithm>
#include <cstring>

namespace ondo
{
MonoEqualizer::MonoEqualizer(int numBands)
    : AudioProcessorWithOscInAudioInterrupt(1, 1), cascade(std::max(numBands, 0)),
      coefficients(static_cast<std::size_t>(std::max(numBands, 0)))
{
    const int n = std::max(numBands, 0);
    bands.resize(static_cast<std::size_t>(n));
    for (int b = 0; b < n; ++b)
        bands[static_cast<std::size_t>(b)] = new BiquadCookbook(FilterShape::off);
    cascade.setCoefficients(coefficients, true);
    setSampleRate(defaultSampleRate);
    for (int b = 0; b < n; ++b)
    {
        setFilterType(b, FilterShape::off, true);
        setFrequency(b, 1000.0, true);
        setQ(b, 1.0, true);
        setGain(b, 0.0, true);
    }
}

void MonoEqualizer::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (isInletActive(0) && isOutletConnected(0))
        cascade.filterBlock(outputs[0], inputs[0], numSamples, false);
    else
        std::memset(outputs[0], 0, numSamples * sizeof(float));
}

void MonoEqualizer::setSampleRate(float rate)
{
    for (BiquadCookbook* band : bands)
        if (band->getSampleRate() != rate)
            band->setSampleRate(rate);
    cascade.changeSampleRate(clampSampleRate(rate));
    pushBands(false);
}

template <typename Change>
void MonoEqualizer::changeBand(int band, bool immediately, Change&& change)
{
    if (band < 0 || band >= getNumBands())
        return;
    change(*bands[static_cast<std::size_t>(band)]);
    pushBands(immediately);
}

void MonoEqualizer::setFilterType(int band, FilterShape type, bool immediately)
{
    changeBand(band, immediately, [&](BiquadCookbook& b) { b.setType(type); });
}

void MonoEqualizer::setFrequency(int band, double hertz, bool immediately)
{
    changeBand(band, immediately, [&](BiquadCookbook& b) { b.setFrequency(hertz); });
}

void MonoEqualizer::setQ(int band, double q, bool immediately)
{
    changeBand(band, immediately, [&](BiquadCookbook& b) { b.setQ(q); });
}

void MonoEqualizer::setGain(int band, double dB, bool immediately)
{
    changeBand(band, immediately, [&](BiquadCookbook& b) { b.setGain(dB); });
}

void MonoEqualizer::setNumBands(int n)
{
    n = std::max(n, 0);
    const int old = getNumBands();
    if (n < old)
        bands.deletePointees(static_cast<std::size_t>(n));
    bands.resize(static_cast<std::size_t>(n));
    for (int b = old; b < n; ++b)
    {
        bands[static_cast<std::size_t>(b)] = new BiquadCookbook(FilterShape::off);
        bands[static_cast<std::size_t>(b)]->setSampleRate(sampleRate);
    }
    coefficients.resize(static_cast<std::size_t>(n));
    cascade.setNumSections(n);
}

void MonoEqualizer::pushBands(bool immediately)
{
    for (std::size_t b = 0; b < bands.size(); ++b)
        coefficients.setSection(b, bands[b]->getCoefficients());
    cascade.setCoefficients(coefficients, immediately);
}
} // namespace ondo
