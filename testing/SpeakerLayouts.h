#pragma once

#include "math/TarvoDspCoordinates.h"
#include "math/TarvoDspPoint3Array.h"

namespace tarvo::testing
{
/// Six speakers on the axes: every direction lies in one face.
inline ondo::Point3Array octahedron()
{
    return {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
}

/// Eight speakers on the corners of a cube: square faces, split in two triangles each.
inline ondo::Point3Array cube()
{
    ondo::Point3Array c;
    for (float x : {-1.0f, 1.0f})
        for (float y : {-1.0f, 1.0f})
            for (float z : {-1.0f, 1.0f})
                c.pushBack({x, y, z});
    return c;
}
/// Eight speakers on the horizon from the front, four higher up from `upperStart` degrees
/// of azimuth, and one overhead if asked: open below.
inline ondo::Point3Array twoRingDome(float distance, float upperElevation, float upperStart, bool overhead)
{
    ondo::Point3Array d;
    for (int i = 0; i < 8; ++i)
        d.pushBack(ondo::Coordinates::fromNavigational(45.0f * i, 0.0f, distance));
    for (int i = 0; i < 4; ++i)
        d.pushBack(ondo::Coordinates::fromNavigational(upperStart + 90.0f * i, upperElevation, distance));
    if (overhead)
        d.pushBack(ondo::Coordinates::fromNavigational(0.0f, 90.0f, distance));
    return d;
}
} // namespace tarvo::testing
