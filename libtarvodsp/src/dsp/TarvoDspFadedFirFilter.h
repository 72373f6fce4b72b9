#pragma once

#include "dsp/TarvoDspFadedFilters.h"
#include "dsp/TarvoDspFir.h"

namespace ondo
{
/// A crossfading FIR. The incoming instance takes the other's history instead of starting
/// from silence, so it needs no warm-up to sound right.
class FadedFirFilter : public FadedFilters<Fir>
{
public:
    /// Two FIRs of order `numTaps` (`numTaps` + 1 coefficients). Control thread; allocates.
    explicit FadedFirFilter(int numTaps, Crossfade::Type type = Crossfade::linear)
        : FadedFilters<Fir>(type, static_cast<std::size_t>(std::max(numTaps, 0)) + 1, std::max(numTaps, 0), Fir::timeDomain),
          numTaps(std::max(numTaps, 0))
    {
    }

    /// Both instances and the pending group follow. Control thread; allocates.
    void setOrder(int order)
    {
        numTaps = std::max(order, 0);
        filterA.setNumCoefficients(numTaps + 1);
        filterB.setNumCoefficients(numTaps + 1);
        resizePending(static_cast<std::size_t>(numTaps) + 1);
    }
    int getOrder() const { return numTaps; }
    /// Applied to both instances. Control thread.
    void setMethod(Fir::Method method)
    {
        filterA.setMethod(method);
        filterB.setMethod(method);
    }

protected:
    void prepareIncoming(Fir& incoming, Fir& playing) override { incoming.copyStateFrom(playing); }

private:
    int numTaps;
};
} // namespace ondo
