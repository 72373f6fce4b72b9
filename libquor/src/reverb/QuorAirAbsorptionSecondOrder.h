#pragma once

#include "common/TarvoDspRelaxedAtomic.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspFadedHLShelf.h"

#include <cmath>

namespace Quor
{
/// The loss of high frequencies along a path through air, as one three-band shelf: the
/// loss grows in proportion to the distance and with the square of the frequency.
class AirAbsorptionSecondOrder : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    static constexpr float defaultHighFrequency = 10000.0f; // Hz
    /// Three decades of loss (in dB, by the square law) below the high frequency.
    static inline const float defaultLowFrequency = defaultHighFrequency / std::sqrt(1000.0f);
    static constexpr float maximumDistance = 100.0f; // m
    /// dB lost per metre and per kHz squared, over a hundred.
    static constexpr float coefficient = -0.00002f;

    /// Control thread; allocates.
    AirAbsorptionSecondOrder();

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// The shelf takes the rate; the cutoff is clamped again for it and handed over.
    void setSampleRate(float rate) override;
    void setBufferSize(std::uint32_t size) override { filter.changeBufferSize(size); }
    void clear() override { filter.clear(); }

    /// Metres, as given (negative included); `update` takes the absolute value within
    /// 0..100 m. Any thread without `immediate`; real-time safe.
    void setDistance(float metres, bool immediate);
    /// `fh` clamped to 0..rate/sqrt(10); `fl` three decades of loss below. Any thread
    /// without `immediate`; real-time safe.
    void setCutoff(float hertz, bool immediate);
    /// Recomputes the band gains from distance and cutoff and hands them to the shelf.
    void update(bool immediate);

    float getCutoff() const { return highFrequency; }
    float getDistance() const { return distance; }
    /// The shelf record as last computed.
    ondo::HLShelfParameters getParameters() const { return filter.getParameters(); }
    ondo::FadedHLShelf& getShelf() { return filter; }

private:
    ondo::FadedHLShelf filter;
    ondo::RelaxedAtomic<float> highFrequency = defaultHighFrequency;
    ondo::RelaxedAtomic<float> lowFrequency = defaultLowFrequency;
    ondo::RelaxedAtomic<float> distance = 0.0f;
};
} // namespace Quor
