#pragma once

#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspFadedCascade.h"
#include "pan/QuorNFCHOAFilterModeling.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Quor
{
/// The near-field filters of one source, one per order: one input, M + 1 outputs, output l
/// carrying the input through the filter of order l. Order 0 has no near field: its output
/// is the input. New sections are designed on the control thread and handed to the audio
/// thread as pending coefficients of crossfading cascades.
class NFCHOAFilterBank : public ondo::AudioProcessorWithOscInAudioInterrupt
{
public:
    /// Control thread; allocates.
    explicit NFCHOAFilterBank(std::uint32_t order);

    /// Metres, clamped to 0.2 m. Only orders whose distance changed get new sections;
    /// `immediate` skips their crossfade. Control thread, also while audio runs; real-time
    /// safe.
    void setSourceDistance(double metres, bool immediate);
    void setSpeakerDistance(double metres, bool immediate);

    /// Writes the M + 1 outputs. Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Redesigns every order for the new rate. Control thread, between blocks.
    void setSampleRate(float rate) override;
    /// Control thread, between blocks; allocates.
    void setBufferSize(std::uint32_t size) override;
    void clear() override;

    std::uint32_t getOrder() const { return order; }
    /// Order l from 1 to M.
    const NFCHOAFilterModeling& getModel(std::uint32_t l) const { return *filterModels[l]; }
    const ondo::FadedCascade& getFilter(std::uint32_t l) const { return *filters[l]; }

private:
    /// Hands the sections of every order that changed to its cascade.
    void publish(bool immediate);

    std::uint32_t order;
    // Entry 0 stays empty: order 0 needs no filter.
    std::vector<std::unique_ptr<NFCHOAFilterModeling>> filterModels;
    std::vector<std::unique_ptr<ondo::FadedCascade>> filters;
};
} // namespace Quor
