#include "dsp/TarvoDspHLShelfParameters.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ondo
{
namespace
{
constexpr float pi = 3.1415927f;

float decibelsToGain(float dB)
{
    return std::pow(10.0f, dB / 20.0f);
}

/// A first-order shelf by the bilinear transform: the pole and the zero for a corner at
/// normalized frequency `w` (cycles a sample) and a gain ratio `r` across it.
struct ShelfEdge
{
    float s, r, pole, zero;
};

ShelfEdge edge(float w, float ratio)
{
    // The corner sits at the geometric middle of the transition, hence the root.
    const float t = std::tan(w * pi);
    const float s = t / std::sqrt(ratio);
    return {s, ratio, (s - 1.0f) / (s + 1.0f), (s * ratio - 1.0f) / (s * ratio + 1.0f)};
}
} // namespace

BiquadCoefficients designHLShelf(const HLShelfParameters& p, float sampleRate)
{
    if (p.Gl == 0.0f && p.Gm == 0.0f && p.Gh == 0.0f)
        return {decibelsToGain(p.G0), 0.0, 0.0, 1.0, 0.0, 0.0};
    float wl = p.fl / sampleRate;
    float wh = p.fh / sampleRate;
    if (wl > wh)
        std::swap(wl, wh);
    wl = std::max(wl, 0.0f);
    wh = std::min(wh, 0.5f);
    const ShelfEdge low = edge(wl, decibelsToGain(p.Gl - p.Gm));
    const ShelfEdge high = edge(wh, decibelsToGain(p.Gm - p.Gh));
    const float g = decibelsToGain(p.Gh) * (((high.s * high.r + 1.0f) / (high.s + 1.0f)) *
                                            ((low.s * low.r + 1.0f) / (low.s + 1.0f)));
    const float k = decibelsToGain(p.G0);
    return {k * g, (high.zero + low.zero) * g * k, high.zero * low.zero * g * k, 1.0, high.pole + low.pole,
            high.pole * low.pole};
}

bool processHLShelfParametersMessage(const OSCMessage& message, HLShelfParameters& parameters, bool& changed)
{
    changed = false;
    const HLShelfParameters before = parameters;
    if (message.matches("/params"))
    {
        if (!message.matchesList("nnnnnn"))
            return false;
        parameters = {message.getFloat(0), message.getFloat(1), message.getFloat(2),
                      message.getFloat(3), message.getFloat(4), message.getFloat(5)};
    }
    else
    {
        struct Field
        {
            std::string_view address;
            float HLShelfParameters::*value;
        };
        static constexpr Field fields[] = {
            {"/params/G0", &HLShelfParameters::G0}, {"/params/Gl", &HLShelfParameters::Gl},
            {"/params/Gm", &HLShelfParameters::Gm}, {"/params/Gh", &HLShelfParameters::Gh},
            {"/params/fl", &HLShelfParameters::fl}, {"/params/fh", &HLShelfParameters::fh},
        };
        const Field* found = nullptr;
        for (const Field& field : fields)
            if (message.matches(field.address))
                found = &field;
        if (found == nullptr || !message.matchesSingle('n'))
            return false;
        parameters.*(found->value) = message.getFloat(0);
    }
    changed = !(parameters == before);
    return true;
}

void addHLShelfParametersState(OSCBundle& state, std::string_view prefix, const HLShelfParameters& parameters)
{
    OSCMessage message(std::string(prefix) + "/params");
    for (float value : {parameters.G0, parameters.Gl, parameters.Gm, parameters.Gh, parameters.fl, parameters.fh})
        message.addArgument(value);
    state.add(std::move(message));
}
} // namespace ondo
