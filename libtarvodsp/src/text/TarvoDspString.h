#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ondo
{
/// The library's text string.
using String = std::string;

/// Pure helpers on strings, shared by every subsystem. Any thread; most allocate.
class StringHelper
{
public:
    StringHelper() = delete;

    static String toString(std::int32_t value);
    static String toString(std::int64_t value);
    static String toString(std::uint32_t value);
    static String toString(std::uint64_t value);
    /// The fewest significant digits that read back as the same value, in the form "%g" gives
    /// them: 100 -> "100", 0.1 -> "0.1", 1e-07 and 1e+20 in exponent form; "nan", "inf", "-inf".
    static String toString(float value);
    static String toString(double value);
    /// "true" or "false".
    static String toString(bool value);

    /// As atoi: leading blanks skipped, digits read up to the first non-digit, 0 if none.
    static int toInt(const String& text);
    /// As atof.
    static double toFloat(const String& text);
    /// A decimal number (sign, digits, point, exponent), hexadecimal with "0x", or one of the
    /// words "inf", "infinity", "nan" (any case, optional sign) that number-to-text writes.
    static bool isNumber(const String& text);
    /// A number whose value is whole: "1e3" is one.
    static bool isInteger(const String& text);
    /// "true" or "false", in any case.
    static bool isBoolean(const String& text);

    static bool contains(const String& text, const String& part);
    /// True when `text` holds any of the characters of `characters`.
    static bool containsAny(const String& text, const String& characters);
    static bool startsWith(const String& text, const String& prefix);
    static bool endsWith(const String& text, const String& suffix);
    /// Position of `part` from `start`, or -1.
    static int indexOf(const String& text, const String& part, std::size_t start = 0);
    static String replaceAll(const String& text, const String& from, const String& to);
    static String trimStart(const String& text);
    static String trimEnd(const String& text);
    static String trim(const String& text);
    static String toLowerCase(const String& text);
    static String toUpperCase(const String& text);
    /// `text` between two `quote` characters.
    static String quoted(const String& text, char quote = '"');
    /// Removes one pair of enclosing quotes, if `isQuoted`.
    static String unquoted(const String& text);
    /// Starts and ends with `"`, or starts and ends with `'`.
    static bool isQuoted(const String& text);
    /// Up to `length` characters from `start`; out of range gives what exists.
    static String substring(const String& text, std::size_t start, std::size_t length = String::npos);
    static String dropLastCharacters(const String& text, std::size_t n);
    static String padLeft(const String& text, std::size_t width, char fill = ' ');
    static String padRight(const String& text, std::size_t width, char fill = ' ');

    /// Cuts at each `separator`; empty parts are kept only with `keepEmpty`.
    static std::vector<String> split(const String& text, const String& separator, bool keepEmpty = false);
    /// Cuts at blanks, except inside a stretch between two `quote` characters, which stays in
    /// its token with its quotes. Tokens are trimmed; empty ones are dropped.
    static std::vector<String> splitQuoted(const String& text, char quote = '\'');
    static String join(const std::vector<String>& parts, const String& separator);
};
} // namespace ondo
