#include "pan/QuorAmplitudePanning.h"

#include "math/TarvoDspCoordinates.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Quor
{
using ondo::Coordinates;
using ondo::Point3;

AmplitudePanning::AmplitudePanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : Pan(numSources, numSpeakers), matrix(numSources, numSpeakers), sourcesSpread(numSources),
      scratchGains(numSpeakers), rowGains(numSpeakers)
{
    matrix.setRampTime(defaultInterpolationTimeMs);
}

void AmplitudePanning::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        if (isOutletConnected(o))
            std::memset(outputs[o], 0, numSamples * sizeof(float));
    matrix.processAdd(outputs, inputs, numSamples);
}

void AmplitudePanning::processAdd(float** outputs, float** inputs, std::uint32_t numSamples)
{
    matrix.processAdd(outputs, inputs, numSamples);
}

void AmplitudePanning::setInterpolationTime(float ms)
{
    matrix.setRampTime(std::clamp(ms, 0.0f, maximumInterpolationTimeMs));
}

void AmplitudePanning::setSourceSpread(std::uint32_t source, float percent)
{
    if (source >= numInputs)
        return;
    const float value = std::clamp(percent, 0.0f, 100.0f);
    if (value == sourcesSpread[source])
        return;
    sourcesSpread[source] = value;
    setSourcePosition(source, sourcesPosition[source], false);
}

void AmplitudePanning::setSourcePosition(std::uint32_t source, const Point3& position, bool immediate)
{
    if (source >= numInputs)
        return;
    sourcesPosition[source] = position;
    // The row starts from the gains last asked of the matrix, so that a panner that writes
    // nothing (no speakers) leaves them as they were.
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        rowGains[o] = matrix.getPendingGain(source, o);
    if (sourcesSpread[source] == 0.0f)
        computeGains(position, rowGains.data(), source);
    else
        computeSpreadGains(position, rowGains.data(), source, sourcesSpread[source]);
    matrix.setGainsForInput(source, rowGains.data(), immediate);
}

void AmplitudePanning::addDirection(const Point3& direction, float weight, float* row, std::uint32_t source)
{
    scratchGains.clear();
    computeGains(direction, scratchGains.data(), source);
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        row[o] += weight * scratchGains[o];
}

void AmplitudePanning::computeSpreadGains(const Point3& position, float* row, std::uint32_t source, float spread)
{
    const float s = std::clamp(spread, 0.0f, 99.0f);
    auto power = [&] {
        float sum = 0.0f;
        for (std::uint32_t o = 0; o < numOutputs; ++o)
            sum += row[o] * row[o];
        return std::max(sum, 1e-20f);
    };
    scratchGains.clear();
    computeGains(position, scratchGains.data(), source);
    std::copy(scratchGains.begin(), scratchGains.end(), row);
    const float e0 = power();
    if (is2D())
    {
        // Around the horizon: the opposite direction in part, then pairs at growing angles.
        const float w = (s / 100.0f) * 180.0f * Coordinates::degreesToRadians;
        addDirection(ondo::rotateAboutZ(position, Coordinates::pi), s / 100.0f, row, source);
        for (const float angle : {w / 2.0f, w / 4.0f, 3.0f * w / 4.0f})
        {
            addDirection(ondo::rotateAboutZ(position, angle), 1.0f, row, source);
            addDirection(ondo::rotateAboutZ(position, -angle), 1.0f, row, source);
        }
    }
    else
    {
        // In 3-D the percentage reads as degrees, so full spread is 99 degrees.
        const float w = s * Coordinates::degreesToRadians;
        const float h = w / 2.0f;
        for (auto rotate : {&ondo::rotateAboutZ, &ondo::rotateAboutX, &ondo::rotateAboutY})
            for (const float angle : {w, -w, h, -h})
                addDirection(rotate(position, angle), 1.0f, row, source);
    }
    const float e1 = power();
    const float scale = 1.0f / std::sqrt(e1 / e0);
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        row[o] *= scale;
}
} // namespace Quor
