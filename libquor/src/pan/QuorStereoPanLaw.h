#pragma once

#include "pan/QuorAmplitudePanning.h"

namespace Quor
{
/// A classic stereo pan pot: sine or root law with a chosen drop at the centre. Sources
/// behind the head sit in the centre of the image.
class StereoPanLaw : public AmplitudePanning
{
public:
    enum LawType : std::int32_t
    {
        SineMinus6 = 0,
        SineMinus4p5,
        SineMinus3,
        RootMinus6,
        RootMinus4p5,
        RootMinus3
    };

    /// Control thread; allocates.
    StereoPanLaw(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// A new law recomputes every source. Control thread.
    void setLaw(LawType law);
    /// By name, exact case; unknown names give the -3 dB sine law.
    void setLaw(const ondo::String& name);
    LawType getLaw() const { return law; }
    static LawType stringToLaw(const ondo::String& name);
    /// The first name of a law: "sin/cos -6 dB" ... "sqrt -3 dB".
    static ondo::String lawToString(LawType law);

    /// The panner's addresses, then "/law" s, which recomputes every source when the law
    /// changes. Thread of the caller; allocates.
    bool processOscMessage(const ondo::OSCMessage& message, std::int32_t& context) override;
    /// The panner's state, then "/law".
    ondo::OSCBundle getState() const override;

    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    bool is2D() const override { return true; }

    /// The pan position of a navigational azimuth: 0 left, 1 right, 0.5 centre.
    static float panPosition(float azimuthDegrees);

private:
    LawType law = SineMinus3;
};
} // namespace Quor
