#include "filterdesign/TarvoDspDigitalFilterDesigner.h"

#include "common/TarvoDspException.h"
#include "filterdesign/TarvoDspAnalogPrototypes.h"
#include "filterdesign/TarvoDspZeroPoleToSections.h"
#include "filterdesign/TarvoDspStateSpace.h"
#include "filterdesign/TarvoDspZeroPoleToStateSpace.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <map>
#include <numbers>
#include <string>
#include <vector>

namespace ondo
{
namespace
{
using Cplx = std::complex<double>;

// The bilinear map runs at a sampling frequency of 2, so that s = 4 (z - 1) / (z + 1) and an
// edge f at rate fs prewarps to 4 tan(pi f / fs).
constexpr double bilinearRate = 2.0;

double prewarp(double hertz, double sampleRate)
{
    const double f = std::clamp(hertz, 10.0, 22050.0);
    return 2.0 * bilinearRate * std::tan((f / sampleRate + f / sampleRate) * 0.5 * std::numbers::pi);
}

Cplx toDigital(Cplx s)
{
    return (2.0 * bilinearRate + s) / (2.0 * bilinearRate - s);
}

// The digital zeros of the transformed prototype, in closed form: each analog zero follows
// the frequency transformation and the bilinear map, and every zero the transformation puts
// at infinity lands on z = -1. For Butterworth and Chebyshev filters these are the exact
// zeros: N at -1 (low-pass), N at +1 (high-pass), N at each (band-pass), and 2N on the unit
// circle at exp(+-2j atan(Wn / 4)) (band-stop). Taking the zeros of the digital state-space
// model instead would divide by its direct term D, which for an order-8 band-pass is near
// 1e-21 and known only to rounding: the zeros would come out as noise.
ComplexArray<double> digitalZeros(const ZeroPoleGain& prototype, DigitalFilterDesignBase::FilterType type, double wn,
                                  double bw, std::size_t numDigitalPoles)
{
    std::vector<Cplx> analog;
    const std::size_t missing = prototype.poles.size() - prototype.zeros.size();
    for (const auto& root : prototype.zeros)
    {
        const Cplx z(root.re, root.im);
        switch (type)
        {
            case DigitalFilterDesignBase::lowpass:
                analog.push_back(z * wn);
                break;
            case DigitalFilterDesignBase::highpass:
                analog.push_back(wn / z);
                break;
            case DigitalFilterDesignBase::bandpass:
            {
                const Cplx half = z * bw / 2.0;
                const Cplx root2 = std::sqrt(half * half - wn * wn);
                analog.push_back(half + root2);
                analog.push_back(half - root2);
                break;
            }
            case DigitalFilterDesignBase::bandstop:
            {
                const Cplx half = bw / (2.0 * z);
                const Cplx root2 = std::sqrt(half * half - wn * wn);
                analog.push_back(half + root2);
                analog.push_back(half - root2);
                break;
            }
        }
    }
    for (std::size_t i = 0; i < missing; ++i)
    {
        if (type == DigitalFilterDesignBase::highpass || type == DigitalFilterDesignBase::bandpass)
            analog.emplace_back(0.0, 0.0);
        else if (type == DigitalFilterDesignBase::bandstop)
        {
            analog.emplace_back(0.0, wn);
            analog.emplace_back(0.0, -wn);
        }
    }
    ComplexArray<double> zeros;
    for (const Cplx& s : analog)
    {
        const Cplx z = toDigital(s);
        zeros.pushBack({z.real(), z.imag()});
    }
    while (zeros.size() < numDigitalPoles)
        zeros.pushBack({-1.0, 0.0});
    return zeros;
}

// A point of the unit circle inside the pass band, where the response is far from 0.
Cplx passbandPoint(DigitalFilterDesignBase::FilterType type, double wn)
{
    switch (type)
    {
        case DigitalFilterDesignBase::highpass:
            return -1.0;
        case DigitalFilterDesignBase::bandpass:
            return std::polar(1.0, 2.0 * std::atan2(wn, 2.0 * bilinearRate));
        default:
            return 1.0;
    }
}
} // namespace

DigitalFilterDesigner::AnalogFilterTopology DigitalFilterDesigner::topologyFromName(std::string_view name)
{
    static const std::map<std::string, AnalogFilterTopology, std::less<>> names{
        {"butterworth", butterworth},
        {"chebyshevType1", chebyshevType1},
        {"chebyshev1", chebyshevType1},
        {"chebyshev 1", chebyshevType1},
        {"chebyshev-1", chebyshevType1},
        {"chebyshevType2", chebyshevType2},
        {"chebyshev2", chebyshevType2},
        {"chebyshev 2", chebyshevType2},
        {"chebyshev-2", chebyshevType2},
        {"bessel", bessel},
        {"elliptic", elliptic},
        {"cauer", elliptic},
    };
    const auto found = names.find(name);
    return found == names.end() ? butterworth : found->second;
}

DigitalFilterDesigner::AnalogFilterTopology DigitalFilterDesigner::topologyFromValue(int value)
{
    return value >= chebyshevType1 && value <= elliptic ? static_cast<AnalogFilterTopology>(value) : butterworth;
}

ZeroPoleGain DigitalFilterDesigner::makePrototype(int order, double passbandRipple, double stopbandAttenuation,
                                                  AnalogFilterTopology topology)
{
    switch (topologyFromValue(topology))
    {
        case chebyshevType1:
            return analogPrototypes::chebyshevType1(order, passbandRipple);
        case chebyshevType2:
            return analogPrototypes::chebyshevType1(order, stopbandAttenuation);
        case bessel:
            return analogPrototypes::bessel(order);
        case elliptic:
            return analogPrototypes::elliptic(order, passbandRipple, stopbandAttenuation);
        default:
            return analogPrototypes::butterworth(order);
    }
}

ZeroPoleGain DigitalFilterDesigner::designZeroPoleGain(int order, double frequency1, double frequency2,
                                                       double passbandRipple, double stopbandAttenuation,
                                                       double sampleRate, FilterType filterType,
                                                       AnalogFilterTopology topology)
{
    if (!(sampleRate > 0.0) || !std::isfinite(sampleRate))
        throw Exception("invalid parameter", ONDO_SOURCE_LOCATION);
    const FilterType type = filterTypeFromValue(filterType);
    const double u1 = prewarp(frequency1, sampleRate);
    double wn = u1;
    double bw = 0.0;
    if (type == bandpass || type == bandstop)
    {
        double lower = u1;
        double upper = prewarp(frequency2, sampleRate);
        if (upper < lower)
            std::swap(lower, upper);
        if (upper == lower)
            upper *= 1.01;
        bw = upper - lower;
        wn = std::sqrt(upper * lower);
    }

    const ZeroPoleGain prototype = makePrototype(std::max(order, 0), passbandRipple, stopbandAttenuation, topology);
    // The state-space model is a chain of blocks, and every step below maps a chain to the
    // chain of the mapped blocks; so each block goes through on its own, and the chain's
    // poles, the eigenvalues of its block-triangular matrix, are those of the blocks.
    ZeroPoleGain result;
    const Cplx z0 = passbandPoint(type, wn);
    Cplx response = 1.0;
    for (const StateSpace& block : zeroPoleToStateSpaceBlocks(prototype))
    {
        StateSpace transformed;
        switch (type)
        {
            case highpass:
                transformed = block.lowpassToHighpass(wn);
                break;
            case bandpass:
                transformed = block.lowpassToBandpass(wn, bw);
                break;
            case bandstop:
                transformed = block.lowpassToBandstop(wn, bw);
                break;
            default:
                transformed = block.lowpassToLowpass(wn);
                break;
        }
        const StateSpace digital = transformed.bilinear(bilinearRate);
        for (const auto& p : digital.getPoles())
            result.poles.pushBack(p);
        response *= digital.evaluate(z0);
    }
    for (const auto& p : result.poles)
        if (!(std::hypot(p.re, p.im) < 1.0))
            throw Exception("unstable polynomial", ONDO_SOURCE_LOCATION);
    result.zeros = digitalZeros(prototype, type, wn, bw, result.poles.size());

    // The gain that makes the roots' product equal the model's own response at one point of
    // the pass band: the model's direct term alone would be lost to rounding at high orders.
    Cplx ratio = response;
    for (const auto& p : result.poles)
        ratio *= z0 - Cplx(p.re, p.im);
    for (const auto& z : result.zeros)
        ratio /= z0 - Cplx(z.re, z.im);
    result.gain = ratio.real();
    return result;
}

CascadeCoefficients DigitalFilterDesigner::design(int order, double frequency1, double frequency2,
                                                  double passbandRipple, double stopbandAttenuation,
                                                  double sampleRate, FilterType filterType,
                                                  AnalogFilterTopology topology)
{
    const ZeroPoleGain model = designZeroPoleGain(order, frequency1, frequency2, passbandRipple, stopbandAttenuation,
                                                  sampleRate, filterType, topology);
    Matrix<double> rows;
    double gain = 1.0;
    if (!zeroPoleToSections(model, rows, gain))
        throw Exception("invalid polynomial", ONDO_SOURCE_LOCATION);
    CascadeCoefficients sections(static_cast<std::size_t>(rows.getNumRows()));
    for (std::size_t i = 0; i < sections.size(); ++i)
    {
        const double scale = i == 0 ? gain : 1.0;
        sections.setSection(i, {rows(i, 0) * scale, rows(i, 1) * scale, rows(i, 2) * scale, 1.0, rows(i, 4),
                                rows(i, 5)});
    }
    return sections;
}

CascadeCoefficients DigitalFilterDesigner::design(int order, double frequency1, double frequency2,
                                                  double passbandRipple, double stopbandAttenuation,
                                                  double sampleRate, std::string_view filterType,
                                                  std::string_view topology)
{
    return design(order, frequency1, frequency2, passbandRipple, stopbandAttenuation, sampleRate,
                  filterTypeFromName(filterType), topologyFromName(topology));
}
} // namespace ondo
