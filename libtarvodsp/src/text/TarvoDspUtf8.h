#pragma once

#include <cstddef>
#include <cstdint>

namespace ondo
{
/// The small UTF-8 reader behind OSC addresses and patterns. It decodes leniently and never
/// reads past `end`: a malformed sequence ends at its first byte that is not a continuation
/// byte (10xxxxxx), which stays unread. Characters are cut to 16 bits. Pure; any thread;
/// allocates nothing.
class Utf8
{
public:
    Utf8() = delete;

    /// Decodes the character at `position` and moves past it. A lead byte brings up to 3
    /// continuation bytes; a stray continuation byte is one character, its top bit removed.
    /// `position` must be before `end`.
    static std::uint16_t read(const char*& position, const char* end);

    /// The character at `position`, without moving. This look-ahead reads at most 2
    /// continuation bytes, one fewer than `read`, so a 4-byte sequence decodes differently
    /// here; pattern sets rely on exactly this reading of the character after a '-'.
    static std::uint16_t peek(const char* position, const char* end);

    /// Moves forward by up to `n` characters, stopping at `end`.
    static const char* advance(const char* position, const char* end, std::size_t n = 1);

    /// Moves back by up to `n` characters, stopping at `begin`; each step skips at most 4 bytes.
    static const char* stepBack(const char* position, const char* begin, std::size_t n = 1);

    /// Number of characters between `position` and `end`.
    static std::size_t length(const char* position, const char* end);
};
} // namespace ondo
