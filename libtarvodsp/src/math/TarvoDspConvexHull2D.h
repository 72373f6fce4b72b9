#pragma once

#include "containers/TarvoDspVector.h"
#include "math/TarvoDspPoint3Array.h"

#include <cstdint>

namespace ondo
{
/// The convex hull of points in the horizontal plane (z ignored), by a Graham scan.
/// Building allocates (control thread); `contains` is real-time safe.
class ConvexHull2D
{
public:
    struct Point2D
    {
        float x = 0.0f;
        float y = 0.0f;
        float z = 0.0f;
        std::int32_t number = 0; ///< index in the input plus 1
        bool deleted = false;
    };

    ConvexHull2D() = default;
    explicit ConvexHull2D(const Point3Array& points) { build(points); }

    /// Computes the hull of `points`. Collinear points on the hull keep only the two ends.
    void build(const Point3Array& points);

    /// The hull's vertices, clockwise, with z = 0. Fewer than 2 input points are the hull.
    const Point3Array& getHull() const { return hull; }
    /// Whether `p` lies inside or on the hull; the empty hull contains everything.
    bool contains(const Point3& p) const;

private:
    Point3Array hull;
};
} // namespace ondo
