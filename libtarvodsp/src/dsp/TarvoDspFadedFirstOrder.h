#pragma once

#include "dsp/TarvoDspFadedFilters.h"
#include "dsp/TarvoDspFirstOrder.h"

namespace ondo
{
/// A crossfading first-order section: three pending values, b0 b1 a1.
class FadedFirstOrder : public FadedFilters<FirstOrder>
{
public:
    /// Control thread; allocates.
    explicit FadedFirstOrder(Crossfade::Type type = Crossfade::linear) : FadedFilters<FirstOrder>(type, 3) {}
};
} // namespace ondo
