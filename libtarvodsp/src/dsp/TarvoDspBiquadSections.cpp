#include "dsp/TarvoDspBiquadSections.h"

#include "math/TarvoDspPrimitiveMemory.h"

#include <new>
#include <vector>

namespace ondo
{
void BiquadSections::allocate(int count)
{
    release();
    if (count < 1)
        return;
    int bytes = 0;
    primitives::biquadGetStateSize(count, &bytes);
    memory = primitives::allocateBytes(bytes);
    delayLine = primitives::allocateFloats(2 * count);
    if (memory == nullptr || delayLine == nullptr)
    {
        release();
        throw std::bad_alloc();
    }
    numSections = count;
    // Unit sections until the owner installs its own.
    std::vector<float> unit(6 * static_cast<std::size_t>(count), 0.0f);
    for (int s = 0; s < count; ++s)
        unit[6 * s] = unit[6 * s + 3] = 1.0f;
    for (int i = 0; i < 2 * count; ++i)
        delayLine[i] = 0.0f;
    primitives::biquadInit(&handle, unit.data(), count, delayLine, memory);
    liveDelayLine = primitives::biquadDelayLineInPlace(handle);
    recursionTaps = primitives::biquadRecursionTaps(handle);
}

void BiquadSections::release()
{
    primitives::freeMemory(memory);
    primitives::freeMemory(delayLine);
    memory = nullptr;
    delayLine = nullptr;
    liveDelayLine = nullptr;
    recursionTaps = nullptr;
    handle = nullptr;
    numSections = 0;
}

void BiquadSections::install(const float* taps)
{
    if (handle == nullptr)
        return;
    // A refused section (a0 or b0 of 0) leaves it and the later ones as they were; the
    // status is deliberately not looked at.
    primitives::biquadInit(&handle, taps, numSections, getDelayLine(), memory);
    liveDelayLine = primitives::biquadDelayLineInPlace(handle);
    recursionTaps = primitives::biquadRecursionTaps(handle);
}

void BiquadSections::clear()
{
    if (handle == nullptr)
        return;
    for (int i = 0; i < 2 * numSections; ++i)
        delayLine[i] = 0.0f;
    primitives::biquadSetDelayLine(handle, delayLine);
}

const float* BiquadSections::getDelayLine()
{
    if (handle != nullptr)
        primitives::biquadGetDelayLine(handle, delayLine);
    return delayLine;
}
} // namespace ondo
