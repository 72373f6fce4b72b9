#include "math/TarvoDspBiquadPrimitive.h"

#include <cstddef>
#include <cstring>

namespace ondo::primitives
{
namespace
{
// Tags that mark what a state handle is; only the cascade kind is made here.
constexpr std::uint32_t cascadeTag = 0x42514331; // "BQC1"
constexpr std::size_t stateAlignment = 32;

/// What the recursion runs on, a section each: b0, the input's weights c1 and c2 into the
/// delay pair (see `stateInputTap`), a1 and a2.
constexpr int valuesPerSection = 5;

/// b - a b0: the weight of the input in a delay-pair element once the output's share is
/// taken out. In double from the single-precision taps (the product is exact there), then
/// rounded once.
float stateInputTap(float b, float a, float b0)
{
    return static_cast<float>(static_cast<double>(b) - static_cast<double>(a) * static_cast<double>(b0));
}
} // namespace

struct BiquadState
{
    std::uint32_t tag;
    int numSections;
    float* sections;
    float* delayLine; // z0, z1 of each section in turn
};

namespace
{
std::size_t bytesFor(int numSections)
{
    const auto n = static_cast<std::size_t>(numSections);
    return sizeof(BiquadState) + (valuesPerSection + 2) * n * sizeof(float) + stateAlignment;
}

/// Moves a delay line. A single section's two values move often (each block of a
/// side-by-side run), so they skip the library call; both are read before either is written.
void moveDelayLine(float* to, const float* from, std::size_t count)
{
    if (count == 2)
    {
        const float z0 = from[0];
        const float z1 = from[1];
        to[0] = z0;
        to[1] = z1;
    }
    else
        std::memmove(to, from, count * sizeof(float));
}

std::uint8_t* alignUp(std::uint8_t* p)
{
    const auto address = reinterpret_cast<std::uintptr_t>(p);
    return p + ((stateAlignment - address % stateAlignment) % stateAlignment);
}
} // namespace

Status biquadGetStateSize(int numSections, int* size)
{
    if (size == nullptr)
        return nullPointer;
    if (numSections < 1)
        return badSectionCount;
    *size = static_cast<int>(bytesFor(numSections));
    return done;
}

Status biquadInit(BiquadState** handle, const float* taps, int numSections, const float* delayLine,
                  std::uint8_t* memory)
{
    if (handle == nullptr || taps == nullptr || memory == nullptr)
        return nullPointer;
    if (numSections < 1)
        return badSectionCount;
    std::uint8_t* base = alignUp(memory);
    auto* state = reinterpret_cast<BiquadState*>(base);
    state->tag = cascadeTag;
    state->numSections = numSections;
    state->sections = reinterpret_cast<float*>(base + sizeof(BiquadState));
    state->delayLine = state->sections + valuesPerSection * numSections;
    *handle = state;

    Status status = done;
    for (int s = 0; s < numSections; ++s)
    {
        const float* t = taps + 6 * s;
        if (t[3] == 0.0f || t[0] == 0.0f)
        {
            status = divisionByZeroInTaps;
            break;
        }
        const float inverseA0 = 1.0f / t[3];
        const float b0 = t[0] * inverseA0;
        const float a1 = t[4] * inverseA0;
        const float a2 = t[5] * inverseA0;
        float* section = state->sections + valuesPerSection * s;
        section[0] = b0;
        section[1] = stateInputTap(t[1] * inverseA0, a1, b0);
        section[2] = stateInputTap(t[2] * inverseA0, a2, b0);
        section[3] = a1;
        section[4] = a2;
    }
    biquadSetDelayLine(state, delayLine);
    return status;
}

Status biquadProcess(const float* src, float* dst, int n, BiquadState* handle)
{
    if (src == nullptr || dst == nullptr || handle == nullptr)
        return nullPointer;
    if (handle->tag != cascadeTag)
        return wrongStateKind;
    if (n < 1)
        return badLength;
    // Section by section over the whole block: the same arithmetic as sample by sample
    // through the chain, with the state in registers for the inner loop.
    const float* in = src;
    for (int s = 0; s < handle->numSections; ++s)
    {
        const float* section = handle->sections + valuesPerSection * s;
        const float b0 = section[0], c1 = section[1], c2 = section[2], a1 = section[3], a2 = section[4];
        float z0 = handle->delayLine[2 * s];
        float z1 = handle->delayLine[2 * s + 1];
        for (int i = 0; i < n; ++i)
        {
            const float x = in[i];
            const float y = b0 * x + z0;
            const float next = (z1 + c1 * x) - a1 * z0;
            z1 = c2 * x - a2 * z0;
            z0 = next;
            dst[i] = y;
        }
        handle->delayLine[2 * s] = z0;
        handle->delayLine[2 * s + 1] = z1;
        in = dst;
    }
    return done;
}

Status biquadSetDelayLine(BiquadState* handle, const float* delayLine)
{
    if (handle == nullptr)
        return nullPointer;
    if (handle->tag != cascadeTag)
        return wrongStateKind;
    const auto count = 2 * static_cast<std::size_t>(handle->numSections);
    if (delayLine == nullptr)
        std::memset(handle->delayLine, 0, count * sizeof(float));
    else
        moveDelayLine(handle->delayLine, delayLine, count);
    return done;
}

float* biquadDelayLineInPlace(BiquadState* handle)
{
    return handle != nullptr && handle->tag == cascadeTag ? handle->delayLine : nullptr;
}

const float* biquadRecursionTaps(const BiquadState* handle)
{
    return handle != nullptr && handle->tag == cascadeTag ? handle->sections : nullptr;
}

Status biquadGetDelayLine(const BiquadState* handle, float* delayLine)
{
    if (handle == nullptr || delayLine == nullptr)
        return nullPointer;
    if (handle->tag != cascadeTag)
        return wrongStateKind;
    moveDelayLine(delayLine, handle->delayLine, 2 * static_cast<std::size_t>(handle->numSections));
    return done;
}
} // namespace ondo::primitives
