#include "text/TarvoDspString.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace ondo
{
namespace
{
bool isBlank(char c)
{
    return std::isspace(static_cast<unsigned char>(c)) != 0;
}

String formatShortest(double value, bool asFloat)
{
    if (std::isnan(value))
        return "nan"; // printf may write "-nan"; the sign of a NaN means nothing to a reader
    if (std::isinf(value))
        return value < 0 ? "-inf" : "inf";
    // The fewest significant digits that give the value back...
    const int maximumDigits = asFloat ? 9 : 17;
    char text[64];
    int digits = 1;
    for (; digits < maximumDigits; ++digits)
    {
        std::snprintf(text, sizeof text, "%.*g", digits, value);
        if (asFloat ? std::strtof(text, nullptr) == static_cast<float>(value) : std::strtod(text, nullptr) == value)
            break;
    }
    // ...written with at least the six digits of plain "%g", so that "%g" only turns to the
    // exponent form where it would by default: 100 stays "100", 1e-07 and 1e+20 do not.
    // Reprinting the short decimal, not the value, keeps the extra digits zero (and trimmed).
    std::snprintf(text, sizeof text, "%.*g", digits, value);
    const double shortest = std::strtod(text, nullptr);
    std::snprintf(text, sizeof text, "%.*g", std::max(digits, 6), shortest);
    return text;
}
} // namespace

String StringHelper::toString(std::int32_t value) { return std::to_string(value); }
String StringHelper::toString(std::int64_t value) { return std::to_string(value); }
String StringHelper::toString(std::uint32_t value) { return std::to_string(value); }
String StringHelper::toString(std::uint64_t value) { return std::to_string(value); }
String StringHelper::toString(float value) { return formatShortest(value, true); }
String StringHelper::toString(double value) { return formatShortest(value, false); }
String StringHelper::toString(bool value) { return value ? "true" : "false"; }

int StringHelper::toInt(const String& text)
{
    return std::atoi(text.c_str());
}

double StringHelper::toFloat(const String& text)
{
    return std::atof(text.c_str());
}

bool StringHelper::isNumber(const String& text)
{
    const String t = trim(text);
    if (t.empty())
        return false;
    std::size_t i = (t[0] == '+' || t[0] == '-') ? 1 : 0;
    // The words that number-to-text writes for the values without digits read back as numbers.
    const String word = toLowerCase(t.substr(i));
    if (word == "inf" || word == "infinity" || word == "nan")
        return true;
    if (t.size() > i + 2 && t[i] == '0' && (t[i + 1] == 'x' || t[i + 1] == 'X'))
        return std::all_of(t.begin() + static_cast<std::ptrdiff_t>(i + 2), t.end(),
                           [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; });
    bool digits = false;
    while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i])))
        digits = true, ++i;
    if (i < t.size() && t[i] == '.')
        for (++i; i < t.size() && std::isdigit(static_cast<unsigned char>(t[i])); ++i)
            digits = true;
    if (!digits)
        return false;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E'))
    {
        ++i;
        if (i < t.size() && (t[i] == '+' || t[i] == '-'))
            ++i;
        bool exponentDigits = false;
        while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i])))
            exponentDigits = true, ++i;
        if (!exponentDigits)
            return false;
    }
    return i == t.size();
}

bool StringHelper::isInteger(const String& text)
{
    if (!isNumber(text))
        return false;
    const double value = std::strtod(trim(text).c_str(), nullptr);
    return std::isfinite(value) && value == std::trunc(value);
}

bool StringHelper::isBoolean(const String& text)
{
    const String t = toLowerCase(trim(text));
    return t == "true" || t == "false";
}

bool StringHelper::contains(const String& text, const String& part)
{
    return text.find(part) != String::npos;
}

bool StringHelper::containsAny(const String& text, const String& characters)
{
    return text.find_first_of(characters) != String::npos;
}

bool StringHelper::startsWith(const String& text, const String& prefix)
{
    return text.starts_with(prefix);
}

bool StringHelper::endsWith(const String& text, const String& suffix)
{
    return text.ends_with(suffix);
}

int StringHelper::indexOf(const String& text, const String& part, std::size_t start)
{
    const auto position = text.find(part, start);
    return position == String::npos ? -1 : static_cast<int>(position);
}

String StringHelper::replaceAll(const String& text, const String& from, const String& to)
{
    if (from.empty())
        return text;
    String result;
    std::size_t position = 0;
    for (std::size_t found; (found = text.find(from, position)) != String::npos; position = found + from.size())
        result.append(text, position, found - position).append(to);
    return result.append(text, position, String::npos);
}

String StringHelper::trimStart(const String& text)
{
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    return String(first, text.end());
}

String StringHelper::trimEnd(const String& text)
{
    const auto last = std::find_if_not(text.rbegin(), text.rend(), isBlank);
    return String(text.begin(), last.base());
}

String StringHelper::trim(const String& text)
{
    return trimEnd(trimStart(text));
}

String StringHelper::toLowerCase(const String& text)
{
    String result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

String StringHelper::toUpperCase(const String& text)
{
    String result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return result;
}

String StringHelper::quoted(const String& text, char quote)
{
    return quote + text + quote;
}

bool StringHelper::isQuoted(const String& text)
{
    return text.size() >= 2 && ((text.front() == '"' && text.back() == '"') || (text.front() == '\'' && text.back() == '\''));
}

String StringHelper::unquoted(const String& text)
{
    return isQuoted(text) ? text.substr(1, text.size() - 2) : text;
}

String StringHelper::substring(const String& text, std::size_t start, std::size_t length)
{
    return start >= text.size() ? String() : text.substr(start, length);
}

String StringHelper::dropLastCharacters(const String& text, std::size_t n)
{
    return n >= text.size() ? String() : text.substr(0, text.size() - n);
}

String StringHelper::padLeft(const String& text, std::size_t width, char fill)
{
    return text.size() >= width ? text : String(width - text.size(), fill) + text;
}

String StringHelper::padRight(const String& text, std::size_t width, char fill)
{
    return text.size() >= width ? text : text + String(width - text.size(), fill);
}

std::vector<String> StringHelper::split(const String& text, const String& separator, bool keepEmpty)
{
    std::vector<String> parts;
    if (separator.empty())
    {
        if (!text.empty() || keepEmpty)
            parts.push_back(text);
        return parts;
    }
    std::size_t position = 0;
    while (true)
    {
        const std::size_t found = text.find(separator, position);
        const String part = text.substr(position, found == String::npos ? String::npos : found - position);
        if (keepEmpty || !part.empty())
            parts.push_back(part);
        if (found == String::npos)
            break;
        position = found + separator.size();
    }
    return parts;
}

std::vector<String> StringHelper::splitQuoted(const String& text, char quote)
{
    std::vector<String> tokens;
    String token;
    const auto flush = [&] {
        String trimmed = trim(token);
        if (!trimmed.empty())
            tokens.push_back(std::move(trimmed));
        token.clear();
    };
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char c = text[i];
        if (c == quote)
        {
            // A quote with a partner further on holds everything up to it in this token; a
            // lone quote is an ordinary character.
            const std::size_t closing = text.find(quote, i + 1);
            if (closing != String::npos)
            {
                token.append(text, i, closing - i + 1);
                i = closing;
                continue;
            }
        }
        if (isBlank(c))
            flush();
        else
            token += c;
    }
    flush();
    return tokens;
}

String StringHelper::join(const std::vector<String>& parts, const String& separator)
{
    String result;
    for (std::size_t i = 0; i < parts.size(); ++i)
        result += (i == 0 ? String() : separator) + parts[i];
    return result;
}
} // namespace ondo
