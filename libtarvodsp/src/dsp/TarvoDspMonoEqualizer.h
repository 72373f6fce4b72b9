#pragma once

#include "dsp/TarvoDspBiquadCookbook.h"
#include "dsp/TarvoDspFadedCascade.h"

namespace ondo
{
/// A parametric equalizer: one cookbook band a section of a crossfading cascade.
class MonoEqualizer : public AudioProcessorWithOscInAudioInterrupt
{
public:
    /// `numBands` bands, all `off`, at 44100 Hz. Control thread; allocates.
    explicit MonoEqualizer(int numBands = 1);
    ~MonoEqualizer() override { bands.deletePointees(); }

    /// The cascade's kernel. Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Redesigns every band at the new rate and hands the result over (not immediately).
    void setSampleRate(float rate) override;
    void setBufferSize(std::uint32_t size) override { cascade.changeBufferSize(size); }
    void clear() override { cascade.clear(); }

    /// Each sets one field of a band, redesigns it and hands all bands over; a band out of
    /// range is ignored. Any thread without `immediately`; real-time safe.
    void setFilterType(int band, FilterShape type, bool immediately);
    void setFrequency(int band, double hertz, bool immediately);
    void setQ(int band, double q, bool immediately);
    void setGain(int band, double dB, bool immediately);

    /// New bands are `off` at the processor's rate. Control thread, between blocks; allocates.
    void setNumBands(int n);
    int getNumBands() const { return static_cast<int>(bands.size()); }
    const BiquadCookbook& getBand(int band) const { return *bands[static_cast<std::size_t>(band)]; }
    FadedCascade& getCascade() { return cascade; }

private:
    /// Copies each band's design into its section and hands the list to the cascade.
    void pushBands(bool immediately);
    template <typename Change>
    void changeBand(int band, bool immediately, Change&& change);

    Vector<BiquadCookbook*> bands;
    FadedCascade cascade;
    CascadeCoefficients coefficients;
};
} // namespace ondo
