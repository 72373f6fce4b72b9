#include "TarvoverbNotation.h"

#include "math/TarvoDspCoordinates.h"

#include <cmath>
#include <vector>

namespace tarvo::host
{
namespace
{
using ondo::Coordinates;

constexpr const char* defaultFormatWarning = "using default coordinate type (ade)";

std::vector<float> numbersOf(Atoms atoms)
{
    std::vector<float> values;
    values.reserve(atoms.size());
    for (const Atom& atom : atoms)
        values.push_back(atom.plainNumber());
    return values;
}

/// A format named by a leading symbol, consumed; `ade` with the warning when the list starts
/// otherwise. `none` for an unknown name.
Coordinates::Format leadingFormat(Atoms& atoms, Console& console)
{
    if (!atoms.empty() && atoms.front().type == Atom::Type::Symbol)
    {
        const Coordinates::Format format = Coordinates::fromString(ondo::String(std::string(atoms.front().symbol)));
        atoms = atoms.subspan(1);
        return format;
    }
    console.warn(defaultFormatWarning);
    return Coordinates::ade;
}

/// "quor3": azimuth (navigational, mirrored), distance, elevation; the missing ones kept.
bool applyQuor3(Atoms atoms, ondo::Point3& point)
{
    if (matchesPattern("nnn", atoms, true))
    {
        const float v[3] = {atoms[0].plainNumber(), atoms[1].plainNumber(), atoms[2].plainNumber()};
        return Coordinates::apply(Coordinates::quor3, v, 3, point);
    }
    if (matchesPattern("nn", atoms, true))
    {
        const float r = std::sqrt(point.x * point.x + point.y * point.y + point.z * point.z);
        const float e = r > 0.0f ? std::asin(point.z / r) * Coordinates::radiansToDegrees : 0.0f;
        const float v[3] = {atoms[0].plainNumber(), atoms[1].plainNumber(), e};
        return Coordinates::apply(Coordinates::quor3, v, 3, point);
    }
    if (matchesPattern("n", atoms, true))
    {
        ondo::Spherical s = Coordinates::toSpherical(point);
        s.azimuth = Coordinates::navigationalToRadians(-atoms[0].plainNumber());
        point = Coordinates::toCartesian(s);
        return true;
    }
    return false;
}
} // namespace

void reportInvalidMessage(Console& console, const std::string& text, Atoms atoms)
{
    if (atoms.empty())
        console.error(text);
    else
        console.error(text + " " + renderAtoms(atoms));
}

bool parseSourceCoordinates(Atoms atoms, ondo::Point3& point, Console& console)
{
    const Coordinates::Format format = leadingFormat(atoms, console);
    if (format == Coordinates::none)
        return false;
    ondo::Point3 result = point;
    if (format == Coordinates::quor3)
    {
        if (!applyQuor3(atoms, result))
        {
            console.error("error reading source coordinates");
            return false;
        }
        point = result;
        return true;
    }
    const std::size_t needed = Coordinates::getNumberOfValues(format);
    if (atoms.size() < needed)
    {
        console.error("not enough source coordinates. expected " + std::to_string(needed) + " coordinates");
        return false;
    }
    if (atoms.size() > needed)
        console.warn("too many source coordinates. only " + std::to_string(needed) + " coordinates will be read");
    const std::vector<float> values = numbersOf(atoms.first(needed));
    if (!Coordinates::apply(format, values.data(), needed, result))
    {
        console.error("error reading source coordinates");
        return false;
    }
    point = result;
    return true;
}

bool parseSpeaker(Atoms atoms, std::int32_t numSpeakers, std::int32_t& index, ondo::Point3& point,
                  Console& console)
{
    if (numSpeakers <= 0)
        return false;
    const Atoms whole = atoms;
    const auto fail = [&] {
        reportInvalidMessage(console, "invalid message : speaker", whole);
        return false;
    };
    if (atoms.empty() || atoms.front().type != Atom::Type::Long)
        return fail();
    const long long number = atoms.front().integer();
    if (number < 1 || number > numSpeakers)
    {
        console.error("invalid speaker index " + std::to_string(number));
        return fail();
    }
    atoms = atoms.subspan(1);
    const Coordinates::Format format = leadingFormat(atoms, console);
    if (format == Coordinates::none)
    {
        console.error("unknown coordinate type");
        return fail();
    }
    const std::size_t needed = Coordinates::getNumberOfValues(format);
    if (atoms.size() < needed)
    {
        console.error("invalid speaker message");
        return fail();
    }
    if (atoms.size() > needed)
        console.warn("too many loudspeakers positions. only 1 position will be read");
    const std::vector<float> values = numbersOf(atoms.first(needed));
    ondo::Point3 result; // a speaker starts from the origin, whatever the notation leaves out
    if (!Coordinates::apply(format, values.data(), needed, result))
    {
        console.error("error reading speaker position");
        return fail();
    }
    index = static_cast<std::int32_t>(number - 1);
    point = result;
    return true;
}

bool parseSpeakers(Atoms atoms, ondo::Point3Array& positions, Console& console)
{
    const std::size_t count = positions.size();
    if (count == 0)
        return false;
    const Atoms whole = atoms;
    const auto fail = [&] {
        reportInvalidMessage(console, "invalid message : speakers", whole);
        return false;
    };
    const Coordinates::Format format = leadingFormat(atoms, console);
    if (format == Coordinates::none)
        return fail();
    const std::size_t needed = Coordinates::getNumberOfValues(format);
    if (atoms.size() < needed * count)
    {
        console.error("not enough loudspeakers positions. expected " + std::to_string(count) +
                      " loudspeakers positions");
        return fail();
    }
    if (atoms.size() > needed * count)
        console.warn("too many loudspeakers positions. only " + std::to_string(count) + " positions will be read");
    const std::vector<float> values = numbersOf(atoms.first(needed * count));
    ondo::Point3Array result(count);
    for (std::size_t k = 0; k < count; ++k)
    {
        result[k] = ondo::Point3();
        if (!Coordinates::apply(format, values.data() + k * needed, needed, result[k]))
        {
            console.error("error reading " + std::to_string(k + 1) + " th speaker position");
            return fail();
        }
    }
    positions = result;
    return true;
}
} // namespace tarvo::host
