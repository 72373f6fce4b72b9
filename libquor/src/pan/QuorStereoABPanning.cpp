#include "pan/QuorStereoABPanning.h"

#include "math/TarvoDspVectorPrimitives.h"
#include "pan/QuorStereoAngle.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace Quor
{
namespace
{
/// Scratch length: longer blocks are done in pieces.
constexpr std::uint32_t scratchSize = 512;
} // namespace

StereoABPanning::Voice::Voice()
    : delays{ondo::Delay(maximumDelayMs, ondo::Delay::allpass), ondo::Delay(maximumDelayMs, ondo::Delay::allpass)}
{
}

StereoABPanning::StereoABPanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : Pan(numSources, numSpeakers), delayed(scratchSize), scaled(scratchSize)
{
    for (std::uint32_t s = 0; s < numSources; ++s)
        voices.push_back(std::make_unique<Voice>());
    setInterpolationTime(defaultInterpolationTimeMs);
    recomputeAllSources();
}

void StereoABPanning::setSampleRate(float rate)
{
    for (auto& v : voices)
        for (int side = 0; side < 2; ++side)
        {
            v->delays[side].changeSampleRate(rate);
            v->gains[side].changeSampleRate(rate);
        }
}

void StereoABPanning::setBufferSize(std::uint32_t size)
{
    for (auto& v : voices)
        for (ondo::Delay& d : v->delays)
            d.changeBufferSize(size);
}

void StereoABPanning::clear()
{
    for (auto& v : voices)
        for (ondo::Delay& d : v->delays)
            d.clear();
}

void StereoABPanning::setInterpolationTime(float ms)
{
    interpolationTime = std::max(ms, 0.0f);
    for (auto& v : voices)
        for (int side = 0; side < 2; ++side)
        {
            v->gains[side].setRampTime(interpolationTime);
            v->delays[side].setInterpolationTime(interpolationTime);
        }
}

void StereoABPanning::setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool immediate)
{
    if (source >= numInputs)
        return;
    sourcesPosition[source] = position;
    const StereoAngle a = StereoAngle::of(position);
    Voice& v = *voices[source];
    v.gains[0].setTarget((std::sin(0.7853982f - a.q) * a.r + 1.0f) * 0.44936f, immediate);
    v.gains[1].setTarget((std::sin(a.q + 0.7853982f) * a.r + 1.0f) * 0.44936f, immediate);
    // The far microphone hears the source later: +-0.25 ms around a common 1 ms.
    const float w = std::sin(a.q) * a.r * 0.25f;
    v.delays[0].setDelay(1.0f + w, immediate);
    v.delays[1].setDelay(1.0f - w, immediate);
}

void StereoABPanning::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        std::memset(outputs[o], 0, numSamples * sizeof(float));
    processAdd(outputs, inputs, numSamples);
}

void StereoABPanning::processAdd(float** outputs, float** inputs, std::uint32_t numSamples)
{
    const std::uint32_t sides = std::min<std::uint32_t>(numOutputs, 2);
    for (std::uint32_t s = 0; s < numInputs; ++s)
    {
        if (!isInletActive(s) || isSourceMuted(s))
            continue;
        for (std::uint32_t done = 0; done < numSamples; done += scratchSize)
        {
            const std::uint32_t n = std::min(scratchSize, numSamples - done);
            float* in = inputs[s] + done;
            float* late = delayed.data();
            float* out = scaled.data();
            for (std::uint32_t side = 0; side < sides; ++side)
            {
                voices[s]->delays[side].process(&late, &in, n);
                voices[s]->gains[side].process(&out, &late, n);
                ondo::primitives::vectorAdd32InPlace(out, outputs[side] + done, static_cast<int>(n));
            }
        }
    }
}
} // namespace Quor
