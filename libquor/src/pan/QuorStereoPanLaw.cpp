#include "pan/QuorStereoPanLaw.h"

#include "math/TarvoDspCoordinates.h"

#include <cmath>
#include <map>

namespace Quor
{
StereoPanLaw::StereoPanLaw(std::uint32_t numSources, std::uint32_t numSpeakers)
    : AmplitudePanning(numSources, numSpeakers)
{
    recomputeAllSources();
}

StereoPanLaw::LawType StereoPanLaw::stringToLaw(const ondo::String& name)
{
    static const std::map<ondo::String, LawType> names = {
        {"sin/cos -6 dB", SineMinus6},
        {"sin/cos -6dB", SineMinus6},
        {"sin -6 dB", SineMinus6},
        {"sin/cos (constant amplitude)", SineMinus6},
        {"sin/cos -4.5 dB", SineMinus4p5},
        {"sin/cos -4.5dB", SineMinus4p5},
        {"sin -4.5 dB", SineMinus4p5},
        {"sin/cos -3 dB", SineMinus3},
        {"sin/cos -3dB", SineMinus3},
        {"sin -3 dB", SineMinus3},
        {"sin/cos (constant power)", SineMinus3},
        {"sqrt -6 dB", RootMinus6},
        {"sqrt -6dB", RootMinus6},
        {"sqrt (constant amplitude)", RootMinus6},
        {"root -6 dB", RootMinus6},
        {"root -6dB", RootMinus6},
        {"root (constant amplitude)", RootMinus6},
        {"sqrt -4.5 dB", RootMinus4p5},
        {"sqrt -4.5dB", RootMinus4p5},
        {"root -4.5 dB", RootMinus4p5},
        {"root -4.5dB", RootMinus4p5},
        {"sqrt -3 dB", RootMinus3},
        {"sqrt -3dB", RootMinus3},
        {"sqrt (constant power)", RootMinus3},
        {"root -3 dB", RootMinus3},
        {"root -3dB", RootMinus3},
        {"root (constant power)", RootMinus3},
    };
    const auto it = names.find(name);
    return it == names.end() ? SineMinus3 : it->second;
}

void StereoPanLaw::setLaw(LawType newLaw)
{
    law = newLaw;
    recomputeAllSources();
}

void StereoPanLaw::setLaw(const ondo::String& name)
{
    setLaw(stringToLaw(name));
}

float StereoPanLaw::panPosition(float a)
{
    if (a >= -30.0f && a <= 30.0f)
        return (a + 30.0f) / 60.0f;
    if (a >= -180.0f && a < -30.0f)
        return 0.5f - ((a + 180.0f) / 150.0f) / 2.0f;
    if (a > 30.0f && a <= 180.0f)
        return 1.0f - ((a - 30.0f) / 150.0f) / 2.0f;
    return 0.5f;
}

void StereoPanLaw::computeGains(const ondo::Point3& position, float* row, std::uint32_t)
{
    if (numOutputs < 2)
        return;
    const float p = panPosition(ondo::Coordinates::azimuthOf(position));
    static constexpr float drops[] = {6.0f, 4.5f, 3.0f, 6.0f, 4.5f, 3.0f};
    if (law < SineMinus6 || law > RootMinus3)
    {
        row[0] = row[1] = 0.5f;
        return;
    }
    const float drop = drops[law];
    if (law <= SineMinus3)
    {
        // The -3 dB sine law is constant power; other drops bend it by a power.
        row[0] = std::pow(std::sin((1.0f - p) * ondo::Coordinates::halfPi), drop / 3.0f);
        row[1] = std::pow(std::sin(p * ondo::Coordinates::halfPi), drop / 3.0f);
    }
    else
    {
        row[0] = std::pow(1.0f - p, drop / 6.0f);
        row[1] = std::pow(p, drop / 6.0f);
    }
}

ondo::String StereoPanLaw::lawToString(LawType value)
{
    static const char* const names[] = {"sin/cos -6 dB", "sin/cos -4.5 dB", "sin/cos -3 dB",
                                        "sqrt -6 dB",    "sqrt -4.5 dB",    "sqrt -3 dB"};
    return value >= SineMinus6 && value <= RootMinus3 ? names[value] : names[SineMinus3];
}

bool StereoPanLaw::processOscMessage(const ondo::OSCMessage& message, std::int32_t& context)
{
    if (Pan::processOscMessage(message, context))
        return true;
    if (!message.matches("/law") || !message.matchesSingle('s'))
        return false;
    const LawType asked = stringToLaw(message.getArgument(0).getString());
    if (asked != law)
        setLaw(asked);
    return true;
}

ondo::OSCBundle StereoPanLaw::getState() const
{
    ondo::OSCBundle state = Pan::getState();
    state.add("/law", lawToString(law));
    return state;
}
} // namespace Quor
