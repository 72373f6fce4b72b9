#pragma once

#include "pan/QuorNFCHOAHighPass.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Quor
{
/// The high-passes of one source, one per order from 1 to M, run in place on the outputs
/// of its near-field filters; order 0 passes. M + 1 inputs and outputs.
class NFCHOAHighPassFilterBank : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    /// Control thread; allocates.
    NFCHOAHighPassFilterBank(std::uint32_t dimension, std::uint32_t order);

    /// The source's distance in metres; only orders whose distance changed are redesigned.
    /// Control thread, also while audio runs; allocates while designing.
    void setDistance(double metres, bool immediate);

    /// Audio thread; real-time safe; `outputs` may be `inputs`.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Control thread, between blocks; allocates.
    void setSampleRate(float rate) override;
    void setBufferSize(std::uint32_t size) override;
    void clear() override;

    /// Order l from 1 to M.
    const NFCHOAHighPass& getHighPass(std::uint32_t l) const { return *highPasses[l]; }

private:
    // Entry 0 stays empty: order 0 is not filtered.
    std::vector<std::unique_ptr<NFCHOAHighPass>> highPasses;
};
} // namespace Quor
