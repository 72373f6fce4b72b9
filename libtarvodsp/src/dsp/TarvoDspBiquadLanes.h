#pragma once

#include "dsp/TarvoDspBiquadIPP.h"

namespace ondo
{
/// Runs `count` independent biquads over one block each, several channels side by side in
/// the lanes of the vector unit: the recursion of one channel is a chain of dependent
/// operations, but those of different channels are not. Each channel's output is the same,
/// bit for bit, as its own `filter` gives (same operations in the same order), and its
/// delay line carries on as after its own `filter`. Channels must not be gain-only.
/// `outputs[c]` may equal `inputs[c]`. With a `secondStage`, channel c then runs
/// `secondStage[c]` on what `filters[c]` gives, sample by sample, so that the two recursions
/// overlap; the output is the same as the two `filter` calls in turn. Audio thread;
/// real-time safe.
void filterBiquadsSideBySide(BiquadIPP* const* filters, float* const* outputs, const float* const* inputs, int count,
                             int numSamples, BiquadIPP* const* secondStage = nullptr);
} // namespace ondo
