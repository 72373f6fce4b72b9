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
        setNumSections(numSections);
    }

    using FadedFilters<CascadeIPP>::setCoefficients;
    /// Takes as many sections as the cascade has; nothing while it has none. Any thread
    /// without `immediately`; real-time safe.
    void setCoefficients(const CascadeCoefficients& sections, bool immediately)
    {
        if (request(sections, immediately) && immediately)
        {
            updateState();
            noteChange();
        }
    }

    /// As `setCoefficients`, but a request to skip the fade is left to the audio thread,
    /// which installs the sections at its next block: so it may come while audio runs. Any
    /// thread; real-time safe.
    void requestCoefficients(const CascadeCoefficients& sections, bool skipFade) { request(sections, skipFade); }

    /// "/cascades" with five numbers a section, any valid count: the section count follows
    /// (which allocates) and the new coefficients fade in; an invalid count is dropped
    /// without a report. "/bypass" and "/mute" b set the processor's flags. Thread of the
    /// caller.
    bool processOscMessage(const OSCMessage& message, std::int32_t& context) override
    {
        if (handleProcessorMessages(message, context))
            return true;
        if (CascadeIPP::isCascadesMessage(message))
        {
            CascadeCoefficients received;
            if (received.parseFromOsc(message, CascadeCoefficients::fivePerSection))
            {
                if (static_cast<int>(received.size()) != getNumSections())
                    setNumSections(static_cast<int>(received.size()));
                setCoefficients(received, false);
            }
        }
        else if (message.matches("/bypass") && message.matchesSingle('b'))
            setBypass(message.getBool(0));
        else if (message.matches("/mute") && message.matchesSingle('b'))
            setMute(message.getBool(0));
        else
            return false;
        return true;
    }
    /// The "/dsp" state, then "/cascades" of the sections fading in or in force.
    OSCBundle getState() const override
    {
        OSCBundle state = getProcessorState();
        CascadeCoefficients sections;
        sections.setFromFlat(requested.data(), requested.size(), CascadeCoefficients::sixPerSection);
        state.add(CascadeIPP::cascadesState(sections));
        return state;
    }
    OscDocumentation getDocumentation() const override
    {
        return {{"/cascades", "[number][number]...", "sets the filters coefficients"},
                {"/bypass", "[boolean]", "bypasses the filter"},
                {"/mute", "[boolean]", "mutes the filter"}};
    }

    /// Both instances and the pending group follow (zeroed when the size changes).
    /// Control thread, between blocks; allocates.
    void setNumSections(int n)
    {
        n = std::max(n, 0);
        filterA.setNumSections(n);
        filterB.setNumSections(n);
        resizePending(6 * static_cast<std::size_t>(n));
        requested.resize(6 * static_cast<std::size_t>(n));
        CascadeCoefficients units(static_cast<std::size_t>(n));
        for (int i = 0; i < n; ++i)
            units[static_cast<std::size_t>(i)].toFloats(requested.data() + 6 * i);
    }
    int getNumSections() const { return filterA.getNumSections(); }

private:
    /// Publishes the sections; false when the cascade has none.
    bool request(const CascadeCoefficients& sections, bool immediately)
    {
        const int n = getNumSections();
        if (n == 0)
            return false;
        for (int i = 0; i < n; ++i)
            (i < static_cast<int>(sections.size()) ? sections[i] : BiquadCoefficients{}).toFloats(requested.data() + 6 * i);
        pendingCoefficients.writeWith([&](float* slot) { std::copy(requested.begin(), requested.end(), slot); },
                                      immediately);
        noteChange();
        return true;
    }

    /// The sections last asked for, six values each: what the state reports.
    Vector<float> requested;
};
} // namespace ondo
