#pragma once

#include "dsp/TarvoDspCascadeIPP.h"
#include "dsp/TarvoDspFadedFilters.h"

namespace ondo
{
/// A crossfading cascade: six pending values a section.
class FadedCascade : public FadedFilters<CascadeIPP>
{
public:
    /// Control thread; allocates.
    explicit FadedCascade(int numSections = 1, Crossfade::Type type = Crossfade::linear)
        : FadedFilters<CascadeIPP>(type, 6 * static_cast<std::size_t>(std::max(numSections, 0)),
                                   std::max(numSections, 0))
    {
    }

    using FadedFilters<CascadeIPP>::setCoefficients;
    /// Takes as many sections as the cascade has; nothing while it has none. Any thread
    /// without `immediately`; real-time safe.
    void setCoefficients(const CascadeCoefficients& sections, bool immediately)
    {
        const int n = getNumSections();
        if (n == 0)
            return;
        setPending(
            [&](float* slot) {
                for (int i = 0; i < n; ++i)
                    (i < static_cast<int>(sections.size()) ? sections[i] : BiquadCoefficients{}).toFloats(slot + 6 * i);
            },
            immediately);
    }

    /// Both instances and the pending group follow (zeroed when the size changes).
    /// Control thread, between blocks; allocates.
    void setNumSections(int n)
    {
        n = std::max(n, 0);
        filterA.setNumSections(n);
        filterB.setNumSections(n);
        resizePending(6 * static_cast<std::size_t>(n));
    }
    int getNumSections() const { return filterA.getNumSections(); }
};
} // namespace ondo
