#pragma once

#include "dsp/TarvoDspStaticSignalMatrix.h"
#include "pan/QuorPan.h"

namespace Quor
{
/// Spreads decorrelated channels evenly over the speakers, whatever the positions: a fixed
/// mix through a 4 by 4 anti-diagonal, each speaker fed at unit power.
class DiffusePanning : public Pan
{
public:
    /// Builds the mix from the counts. Control thread; allocates.
    DiffusePanning(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void processAdd(float** outputs, float** inputs, std::uint32_t numSamples) override;
    bool gatherTerms(ondo::MixTerms* perOutput, float** inputs, std::uint32_t) override
    {
        matrix.gatherTerms(perOutput, inputs);
        return true;
    }
    bool termsUnchanged() const override { return matrix.termsUnchanged(); }
    /// Positions don't matter to a diffuse field: stored only.
    void setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool immediate) override;

    const ondo::StaticSignalMatrix& getMatrix() const { return matrix; }

    /// The speaker order of the mix for `numSpeakers`: entry i for speaker or row i.
    static std::uint32_t permutation(std::uint32_t numSpeakers, std::uint32_t i);

private:
    ondo::StaticSignalMatrix matrix;
};
} // namespace Quor
