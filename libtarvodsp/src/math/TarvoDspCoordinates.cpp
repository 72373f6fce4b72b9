#include "math/TarvoDspCoordinates.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace ondo
{
namespace
{
/// Brings `value` into [low, low + span) by whole spans. Far values are first brought near
/// with an exact remainder, so that a wild input costs no long loop; non-finite gives `low`.
float wrapInto(float value, float low, float span)
{
    if (!std::isfinite(value))
        return low;
    if (std::fabs(value) > 64.0f * span)
        value = std::fmod(value, span);
    while (value < low)
        value += span;
    while (value >= low + span)
        value -= span;
    return value;
}

constexpr const char* formatNames[] = {"xyz",    "xy",       "x++",    "y++",    "z++",           "ade",
                                       "aed",    "ae",       "ad",     "az",     "azim",          "azim++",
                                       "elev",   "elev++",   "azimelev", "dist", "dist++",        "dist*=",
                                       "quor3",  "wfs",      "x",      "y",      "z",             "sofacartesian",
                                       "sofaspherical"};

constexpr std::size_t formatCounts[] = {3, 2, 1, 1, 1, 3, 3, 2, 2, 1, 1, 1, 1, 1, 2, 1, 1, 1, 3, 2, 1, 1, 1, 3, 3};

/// Replaces the distance of `p`, keeping its direction.
Point3 withDistance(const Point3& p, float distance)
{
    Spherical s = Coordinates::toSpherical(p);
    s.distance = distance;
    return Coordinates::toCartesian(s);
}

/// Replaces the navigational azimuth of `p`, keeping elevation and distance.
Point3 withAzimuth(const Point3& p, float azimuthDegrees)
{
    Spherical s = Coordinates::toSpherical(p);
    s.azimuth = Coordinates::navigationalToRadians(azimuthDegrees);
    return Coordinates::toCartesian(Coordinates::normalize(s));
}

/// Replaces the elevation of `p`; beyond a pole the azimuth turns half a circle.
Point3 withElevation(const Point3& p, float elevationDegrees)
{
    Spherical s = Coordinates::toSpherical(p);
    const float e = wrapInto(elevationDegrees + 180.0f, 0.0f, 360.0f) - 180.0f;
    s.elevation = e * Coordinates::degreesToRadians;
    if (e > 90.0f || e < -90.0f)
        s = Coordinates::normalize(s);
    return Coordinates::toCartesian(s);
}
} // namespace

float Coordinates::wrapDegrees(float degrees)
{
    return wrapInto(degrees, 0.0f, 360.0f);
}

String Coordinates::toString(Format format)
{
    if (format < xyz || format >= none)
        return "none";
    return formatNames[format];
}

Coordinates::Format Coordinates::fromString(const String& name)
{
    static const std::map<String, Format> table = [] {
        std::map<String, Format> names;
        for (std::int32_t f = xyz; f < none; ++f)
            names.emplace(toString(static_cast<Format>(f)), static_cast<Format>(f));
        return names;
    }();
    const auto found = table.find(name);
    return found == table.end() ? none : found->second;
}

std::size_t Coordinates::getNumberOfValues(Format format)
{
    return (format < xyz || format >= none) ? 0 : formatCounts[format];
}

float Coordinates::navigationalToRadians(float azimuthDegrees)
{
    return (wrapDegrees(270.0f - azimuthDegrees) - 180.0f) * degreesToRadians;
}

float Coordinates::radiansToNavigational(float azimuthRadians)
{
    return wrapDegrees(270.0f - azimuthRadians * radiansToDegrees) - 180.0f;
}

float Coordinates::azimuthOf(const Point3& p)
{
    return radiansToNavigational(std::atan2(p.y, p.x));
}

float Coordinates::elevationOf(const Point3& p)
{
    const float d = p.length();
    return d > 0.0f ? std::asin(p.z / d) * radiansToDegrees : 0.0f;
}

Point3 Coordinates::toCartesian(const Spherical& s)
{
    const float horizontal = s.distance * std::cos(s.elevation);
    return {std::cos(s.azimuth) * horizontal, std::sin(s.azimuth) * horizontal, std::sin(s.elevation) * s.distance};
}

Spherical Coordinates::toSpherical(const Point3& p)
{
    Spherical s;
    s.distance = p.length();
    s.elevation = s.distance > 0.0f ? std::asin(std::clamp(p.z / s.distance, -1.0f, 1.0f)) : 0.0f;
    s.azimuth = std::atan2(p.y, p.x);
    return s;
}

Spherical Coordinates::normalize(Spherical s)
{
    s.elevation = wrapInto(s.elevation, -pi, twoPi);
    if (s.elevation > halfPi)
    {
        s.azimuth += pi;
        s.elevation = pi - s.elevation;
    }
    else if (s.elevation < -halfPi)
    {
        s.azimuth += pi;
        s.elevation = -pi - s.elevation;
    }
    if (s.distance < 0.0f)
    {
        s.distance = -s.distance;
        s.elevation = -s.elevation;
        s.azimuth += pi;
    }
    s.azimuth = wrapInto(s.azimuth, -pi, twoPi);
    return s;
}

Point3 Coordinates::fromNavigational(float azimuthDegrees, float elevationDegrees, float distance)
{
    Spherical s;
    s.azimuth = navigationalToRadians(azimuthDegrees);
    s.elevation = elevationDegrees * degreesToRadians;
    s.distance = distance;
    return toCartesian(normalize(s));
}

bool Coordinates::apply(Format format, const float* v, std::size_t count, Point3& p)
{
    if (format < xyz || format >= none || count < formatCounts[format] || (count > 0 && v == nullptr))
        return false;
    switch (format)
    {
        case xyz:
        case sofaCartesian: p = {v[0], v[1], v[2]}; break;
        case xy: p = {v[0], v[1], 0.0f}; break;
        case xIncrement: p.x += v[0]; break;
        case yIncrement: p.y += v[0]; break;
        case zIncrement: p.z += v[0]; break;
        case ade: p = fromNavigational(v[0], v[2], v[1]); break;
        case aed: p = fromNavigational(v[0], v[1], v[2]); break;
        case ae: p = fromNavigational(v[0], v[1], 1.0f); break;
        case ad: p = fromNavigational(v[0], 0.0f, v[1]); break;
        case az: p = fromNavigational(v[0], 0.0f, 1.0f); break;
        case azim: p = withAzimuth(p, v[0]); break;
        case azimIncrement: p = withAzimuth(p, azimuthOf(p) + v[0]); break;
        case elev: p = withElevation(p, v[0]); break;
        case elevIncrement: p = withElevation(p, elevationOf(p) + v[0]); break;
        case azimelev: p = fromNavigational(v[0], v[1], p.length()); break;
        case dist: p = withDistance(p, std::max(std::fabs(v[0]), minimumDistance)); break;
        case distIncrement: p = withDistance(p, std::max(p.length() + v[0], minimumDistance)); break;
        case distMultiply: p = withDistance(p, std::max(p.length() * v[0], minimumDistance)); break;
        case quor3: p = fromNavigational(-v[0], v[2], v[1]); break;
        case wfs: p = fromNavigational(-v[0], 0.0f, v[1]); break;
        case x: p.x = v[0]; break;
        case y: p.y = v[0]; break;
        case z: p.z = v[0]; break;
        case sofaSpherical: p = fromNavigational(-v[0], v[1], v[2]); break;
        case none: return false;
    }
    return true;
}

bool Coordinates::describe(Format format, const Point3& p, float* v, std::size_t& count)
{
    const float a = azimuthOf(p);
    const float e = elevationOf(p);
    const float d = p.length();
    auto put = [&](std::initializer_list<float> values) {
        count = 0;
        for (float value : values)
            v[count++] = value;
        return true;
    };
    switch (format)
    {
        case xyz:
        case sofaCartesian: return put({p.x, p.y, p.z});
        case xy: return put({p.x, p.y});
        case ade: return put({a, d, e});
        case aed: return put({a, e, d});
        case ae: return put({a, e});
        case ad: return put({a, d});
        case az: return put({a});
        case quor3: return put({-a, d, e});
        case wfs: return put({wrapDegrees(std::atan2(p.y, p.x) * radiansToDegrees + 270.0f), d});
        case sofaSpherical: return put({wrapDegrees(-a), e, d});
        default: count = 0; return false;
    }
}
} // namespace ondo
