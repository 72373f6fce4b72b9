#pragma once

#include "math/TarvoDspConvexHull2D.h"
#include "pan/QuorDbapPanning.h"

namespace Quor
{
/// DBAP in the horizontal plane. The single blur ignores height; a source outside the
/// convex hull of the speakers (seen from above) is softened with its distance from the
/// centre, or silenced with `setMuteOutside`.
class DbapPanning2D : public DbapPanning
{
public:
    /// Installs the default layout. Control thread; allocates.
    DbapPanning2D(std::uint32_t numSources, std::uint32_t numSpeakers);

    /// Control thread; allocates (the hull). Raises `ondo::Exception` unless there is one
    /// position per speaker.
    void setSpeakers(const ondo::Point3Array& speakers) override;
    /// Control thread; real-time safe.
    void computeGains(const ondo::Point3& position, float* row, std::uint32_t source) override;
    void updateAllSources() override { recomputeAllSources(); }
    bool is2D() const override { return true; }

    /// The hull's vertices, clockwise, at z = 0.
    const ondo::Point3Array& getHullPoints() const { return hullPoints; }

private:
    void rebuildHull();

    ondo::ConvexHull2D hull;
    ondo::Point3Array hullPoints;
    bool hullDirty = true;
};
} // namespace Quor
