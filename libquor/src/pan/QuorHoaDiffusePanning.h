#pragma once

#include "pan/QuorPan.h"

#include <memory>

namespace Quor
{
/// A diffuse field in Ambisonics: each decorrelated input is encoded from its own fixed
/// direction, the directions spread evenly (a ring in 2-D, a sphere in 3-D), so the field
/// arrives from everywhere. Positions sent to it are stored and play no part.
class HoaDiffusePanning : public Pan
{
public:
    /// Builds the inner encoder through the factory. Control thread; allocates.
    HoaDiffusePanning(std::uint32_t numSources, std::uint32_t numSpeakers, std::uint32_t dimension);

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void processAdd(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void clear() override { inner->clear(); }
    void setSampleRate(float rate) override { inner->setSampleRate(rate); }
    void setBufferSize(std::uint32_t size) override { inner->setBufferSize(size); }

    void setSourcePosition(std::uint32_t source, const ondo::Point3& position, bool immediate) override;
    bool is2D() const override { return dimension == 2; }
    AmbisonicNormalization getAmbisonicNormalization() const override { return inner->getAmbisonicNormalization(); }
    /// Forwarded to the inner encoder, which raises an `ondo::Exception` for a
    /// normalisation of the other dimension. Control thread.
    void setAmbisonicNormalization(AmbisonicNormalization normalization) override
    {
        inner->setAmbisonicNormalization(normalization);
    }
    void setComputationMode(const ondo::String& name) override { inner->setComputationMode(name); }
    void setComputationMode(ComputationMode mode) override { inner->setComputationMode(mode); }
    void setInterpolationTime(float ms) override { inner->setInterpolationTime(ms); }
    float getInterpolationTime() const override { return inner->getInterpolationTime(); }

    const Pan& getInner() const { return *inner; }

    /// The fixed directions of `count` inputs, at 1 m. 2-D: a regular ring from the front.
    /// 3-D: two tabulated sets for 8 and 16; for other counts of 6 or more the Fibonacci
    /// lattice (point i at height 1 - (2i + 1) / count, turned by the golden angle from the
    /// last), the same for every call; below 6, none (the inputs stay at the front).
    static ondo::Point3Array directions(std::uint32_t count, std::uint32_t dimension);

private:
    std::uint32_t dimension;
    std::unique_ptr<Pan> inner;
};
} // namespace Quor
