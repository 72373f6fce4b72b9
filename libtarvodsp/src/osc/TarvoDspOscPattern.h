#pragma once

#include <string_view>

namespace ondo
{
/// The OSC address pattern matcher, the one place where wildcards are interpreted:
/// `*` any run of characters, `?` one character, `[abc]`, `[a-z]` and `[!abc]` sets,
/// `{foo,bar}` alternatives. Both strings are walked one UTF-8 character at a time.
/// Pure; any thread; allocates nothing.
class OSCPattern
{
public:
    OSCPattern() = delete;

    /// True when `text` matches `pattern` as a whole. Malformed patterns (a set or a list of
    /// alternatives left open, a range with nothing before its '-') match nothing.
    static bool match(std::string_view pattern, std::string_view text);
};
} // namespace ondo
