#include "dsp/TarvoDspCascadeIPP.h"

#include "math/TarvoDspVectorPrimitives.h"
#include "osc/TarvoDspOscMessage.h"

#include <algorithm>

namespace ondo
{
CascadeIPP::CascadeIPP(int numSections)
    : state(std::make_unique<BiquadSections>(0)), scratch(defaultBufferSize)
{
    setNumSections(std::max(numSections, 0));
}

void CascadeIPP::filter(float* out, const float* in, int numSamples)
{
    if (state->isEmpty())
    {
        if (out != in)
            primitives::vectorCopy32(in, out, numSamples);
        return;
    }
    state->process(in, out, numSamples);
}

void CascadeIPP::setCoefficients(const float* values)
{
    for (int i = 0; i < getNumSections(); ++i)
    {
        const float* v = values + 6 * i;
        sections[i] = {v[0], v[1], v[2], v[3], v[4], v[5]};
    }
    installAll();
}

void CascadeIPP::setCoefficients(const CascadeCoefficients& newSections)
{
    const std::size_t n = std::min(newSections.size(), sections.size());
    for (std::size_t i = 0; i < n; ++i)
        sections[i] = newSections[i];
    installAll();
}

void CascadeIPP::setNumSections(int n)
{
    if (n == getNumSections())
        return;
    sections.resize(static_cast<std::size_t>(std::max(n, 0)));
    taps.resize(6 * sections.size());
    state->allocate(n);
    installAll();
    clear();
}

void CascadeIPP::installAll()
{
    for (std::size_t i = 0; i < sections.size(); ++i)
    {
        sections[i].normalize();
        sections[i].toFloats(taps.data() + 6 * i);
    }
    state->install(taps.data());
}

bool CascadeIPP::isCascadesMessage(const OSCMessage& message)
{
    if (!message.matches("/cascades") || message.getNumArguments() == 0)
        return false;
    const auto& arguments = message.getArguments();
    return std::all_of(arguments.begin(), arguments.end(),
                       [](const OSCArgument& argument) { return OSCMessage::isOfClass(argument, 'n'); });
}

OSCMessage CascadeIPP::cascadesState(const CascadeCoefficients& sections)
{
    OSCMessage message("/cascades");
    message.addArgument(sections.toFive());
    return message;
}

bool CascadeIPP::processOscMessage(const OSCMessage& message, std::int32_t& context)
{
    if (handleProcessorMessages(message, context))
        return true;
    if (!isCascadesMessage(message))
        return false;
    CascadeCoefficients received;
    if (received.parseFromOsc(message, CascadeCoefficients::fivePerSection) &&
        received.size() == static_cast<std::size_t>(getNumSections()))
        setCoefficients(received);
    return true;
}

OSCBundle CascadeIPP::getState() const
{
    OSCBundle report = getProcessorState();
    report.add(cascadesState(sections));
    return report;
}

OscDocumentation CascadeIPP::getDocumentation() const
{
    return {{"/cascades", "[number][number]...", "sets the filters coefficients"}};
}
} // namespace ondo
