#pragma once

#include "containers/TarvoDspVector.h"
#include "math/TarvoDspPoint3Array.h"

#include <cstdint>

namespace ondo
{
/// The loudspeaker triangles of 3-D vector-based panning: a triangulation of the speaker
/// sphere into non-overlapping triplets, each with the inverse of its direction matrix.
/// Changing the speakers and the first gain request after it allocate (control thread);
/// a gain request on a clean set is real-time safe.
class VbapTriplets
{
public:
    struct LoudSpeaker
    {
        std::int32_t index = 0;
        float x = 0.0f;
        float y = 0.0f;
        float z = 0.0f;
        float azimuth = 0.0f;   ///< navigational degrees
        float elevation = 0.0f; ///< degrees
    };

    struct Triplet
    {
        float inverse[9] = {}; ///< row-major inverse of the matrix whose columns are the speakers
        std::uint16_t speakers[3] = {};
    };

    /// The gains of one direction: three speakers and their non-negative gains.
    struct Selection
    {
        float gains[3] = {};
        std::uint16_t speakers[3] = {};
    };

    VbapTriplets() = default;

    /// Takes the speaker positions as they stand (not normalised) and marks the set dirty.
    void setSpeakers(const Point3Array& positions);
    /// Runs the triangulation now if the speakers changed since the last one.
    void update();
    bool isDirty() const { return dirty; }

    /// The triplet around direction `p` (need not be unit) and its gains. Triangulates first
    /// when dirty. No triplet gives three zero gains on speaker 0.
    Selection select(const Point3& p);

    const Vector<LoudSpeaker>& getSpeakers() const { return speakers; }
    const Vector<Triplet>& getTriplets() const { return triplets; }

    /// The quality of a triangle: volume of the unit vectors over their angular perimeter.
    static float quality(const Point3& p, const Point3& q, const Point3& r);
    /// Whether the great-circle arcs a-b and c-d cross (unit vectors).
    static bool arcsCross(const Point3& a, const Point3& b, const Point3& c, const Point3& d);
    /// Inverse of the 3 by 3 matrix with columns a, b, c; false when |det| is below 1e-6.
    static bool invert(const Point3& a, const Point3& b, const Point3& c, float inverse[9]);

private:
    void triangulate();
    Point3 position(std::size_t i) const { return {speakers[i].x, speakers[i].y, speakers[i].z}; }

    Vector<LoudSpeaker> speakers;
    Vector<Triplet> triplets;
    bool dirty = true;
};
} // namespace ondo
