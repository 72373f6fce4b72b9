#pragma once

#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspFadedBiquad.h"

#include <cstdint>

namespace ondo
{
/// Independent crossfading biquads of several channels over one block, alone or two in
/// series. A channel whose biquads each play one instance alone through the block waits to
/// run side by side with the other steady ones in the vector unit; a channel with one that
/// warms up or fades runs at once on its own. Every output is the same as the channel's own
/// `filterBlock` calls give.
class FadedBiquadBatch
{
public:
    /// Room for `numChannels` channels. Control thread; allocates.
    explicit FadedBiquadBatch(std::uint32_t numChannels = 0) { reserve(numChannels); }
    void reserve(std::uint32_t numChannels);

    /// Takes one channel into the block: `out` may be `in`, not another channel's buffer.
    /// At most as many channels as reserved. Audio thread; real-time safe.
    void add(FadedBiquad& filter, float* out, const float* in, std::uint32_t numSamples);
    /// The same for a filter whose `beginBlock` already ran for this block and gave `alone`.
    void addBegun(FadedBiquad& filter, BiquadIPP* alone, float* out, const float* in, std::uint32_t numSamples);
    /// A channel through `first`, then `second`.
    void add(FadedBiquad& first, FadedBiquad& second, float* out, const float* in, std::uint32_t numSamples);
    /// Runs the steady channels taken since the last `run`, side by side. Audio thread;
    /// real-time safe.
    void run(std::uint32_t numSamples);

    /// The channels taken since the last `run`, when all `count` of them were steady and of
    /// one kind: each channel's instances, in the order taken (`second` null for single
    /// stages). They are handed over instead of run: the caller runs those kernels for the
    /// block itself, and the batch is empty again. Null `first` when not, the batch unchanged.
    /// Audio thread; real-time safe.
    struct Steady
    {
        BiquadIPP* const* first = nullptr;
        BiquadIPP* const* second = nullptr;
    };
    Steady takeSteady(std::uint32_t count);

private:
    /// Steady channels of one or two stages.
    struct Queue
    {
        void reserve(std::uint32_t numChannels);
        void push(BiquadIPP* first, BiquadIPP* second, float* out, const float* in);
        void run(std::uint32_t numSamples, bool twoStages);

        Vector<BiquadIPP*> firsts;
        Vector<BiquadIPP*> seconds;
        Vector<float*> outputs;
        Vector<const float*> inputs;
        int size = 0;
    };

    Queue single;
    Queue pairs;
};
} // namespace ondo
