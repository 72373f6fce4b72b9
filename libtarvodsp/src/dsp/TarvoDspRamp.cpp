#include "dsp/TarvoDspRamp.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ondo
{
namespace
{
// A glide of zero samples has no finite slope; fill() snaps to the target in that case.
float slope(float difference, std::uint64_t samples)
{
    if (samples != 0)
        return difference / static_cast<float>(samples);
    if (difference == 0.0f)
        return std::numeric_limits<float>::quiet_NaN();
    return std::copysign(std::numeric_limits<float>::infinity(), difference);
}
} // namespace

void Ramp::setRampTime(float ms)
{
    rampTime = std::max(ms, 0.0f);
}

void Ramp::jumpTo(float value)
{
    startValue = currentValue = targetValue = value;
    remainingSamples = totalSamples = 0;
    increment = 0.0f;
}

void Ramp::setTarget(float value, bool immediately)
{
    if (immediately)
        jumpTo(value);
    else
        setTarget(value, static_cast<double>(rampTime));
}

void Ramp::setTarget(float value, double ms)
{
    rampTime = std::max(static_cast<float>(ms), 0.0f);
    if (rampTime == 0.0f)
    {
        jumpTo(value);
        return;
    }
    startValue = currentValue;
    targetValue = value;
    totalSamples = remainingSamples = static_cast<std::uint64_t>(std::llround(rampTime * 0.001 * sampleRate));
    increment = slope(targetValue - currentValue, totalSamples);
}

void Ramp::setSampleRate(float rate)
{
    if (rate == sampleRate)
        return;
    const auto rescale = [&](std::uint64_t n) {
        return static_cast<std::uint64_t>(std::llround(static_cast<double>(n) * 1000.0 / sampleRate * 0.001 * rate));
    };
    totalSamples = rescale(totalSamples);
    if (remainingSamples != 0)
        remainingSamples = rescale(remainingSamples);
    if (remainingSamples != 0)
        increment = slope(targetValue - currentValue, remainingSamples);
    sampleRate = rate;
}

void Ramp::fill(float* out, std::uint32_t n)
{
    // Work on local copies; each field is read once and written back once.
    std::uint64_t remaining = remainingSamples;
    float current = currentValue;
    const float step = increment;
    const float target = targetValue;
    std::uint32_t written = 0;
    while (written < n)
    {
        if (remaining == 0)
        {
            current = target;
            std::fill(out + written, out + n, current);
            break;
        }
        const auto k = static_cast<std::uint32_t>(std::min<std::uint64_t>(n - written, remaining));
        // Never past the target nor away from it: a retarget landing between our reads of the
        // fields may pair one glide's slope with another's length, and unchecked that error
        // would feed the next glide's start and grow without bound.
        float end = current + static_cast<float>(k) * step;
        if (!(end >= std::min(current, target)))
            end = std::min(current, target);
        if (!(end <= std::max(current, target)))
            end = std::max(current, target);
        if (k == 1)
        {
            out[written] = end;
        }
        else
        {
            // The k samples run evenly from the current value to `end` inclusive; the last
            // one is written as `end` itself so that rounding never misses it.
            const float slope = (end - current) / static_cast<float>(k - 1);
            for (std::uint32_t j = 0; j + 1 < k; ++j)
                out[written + j] = static_cast<float>(j) * slope + current;
            out[written + k - 1] = end;
        }
        written += k;
        remaining -= k;
        current = end;
    }
    remainingSamples = remaining;
    currentValue = current;
}

float Ramp::advanceGlide(std::uint64_t k)
{
    const std::uint64_t remaining = remainingSamples;
    if (remaining == 0)
        return currentValue;
    const std::uint64_t step = std::min(k, remaining);
    float current = currentValue + static_cast<float>(step) * increment;
    if (step == remaining)
        current = targetValue;
    remainingSamples = remaining - step;
    currentValue = current;
    return current;
}
} // namespace ondo
