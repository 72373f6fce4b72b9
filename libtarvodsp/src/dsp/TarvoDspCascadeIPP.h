#pragma once

#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspBiquadCoefficients.h"
#include "dsp/TarvoDspBiquadSections.h"
#include "dsp/TarvoDspFilter.h"

#include <memory>

namespace ondo
{
/// A chain of second-order sections run sample by sample through the whole chain.
/// Without sections it passes the signal through.
class CascadeIPP : public Filter
{
public:
    /// `numSections` unit sections. Control thread; allocates.
    explicit CascadeIPP(int numSections = 1);

    /// Audio thread; real-time safe.
    void filter(float* out, const float* in, int numSamples) override;
    /// Six values a section (b0 b1 b2 a0 a1 a2). Real-time safe.
    void setCoefficients(const float* values) override;
    /// Takes as many sections as this cascade has; the delay line stays. Real-time safe.
    void setCoefficients(const CascadeCoefficients& newSections);
    void copyStateFrom(const Filter&) override { clear(); }
    int getNumCoefficients() const override { return 6 * getNumSections(); }
    void clear() override { state->clear(); }
    void setBufferSize(std::uint32_t size) override { scratch.resize(size); }

    /// "/cascades" with five numbers a section for every section this cascade has replaces
    /// them; any other count is dropped without a report (the message still counts as
    /// understood), as the section count never changes here. Thread of the caller.
    bool processOscMessage(const OSCMessage& message, std::int32_t& context) override;
    /// The "/dsp" state, then "/cascades" with five normalized numbers a section.
    OSCBundle getState() const override;
    OscDocumentation getDocumentation() const override;
    /// True for "/cascades" followed by one or more numbers and nothing else. Real-time safe.
    static bool isCascadesMessage(const OSCMessage& message);
    /// The "/cascades" message of `sections`. Allocates.
    static OSCMessage cascadesState(const CascadeCoefficients& sections);

    /// New memory for `n` sections, all installed from `sections`, then cleared.
    /// Control thread; allocates.
    void setNumSections(int n);
    int getNumSections() const { return static_cast<int>(sections.size()); }
    const CascadeCoefficients& getSections() const { return sections; }

private:
    void installAll();

    CascadeCoefficients sections;
    std::unique_ptr<BiquadSections> state;
    Vector<float> taps;
    Vector<float> scratch;
};
} // namespace ondo
