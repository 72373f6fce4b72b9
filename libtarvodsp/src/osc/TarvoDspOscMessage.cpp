#include "osc/TarvoDspOscMessage.h"

#include "common/TarvoDspException.h"

#include <cmath>
#include <cstdlib>

namespace ondo
{
namespace
{
OSCArgument argumentFromToken(const String& token)
{
    if (StringHelper::isInteger(token))
    {
        const double value = std::strtod(token.c_str(), nullptr);
        if (value >= -2147483648.0 && value <= 2147483647.0)
            return OSCArgument(static_cast<std::int32_t>(value));
        // Whole numbers beyond 32 bits keep their value in 64 bits rather than wrap.
        if (value >= -9.2233720368547758e18 && value < 9.2233720368547758e18)
            return OSCArgument(static_cast<std::int64_t>(value));
    }
    if (StringHelper::isBoolean(token))
        return OSCArgument(StringHelper::toLowerCase(token) == "true");
    if (StringHelper::isNumber(token))
        return OSCArgument(static_cast<float>(std::strtod(token.c_str(), nullptr)));
    return OSCArgument(StringHelper::unquoted(token));
}
} // namespace

OSCMessage OSCMessage::fromText(const String& line)
{
    const std::vector<String> tokens = StringHelper::splitQuoted(line);
    if (tokens.empty())
        throw Exception("invalid OSC message", ONDO_SOURCE_LOCATION, false);
    OSCMessage message(OSCAddress::fromPattern(tokens.front()));
    for (std::size_t i = 1; i < tokens.size(); ++i)
        message.addArgument(argumentFromToken(tokens[i]));
    return message;
}

OSCMessage& OSCMessage::addArgument(const OSCArgument& argument)
{
    arguments.push_back(argument);
    return *this;
}

OSCMessage& OSCMessage::addArgument(std::uint32_t value)
{
    if (value > 2147483647u)
        return addArgument(OSCArgument(static_cast<std::int64_t>(value)));
    return addArgument(OSCArgument(static_cast<std::int32_t>(value)));
}

OSCMessage& OSCMessage::addArgument(const Vector<double>& values)
{
    for (const double v : values)
        arguments.emplace_back(static_cast<float>(v));
    return *this;
}

Vector<char> OSCMessage::getTypeTags() const
{
    Vector<char> tags(arguments.size());
    for (std::size_t i = 0; i < arguments.size(); ++i)
        tags[i] = arguments[i].getType();
    return tags;
}

Vector<float> OSCMessage::getArgumentsAsFloats() const
{
    for (const OSCArgument& a : arguments)
        if (!a.isNumber())
            return {};
    Vector<float> values(arguments.size());
    for (std::size_t i = 0; i < arguments.size(); ++i)
        values[i] = arguments[i].getFloat32();
    return values;
}

bool OSCMessage::getBool(std::size_t i) const
{
    return i < arguments.size() && arguments[i].getBool();
}

float OSCMessage::getFloat(std::size_t i) const
{
    return i < arguments.size() ? arguments[i].getFloat32() : 0.0f;
}

bool OSCMessage::isOfClass(const OSCArgument& argument, char letter)
{
    const char t = argument.getType();
    switch (letter)
    {
    case 'b': return t == 'T' || t == 'F' || t == 'i' || t == 'h';
    case 'd': return t == 'd';
    case 'f': return t == 'f';
    case 'i':
    case 'l': return t == 'i' || t == 'h';
    case 'n': return argument.isNumber();
    case 's': return t == 's';
    case 'u': return (t == 'i' || t == 'h') && argument.getInt64() >= 0;
    default: return false;
    }
}

bool OSCMessage::matchesSingle(char letter) const
{
    return arguments.size() == 1 && isOfClass(arguments[0], letter);
}

bool OSCMessage::matchesList(std::string_view letters, bool exact) const
{
    if (exact ? letters.size() != arguments.size() : letters.size() > arguments.size())
        return false;
    for (std::size_t i = 0; i < letters.size(); ++i)
        if (!isOfClass(arguments[i], letters[i]))
            return false;
    return true;
}

bool OSCMessage::matches(std::string_view address) const
{
    OSCAddress spare;
    return matches(OSCAddressCache::find(address, spare));
}

bool OSCMessage::startsWith(std::string_view prefix) const
{
    OSCAddress spare;
    return startsWith(OSCAddressCache::find(prefix, spare));
}

OSCMessage OSCMessage::withoutFirstParts(std::size_t n) const
{
    OSCMessage copy(*this);
    copy.removeFirst(n);
    return copy;
}

String OSCMessage::toText() const
{
    String values;
    for (const OSCArgument& a : arguments)
        values += a.toText() + ' ';
    return getText() + ' ' + StringHelper::trimEnd(values);
}
} // namespace ondo
