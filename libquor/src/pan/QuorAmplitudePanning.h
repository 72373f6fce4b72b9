#pragma once

#include "dsp/TarvoDspSignalMatrix.h"
#include "pan/QuorPan.h"

namespace Quor
{
/// A panner that is a gain matrix: each source feeds each speaker with a gain that depends
/// on geometry only. Subclasses supply `computeGains`; new gains reach the audio thread as
/// pending values of the matrix, which glides to them in lockstep ramps.
class AmplitudePanning : public Pan
{
public:
    static constexpr float defaultInterpolationTimeMs = 30.0f;
    static constexpr float maximumInterpolationTimeMs = 200.0f;

    AmplitudePanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void processAdd(float** outputs, float** inputs, std::uint32_t numSamples) override;
    bool gatherTerms(ondo::MixTerms* perOutput, float** inputs, std::uint32_t numSamples) override
    {
        return matrix.gatherSteadyTerms(perOutput, inputs, numSamples);
    }
    bool termsUnchanged() const override { return matrix.steadyTermsUnchanged(); }
    void repeatTerms(std::uint32_t numSamples) override { matrix.repeatSteadyTerms(numSamples); }
    void clear() override { matrix.clear(); }
    void setSampleRate(float rate) override { matrix.changeSampleRate(rate); }
    void setBufferSize(std::uint32_t size) override { matrix.changeBufferSize(size); }

    /// Ramp time of the gains, clamped to [0, 200] ms.
    void setInterpolationTime(float ms) override;
    float getInterpolationTime() const override { return matrix.getRampTime(); }
    /// Spread in percent, clamped to [0, 100]; a change recomputes the source.
    void setSourceSpread(std::uint32_t source, float percent) override;
    bool isAmplitudePanning() const override { return true; }
    /// Control thread; real-time safe once built (spread included).
    void setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool immediate) override;

    /// Writes the gains of a source at `position` into `row` (numSpeakers floats).
    virtual void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) = 0;

    const ondo::SignalMatrix& getMatrix() const { return matrix; }
    float getSourceSpread(std::uint32_t source) const { return sourcesSpread[source]; }

protected:
    /// The gains of a source enlarged by `spread` percent: the panning of rotated copies of
    /// its direction summed, at the power of the unspread gains.
    void computeSpreadGains(const ondo::Point3& position, float* row, std::uint32_t source, float spread);

    ondo::SignalMatrix matrix;
    ondo::Vector<float> sourcesSpread;
    ondo::Vector<float> scratchGains;

private:
    void addDirection(const ondo::Point3& direction, float weight, float* row, std::uint32_t source);

    ondo::Vector<float> rowGains;
};
} // namespace Quor
