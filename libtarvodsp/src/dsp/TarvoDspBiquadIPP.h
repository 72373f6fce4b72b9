#pragma once

#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspBiquadCoefficients.h"
#include "dsp/TarvoDspBiquadSections.h"
#include "dsp/TarvoDspFilter.h"

#include <memory>

namespace ondo
{
/// One second-order section, coefficients in double, filtering in single precision
/// (transposed direct form II). A section without memory runs as a plain gain.
class BiquadIPP : public Filter
{
public:
    /// Control thread; allocates.
    BiquadIPP();

    /// Audio thread; real-time safe.
    void filter(float* out, const float* in, int numSamples) override;
    /// b0 b1 b2 a0 a1 a2. Audio thread or before audio; real-time safe.
    void setCoefficients(const float* values) override;
    /// Stores the section normalized and installs it with the present delay line, so that
    /// a change between two blocks does not click. Real-time safe.
    void setCoefficients(const BiquadCoefficients& newCoefficients);
    void copyStateFrom(const Filter&) override { clear(); }
    int getNumCoefficients() const override { return 6; }
    void clear() override { state->clear(); }
    /// Control thread; allocates.
    void setBufferSize(std::uint32_t size) override { scratch.resize(size); }

    const BiquadCoefficients& getCoefficients() const { return coefficients; }
    bool isGainOnlySection() const { return isGainOnly; }
    /// A gain of exactly 1 and no memory: a block leaves every sample as it is.
    bool isTransparent() const { return isGainOnly && taps[0] == 1.0f; }
    /// The block of a transparent section whose output is its input: the samples stay where
    /// they are, and the section's memory follows the rule of `filter`. Audio thread;
    /// real-time safe.
    void passBlock()
    {
        if (!memoryIsSilent)
            state->setDelayLine(nullptr);
        memoryIsSilent = true;
    }
    /// The taps in force, six floats (a0 = 1).
    const float* getTaps() const { return taps.data(); }
    /// What the recursion runs on, five floats (b0 c1 c2 a1 a2): for the side-by-side
    /// kernel of several channels. Real-time safe.
    const float* getRecursionTaps() const { return state->getRecursionTaps(); }
    BiquadSections& getSections()
    {
        memoryIsSilent = false;
        return *state;
    }
    /// The section's own delay line (z0, z1), read and written in place by the side-by-side
    /// kernel. Audio thread; real-time safe.
    float* getDelayLineInPlace()
    {
        memoryIsSilent = false;
        return state->getDelayLineInPlace();
    }

private:
    BiquadCoefficients coefficients;
    std::unique_ptr<BiquadSections> state;
    Vector<float> taps;
    Vector<float> scratch;
    bool isGainOnly = true;
    /// The delay line is known to hold zeros: a plain gain leaves it so, block after block.
    bool memoryIsSilent = false;
};
} // namespace ondo
