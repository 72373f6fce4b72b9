#pragma once

#include "dsp/TarvoDspBiquadCoefficients.h"
#include "filterdesign/TarvoDspDigitalFilterDesignBase.h"
#include "filterdesign/TarvoDspZeroPoleGain.h"

#include <string_view>

namespace ondo
{
/// Classical IIR design: a family, a shape, an order and band edges become a cascade of
/// second-order sections. The analog prototype goes through a state-space model, the
/// frequency transformation and the bilinear map, all in double precision. Design runs on
/// the control thread and allocates; it is never to be called from the audio thread.
class DigitalFilterDesigner : public DigitalFilterDesignBase
{
public:
    enum AnalogFilterTopology : int
    {
        butterworth = 0,
        chebyshevType1 = 1,
        chebyshevType2 = 2, ///< the type I prototype with the stop-band figure as its ripple
        bessel = 3,
        elliptic = 4,
    };

    /// "butterworth"; "chebyshevType1", "chebyshev1", "chebyshev 1", "chebyshev-1"; the same
    /// four with 2; "bessel"; "elliptic", "cauer". Any other name gives Butterworth.
    static AnalogFilterTopology topologyFromName(std::string_view name);
    /// Values outside 1 to 4 give Butterworth.
    static AnalogFilterTopology topologyFromValue(int value);

    /// The sections of the design, the gain in the first one and a0 = 1 in all.
    /// `frequency1` and `frequency2` (Hz) are clamped to [10, 22050] whatever the rate;
    /// `frequency2` is read by band-pass and band-stop only, the edges in either order, equal
    /// edges widened by 1% upwards. `passbandRipple` and `stopbandAttenuation` (dB) are read
    /// by the Chebyshev and elliptic families. Order 0 (or below) gives one unit section.
    /// Raises "FilterOrderTooLarge" for an elliptic order that double precision cannot
    /// reach; "unstable polynomial" when a pole lands on or outside the unit circle (a
    /// Bessel order above 25, which has no stored poles; a band elliptic design a few orders
    /// short of the limit, whose poles lie closer to the circle than double precision can
    /// tell; edges far beyond Nyquist); "invalid polynomial" when the roots come out unusable
    /// (infinite attenuation); "invalid parameter" for a sample rate that is not a positive
    /// number.
    static CascadeCoefficients design(int order, double frequency1, double frequency2, double passbandRipple,
                                      double stopbandAttenuation, double sampleRate, FilterType filterType,
                                      AnalogFilterTopology topology);
    static CascadeCoefficients design(int order, double frequency1, double frequency2, double passbandRipple,
                                      double stopbandAttenuation, double sampleRate, std::string_view filterType,
                                      std::string_view topology);

    /// The same design before pairing: digital zeros, poles (z plane) and gain.
    static ZeroPoleGain designZeroPoleGain(int order, double frequency1, double frequency2, double passbandRipple,
                                           double stopbandAttenuation, double sampleRate, FilterType filterType,
                                           AnalogFilterTopology topology);

    /// The analog low-pass prototype the family stands for, edge at 1 rad/s, with the
    /// ripple figures chosen as the family reads them.
    static ZeroPoleGain makePrototype(int order, double passbandRipple, double stopbandAttenuation,
                                      AnalogFilterTopology topology);
};
} // namespace ondo
