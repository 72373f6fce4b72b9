#pragma once

#include "containers/TarvoDspAudioBufferReference.h"

#include <algorithm>
#include <cstdint>

namespace ondo
{
/// Walks a block in consecutive pieces of at most `pieceSize` samples (at least 1): points
/// `inputsView` and `outputsView` at each piece's part of every channel, then calls `run(n)`
/// with the piece's length. Audio thread; real-time safe once the views know their channel
/// counts.
template <typename Run>
void forEachPiece(AudioBufferReference<float>& inputsView, float** inputs, std::uint32_t numInputs,
                  AudioBufferReference<float>& outputsView, float** outputs, std::uint32_t numOutputs,
                  std::uint32_t numSamples, std::uint32_t pieceSize, Run&& run)
{
    pieceSize = std::max<std::uint32_t>(pieceSize, 1);
    for (std::uint32_t start = 0; start < numSamples;)
    {
        const std::uint32_t n = std::min(pieceSize, numSamples - start);
        inputsView.refer(inputs, numInputs, n, start);
        outputsView.refer(outputs, numOutputs, n, start);
        run(n);
        start += n;
    }
}
} // namespace ondo
