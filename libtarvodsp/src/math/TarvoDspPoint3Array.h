#pragma once

#include "containers/TarvoDspVector.h"
#include "math/TarvoDspCoordinates.h"
#include "math/TarvoDspPoint3.h"
#include "math/TarvoDspRotation.h"

namespace ondo
{
/// A plane as a unit normal (nx, ny, nz) and the offset d = n . p of its points.
struct Plane
{
    float nx = 0.0f;
    float ny = 0.0f;
    float nz = 1.0f;
    float d = 0.0f;

    Point3 normal() const { return {nx, ny, nz}; }
};

/// A list of points: speaker layouts, source lists, polygons. Building allocates; the
/// queries allocate nothing.
class Point3Array : public Vector<Point3>
{
public:
    using Vector<Point3>::Vector;
    Point3Array() = default;

    /// Points from a flat list of numbers, each group applied to a fresh origin. The empty
    /// array when the list is not a whole number of groups or the format takes no number.
    static Point3Array fromFormat(Coordinates::Format format, const float* values, std::size_t count);
    /// The usual layout of `n` speakers at 1 m on the horizon: fixed tables up to 8, a
    /// regular ring from the front beyond.
    static Point3Array defaultLayout(std::size_t n);

    /// The mean point; the origin for an empty array.
    Point3 centroid() const;
    /// The largest distance from `point`; 0 for an empty array.
    float maxDistanceTo(const Point3& point) const;
    /// The first point nearest to `point`; -1 for an empty array.
    int indexOfClosest(const Point3& point) const;
    /// Whether every point lies on the plane through points 0, 1, 2 within `epsilon` (a
    /// tolerance relative to the squared normal).
    bool isPlanar(float epsilon) const;
    /// The plane through 3 points, through the line of 2, or the least-squares plane of more.
    Plane fitPlane() const;
    /// The rotation that lays the fitted plane onto the horizontal: `direction` onto +x,
    /// the in-plane perpendicular onto +y, the normal onto +z.
    Rotation getRotationFromPlane() const;
    /// Unit vector from point 0 to point 1; (1, 0, 0) when undefined.
    Point3 direction() const;
    /// In the plane, at right angles to `direction`; (0, 1, 0) when undefined.
    Point3 perpendicular() const;
    /// Whether `point` lies in the plane of the polygon (squared distance at most `epsilon`)
    /// and inside it, the points being the vertices in order.
    bool containsInPolygon(const Point3& point, float epsilon) const;
};
} // namespace ondo
