#pragma once

#include "common/TarvoDspRelaxedAtomic.h"
#include "dsp/TarvoDspFadedBiquad.h"
#include "dsp/TarvoDspHLShelfParameters.h"

namespace ondo
{
/// The three-band shelf that crossfades to each new design.
class FadedHLShelf : public FadedBiquad
{
public:
    /// Parameters 0, 0, 0, 0, 250, 4000, not yet designed. Control thread; allocates.
    FadedHLShelf();

    /// Stores and designs at the present rate, then hands over the coefficients. Any thread
    /// without `immediately` (real-time safe); `immediately` belongs before audio starts.
    void setParameters(const HLShelfParameters& parameters, bool immediately);
    void setParameters(float G0, float Gl, float Gm, float Gh, float fl, float fh, bool immediately);
    /// The parameters last asked for.
    HLShelfParameters getParameters() const;

private:
    // Each field on its own, since two threads may set the shelf.
    RelaxedAtomic<float> parameters[6];
};
} // namespace ondo
