#pragma once

#include "pan/QuorNFCHOAPanningOneSource.h"
#include "pan/QuorPan.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Quor
{
/// Ambisonic encoding of sources at a finite distance: each source has its own voice, whose
/// near-field filters give every order the curvature of a wave from the source's distance
/// as heard on a speaker ring of the given radius (1 m at first), and whose outputs are
/// summed into the 2M + 1 (2-D) or (M + 1)^2 (3-D) components. A source on the ring sounds
/// as through the plain encoder; a source inside it gains low end, up to (R / r)^l at
/// order l, which the optional high-passes hold back. Distances below 0.2 m count as 0.2 m.
///
/// Threads: one control thread at a time moves sources and changes settings while the audio
/// thread runs `process`; filters reach the audio thread as pending coefficients, gains as
/// pending matrix gains. Muted and inactive sources are skipped.
class NFCHOAPanning : public Pan
{
public:
    /// Control thread; allocates. A count of no Ambisonic form for `dimension` raises an
    /// `ondo::Exception` (the factory never asks for one).
    NFCHOAPanning(std::uint32_t numSources, std::uint32_t numSpeakers, std::uint32_t dimension);

    /// Clears the outputs, then adds every running voice. Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void processAdd(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// Control thread, between blocks; allocates.
    void setSampleRate(float rate) override;
    void setBufferSize(std::uint32_t size) override;
    void clear() override;

    /// Nothing when the point is the stored one and `immediate` is false. Control thread,
    /// also while audio runs; allocates while the high-passes are redesigned.
    void setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool immediate) override;
    /// Turns the high-passes of every voice on or off. Control thread; real-time safe.
    void setNfcCompensation(bool enabled) override;
    /// The speaker ring's radius in metres (clamped to 0.2 m); the sources are placed again.
    /// Control thread, as `setSourcePosition`.
    void setNfcSpeakersRadius(float metres) override;
    AmbisonicNormalization getAmbisonicNormalization() const override;
    /// A normalisation of the other dimension raises an `ondo::Exception` and changes
    /// nothing. Control thread; allocates in "fast" mode.
    void setAmbisonicNormalization(AmbisonicNormalization normalization) override;
    void setComputationMode(const ondo::String& name) override;
    void setComputationMode(ComputationMode mode) override;
    bool is2D() const override { return dimension == 2; }

    /// The type lines, then the first voice's order, normalisation, compensation, high-pass,
    /// speakers radius and computation mode.
    void getInfos(StringArray& lines) const override;
    /// "output #n : Y(l,m)" for each component, "dumpout" beyond.
    std::string getOutletName(std::int32_t index) const override;

    std::uint32_t getDimension() const { return dimension; }
    std::uint32_t getOrder() const { return order; }
    const NFCHOAPanningOneSource& getVoice(std::uint32_t source) const { return *voices[source]; }

private:
    std::uint32_t dimension;
    std::uint32_t order;
    std::vector<std::unique_ptr<NFCHOAPanningOneSource>> voices;
};
} // namespace Quor
