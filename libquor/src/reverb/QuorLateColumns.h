#pragma once

#include "dsp/TarvoDspBiquadIPP.h"

#include <cstdint>

namespace Quor
{
/// One chunk of the late network whose lines' filters all play steadily, in a single pass
/// over columns of samples: each line's delayed samples through its decay shelf (then its
/// air filter), the output taken, the input added, the lines mixed by the natural-order
/// Hadamard network and scaled. The same operations in the same order as running those
/// steps one after the other over the chunk, so every sample is the same; column by column,
/// the mixing runs while the shelves' recursions wait on their latency.
struct LateColumns
{
    /// Each line's delayed samples for the chunk.
    const float* const* reads;
    /// Each line's decay shelf, and the air filter after it or null: instances that play
    /// alone through the chunk, none gain-only. Their delay lines carry on.
    ondo::BiquadIPP* const* shelves;
    ondo::BiquadIPP* const* airs;
    /// Each line's input, read after its output is written, and its output: the filtered
    /// line times `outputFactor`. Null outputs, with sums, are not written.
    const float* const* inputs;
    float* const* outputs;
    /// Where mixed channel c goes, scaled by `mixGain`.
    float* const* mixed;
    float outputFactor;
    float inputGain;
    float mixGain;
    /// Each line's sum, or null: the input times `dry`, plus the output times `wet`.
    float* const* sums;
    float dry;
    float wet;
};

/// Whether `runLateColumns` takes such a chunk: 8 lines, or 16 where the wider vector
/// body runs, and neither factor 0 (whose shortcuts, exact zeros, the step-by-step chunk
/// keeps).
bool canRunLateColumns(std::uint32_t numLines, float outputFactor, float inputGain);

/// The chunk of `numSamples`, when `canRunLateColumns`. Audio thread; real-time safe.
void runLateColumns(const LateColumns& chunk, std::uint32_t numLines, std::uint32_t numSamples);
} // namespace Quor
