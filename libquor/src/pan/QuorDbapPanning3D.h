#pragma once

#include "pan/QuorDbapPanning.h"

namespace Quor
{
/// DBAP in space: distances in three dimensions, the blur pulling them towards the
/// source's distance from the centre. With `setMuteOutside` a source is silenced when its
/// squared distance from the centre exceeds the setup's radius; nothing is softened.
class DbapPanning3D : public DbapPanning
{
public:
    /// Installs the default layout. Control thread; allocates.
    DbapPanning3D(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Control thread; allocates only to copy the positions. Raises `ondo::Exception`
    /// unless there is one position per speaker.
    void setSpeakers(const ondo::Point3Array& speakers) override;
    /// Control thread; real-time safe.
    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    void updateAllSources() override { recomputeAllSources(); }
    bool is2D() const override { return false; }

    /// The largest distance of a speaker from the centre, in m.
    float getRadius() const { return radius; }

private:
    float radius = 0.0f;
};
} // namespace Quor
