#pragma once

#include "dsp/TarvoDspBiquadCoefficients.h"
#include "dsp/TarvoDspHLShelfParameters.h"

namespace ondo
{
/// The shapes a cookbook section can take. 11 and above give the unit section.
enum class FilterShape : int
{
    hlshelf = 0,
    lowpass = 1,
    highpass = 2,
    bandpassPeak = 3,  ///< peak gain `gain`
    bandpassSkirt = 4, ///< peak gain `q` times `gain`
    notch = 5,
    allpass = 6,
    peak = 7,
    lowShelf = 8,
    highShelf = 9,
    gain = 10,
    off = 11,
};

/// Designs one biquad from a shape, a frequency (Hz), a quality (or a shelf slope) and a
/// gain (dB), after the audio-EQ cookbook; also the three-band shelf. Every change re-runs
/// the design. `a0` is left as designed. Any thread; real-time safe.
class BiquadCookbook
{
public:
    explicit BiquadCookbook(FilterShape type = FilterShape::off);

    void setSampleRate(double rate);
    void setFrequency(double hertz);
    void setQ(double quality);
    void setGain(double dB);
    void setType(FilterShape shape);
    void setShelf(const HLShelfParameters& parameters);

    double getSampleRate() const { return sampleRate; }
    double getFrequency() const { return frequency; }
    double getQ() const { return q; }
    double getGain() const { return gain; }
    FilterShape getType() const { return type; }
    const HLShelfParameters& getShelf() const { return shelf; }
    const BiquadCoefficients& getCoefficients() const { return coefficients; }

    /// |H| at `hertz`, from the products kept with the design.
    double getMagnitude(double hertz) const;
    double getMagnitudeDb(double hertz) const;

    /// Re-runs the design with the present fields.
    void design();

private:
    void updateProducts();

    double sampleRate = 44100.0;
    BiquadCoefficients coefficients;
    HLShelfParameters shelf;
    double frequency = 1000.0;
    double q = 1.0;
    double gain = 0.0;
    FilterShape type;
    double piOverSampleRate;
    double twoPiOverSampleRate;
    double numeratorProduct = 0.0;
    double denominatorProduct = 0.0;
    double numeratorSumSquared = 0.0;
    double numeratorCross = 0.0;
    double denominatorSumSquared = 0.0;
    double denominatorCross = 0.0;
};
} // namespace ondo
