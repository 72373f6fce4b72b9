#include "pan/QuorNFCHOAHighPass.h"

#include "filterdesign/TarvoDspDigitalFilterDesigner.h"
#include "pan/QuorNFCHOAFilterModeling.h"

#include <algorithm>

namespace Quor
{
NFCHOAHighPass::NFCHOAHighPass(std::uint32_t dim, std::uint32_t l)
    : AudioProcessorWithOscInAudioInterrupt(1, 1), dimension(dim), order(l), cascade(static_cast<int>((l + 1) / 2))
{
    design(true);
}

double NFCHOAHighPass::cutoffFrequency(std::uint32_t dim, std::uint32_t l, double metres)
{
    const double k = dim == 2 ? 0.9942727 * l + 0.4176 : 1.048 * l + 0.746;
    const double r = std::max(metres, NFCHOAFilterModeling::minimumDistance);
    return k * NFCHOAFilterModeling::speedOfSound / (6.2831855 * r);
}

void NFCHOAHighPass::setDistance(double metres, bool immediate)
{
    const auto d = static_cast<float>(std::max(metres, NFCHOAFilterModeling::minimumDistance));
    if (d == distance)
        return;
    distance = d;
    design(immediate);
}

void NFCHOAHighPass::design(bool immediate)
{
    if (order == 0)
        return;
    // High orders of a close source at a low rate would ask for a cut-off beyond Nyquist,
    // which has no digital design: the edge then stays just below it.
    const double rate = cascade.getSampleRate();
    const double cutoff = std::min(cutoffFrequency(dimension, order, distance), 0.49 * rate);
    filter = ondo::DigitalFilterDesigner::design(static_cast<int>(order), cutoff, 0.0, 0.0, 10.0, rate,
                                                 ondo::DigitalFilterDesigner::highpass,
                                                 ondo::DigitalFilterDesigner::butterworth);
    // A Butterworth of order l always pairs into ceil(l / 2) sections, the cascade's size.
    cascade.requestCoefficients(filter, immediate);
}

void NFCHOAHighPass::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    cascade.filterBlock(outputs[0], inputs[0], numSamples);
}

void NFCHOAHighPass::setSampleRate(float rate)
{
    cascade.changeSampleRate(rate);
    design(true);
}
} // namespace Quor
