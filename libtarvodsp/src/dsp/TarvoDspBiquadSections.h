#pragma once

#include "math/TarvoDspBiquadPrimitive.h"

#include <cstdint>

namespace ondo
{
/// The state a biquad or a cascade keeps for the primitive: its handle, its working
/// memory and a delay line of two floats a section. Memory comes from the primitives'
/// allocator. Sized on the control thread; everything else is real-time safe.
class BiquadSections
{
public:
    explicit BiquadSections(int numSections = 1) { allocate(numSections); }
    ~BiquadSections() { release(); }
    BiquadSections(const BiquadSections&) = delete;
    BiquadSections& operator=(const BiquadSections&) = delete;

    /// Gives the old memory back and makes room for `numSections`, delay line zeroed and
    /// no taps installed. Control thread; allocates.
    void allocate(int numSections);
    int getNumSections() const { return numSections; }
    bool isEmpty() const { return handle == nullptr; }

    /// Installs six taps a section, keeping the present delay line so that the signal goes
    /// on without a click.
    void install(const float* taps);
    void process(const float* in, float* out, int n) { primitives::biquadProcess(in, out, n, handle); }
    /// Zeroes the delay line.
    void clear();
    /// The present delay line, two floats a section.
    const float* getDelayLine();
    void setDelayLine(const float* values) { primitives::biquadSetDelayLine(handle, values); }
    /// The delay line the recursion runs on, to be read and written without a copy (the
    /// side-by-side kernel, once a block). Audio thread; real-time safe.
    float* getDelayLineInPlace() { return liveDelayLine != nullptr ? liveDelayLine : delayLine; }
    /// What the primitive's recursion runs on, five floats a section (see
    /// `primitives::biquadRecursionTaps`); null before any install. Real-time safe.
    const float* getRecursionTaps() const { return recursionTaps; }

private:
    void release();

    int numSections = 0;
    primitives::BiquadState* handle = nullptr;
    std::uint8_t* memory = nullptr;
    float* delayLine = nullptr;
    /// Where the primitive keeps the delay line it runs on, asked once each time it is set up.
    float* liveDelayLine = nullptr;
    /// Where the primitive keeps the values its recursion runs on, asked along with it.
    const float* recursionTaps = nullptr;
};
} // namespace ondo
