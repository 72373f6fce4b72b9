#include "PositionMessages.h"

#include "RenderSettings.h"
#include "math/TarvoDspCoordinates.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>

namespace tarvo::render
{
namespace
{
using ondo::Coordinates;

std::vector<std::string> words(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> result;
    for (std::string word; stream >> word;)
        result.push_back(word);
    return result;
}

bool isNumber(const std::string& word, double& value)
{
    const char* begin = word.c_str();
    char* end = nullptr;
    const double parsed = std::strtod(begin, &end);
    if (end == begin || *end != '\0' || !std::isfinite(parsed))
        return false;
    value = parsed;
    return true;
}

/// The format named by the word at `next`, consuming it; "ade" with a note when the word is a
/// number. An unknown name is an error.
Coordinates::Format readFormat(const std::vector<std::string>& list, std::size_t& next, const char* message,
                               std::vector<std::string>& notes)
{
    double unused = 0.0;
    if (next < list.size() && !isNumber(list[next], unused))
    {
        const Coordinates::Format format = Coordinates::fromString(list[next]);
        if (format == Coordinates::none)
            throw UsageError(std::string(message) + ": unknown coordinate type \"" + list[next] + "\"");
        ++next;
        return format;
    }
    notes.push_back(std::string(message) + ": using default coordinate type (ade)");
    return Coordinates::ade;
}

std::vector<float> readNumbers(const std::vector<std::string>& list, std::size_t next, const char* message)
{
    std::vector<float> values;
    for (; next < list.size(); ++next)
    {
        double value = 0.0;
        if (!isNumber(list[next], value))
            throw UsageError(std::string(message) + ": \"" + list[next] + "\" is not a number");
        // Narrowing a double beyond the float range is undefined; no position needs one.
        if (std::fabs(value) > double(std::numeric_limits<float>::max()))
            throw UsageError(std::string(message) + ": \"" + list[next] + "\" is too large for a coordinate");
        values.push_back(static_cast<float>(value));
    }
    return values;
}
} // namespace

SourcePlacement parseSourceMessage(const std::string& text, const ondo::Point3Array& present,
                                   std::vector<std::string>& notes)
{
    const std::vector<std::string> list = words(text);
    double indexValue = 0.0;
    if (list.empty() || !isNumber(list[0], indexValue) || indexValue != std::floor(indexValue))
        throw UsageError("--source \"" + text + "\": the first word is the source number, from 1");
    // Compared as a double before any conversion: an index beyond the integers has no int.
    if (indexValue < 1.0 || indexValue > static_cast<double>(present.size()))
        throw UsageError("--source \"" + text + "\": invalid source index " + list[0] + " (there are " +
                         plural(present.size(), "source") + ")");
    SourcePlacement placement;
    placement.index = static_cast<std::uint32_t>(indexValue) - 1;
    placement.position = present[placement.index];

    std::size_t next = 1;
    const std::string context = "--source \"" + text + "\"";
    const Coordinates::Format format = readFormat(list, next, context.c_str(), notes);
    const std::vector<float> values = readNumbers(list, next, context.c_str());
    const std::size_t needed = Coordinates::getNumberOfValues(format);
    if (values.size() < needed)
        throw UsageError(context + ": not enough source coordinates. expected " + std::to_string(needed) +
                         " coordinates");
    if (values.size() > needed)
        notes.push_back(context + ": too many source coordinates. only " + std::to_string(needed) +
                        " coordinates will be read");
    if (!Coordinates::apply(format, values.data(), needed, placement.position))
        throw UsageError(context + ": error reading source coordinates");
    return placement;
}

ondo::Point3Array parseSpeakersMessage(const std::string& text, std::uint32_t numSpeakers,
                                       std::vector<std::string>& notes)
{
    const std::vector<std::string> list = words(text);
    const std::string context = "--speakers \"" + text + "\"";
    std::size_t next = 0;
    const Coordinates::Format format = readFormat(list, next, context.c_str(), notes);
    const std::vector<float> values = readNumbers(list, next, context.c_str());
    const std::size_t needed = Coordinates::getNumberOfValues(format);
    if (values.size() < needed * numSpeakers)
        throw UsageError(context + ": not enough loudspeakers positions. expected " + std::to_string(numSpeakers) +
                         " loudspeakers positions");
    if (values.size() > needed * numSpeakers)
        notes.push_back(context + ": too many loudspeakers positions. only " + std::to_string(numSpeakers) +
                        " positions will be read");
    ondo::Point3Array positions(numSpeakers);
    for (std::uint32_t k = 0; k < numSpeakers; ++k)
    {
        positions[k] = ondo::Point3();
        if (!Coordinates::apply(format, values.data() + k * needed, needed, positions[k]))
            throw UsageError(context + ": error reading " + std::to_string(k + 1) + " th speaker position");
    }
    return positions;
}
} // namespace tarvo::render
