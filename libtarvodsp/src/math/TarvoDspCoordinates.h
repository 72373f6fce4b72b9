#pragma once

#include "math/TarvoDspPoint3.h"
#include "text/TarvoDspString.h"

#include <cstddef>
#include <cstdint>

namespace ondo
{
/// A direction and distance in radians and metres, with the mathematical azimuth: from +x
/// towards +y.
struct Spherical
{
    float azimuth = 0.0f;
    float distance = 0.0f;
    float elevation = 0.0f;
};

/// The notations users give positions in, and the conversions between them and points.
/// Users speak navigational degrees: azimuth 0 at the front, positive to the right, in
/// [-180, 180); elevation positive up. All functions are pure and real-time safe unless noted.
class Coordinates
{
public:
    enum Format : std::int32_t
    {
        xyz = 0,
        xy,
        xIncrement,
        yIncrement,
        zIncrement,
        ade,
        aed,
        ae,
        ad,
        az,
        azim,
        azimIncrement,
        elev,
        elevIncrement,
        azimelev,
        dist,
        distIncrement,
        distMultiply,
        quor3,
        wfs,
        x,
        y,
        z,
        sofaCartesian,
        sofaSpherical,
        none
    };

    static constexpr float pi = 3.1415927f;
    static constexpr float twoPi = 6.2831855f;
    static constexpr float halfPi = 1.5707964f;
    static constexpr float degreesToRadians = 0.017453292f;
    static constexpr float radiansToDegrees = 57.29578f;
    /// The smallest distance a distance format leaves, so that a direction survives.
    static constexpr float minimumDistance = 0.00001f;

    Coordinates() = delete;

    /// The name of a format; "none" for values outside the table.
    static String toString(Format format);
    /// The format of a name, exact case; `none` when the name is not in the table.
    /// The first call builds the table (allocates).
    static Format fromString(const String& name);
    /// How many numbers the format takes.
    static std::size_t getNumberOfValues(Format format);

    /// Applies `count` numbers in `format` to `point`. False, with the point unchanged, for
    /// `none` and beyond, or when fewer numbers are given than the format takes.
    static bool apply(Format format, const float* values, std::size_t count, Point3& point);
    /// Writes the numbers that describe `point` in `format` (at most 3) into `values`.
    /// False for the incremental and single-field formats, which describe no whole point.
    static bool describe(Format format, const Point3& point, float* values, std::size_t& count);

    /// Navigational degrees to mathematical radians, and back.
    static float navigationalToRadians(float azimuthDegrees);
    static float radiansToNavigational(float azimuthRadians);
    /// Navigational azimuth and elevation of a point, in degrees.
    static float azimuthOf(const Point3& p);
    static float elevationOf(const Point3& p);

    static Point3 toCartesian(const Spherical& s);
    static Spherical toSpherical(const Point3& p);
    /// Brings a triple over the poles and out of negative distance: elevation into
    /// [-pi/2, pi/2], distance not negative, azimuth into [-pi, pi).
    static Spherical normalize(Spherical s);
    /// The point at navigational azimuth and elevation (degrees) and distance (m).
    static Point3 fromNavigational(float azimuthDegrees, float elevationDegrees, float distance);

    /// Adds or subtracts 360 until `degrees` lies in [0, 360).
    static float wrapDegrees(float degrees);
};
} // namespace ondo
