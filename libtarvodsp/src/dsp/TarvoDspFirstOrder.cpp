#include "dsp/TarvoDspFirstOrder.h"

namespace ondo
{
namespace
{
// Added to the input and taken off the output: a decaying tail settles on a normal number
// instead of running down through the denormals.
constexpr float denormalGuard = 1e-20f;
} // namespace

void FirstOrder::filter(float* out, const float* in, int numSamples)
{
    float xPrevious = x1;
    float yPrevious = y1;
    for (int i = 0; i < numSamples; ++i)
    {
        const float x = in[i];
        const float y = (denormalGuard + x) * b0 + xPrevious * b1 - yPrevious * a1 - denormalGuard;
        xPrevious = x;
        yPrevious = y;
        out[i] = y;
    }
    x1 = xPrevious;
    y1 = yPrevious;
}

void FirstOrder::setCoefficients(const float* values)
{
    b0 = values[0];
    b1 = values[1];
    a1 = values[2];
}
} // namespace ondo
