#include "text/TarvoDspUtf8.h"

namespace ondo
{
namespace
{
bool isContinuation(unsigned char byte)
{
    return (byte & 0xc0u) == 0x80u;
}

/// Decodes one character reading at most `maximumContinuations` continuation bytes, and
/// returns where it ended.
const char* decode(const char* position, const char* end, int maximumContinuations, std::uint16_t& character)
{
    const auto lead = static_cast<unsigned char>(*position++);
    if (lead < 0x80u)
    {
        character = lead;
        return position;
    }
    // Each further leading one after the first announces a continuation byte and takes one
    // more bit off the value's share of the lead byte.
    unsigned mask = 0x7fu;
    int continuations = 0;
    for (unsigned bit = 0x40u; (lead & bit) != 0 && continuations < maximumContinuations; bit >>= 1)
    {
        mask >>= 1;
        ++continuations;
    }
    std::uint32_t value = lead & mask;
    for (int i = 0; i < continuations && position != end; ++i)
    {
        const auto next = static_cast<unsigned char>(*position);
        if (!isContinuation(next))
            break;
        value = (value << 6) | (next & 0x3fu);
        ++position;
    }
    character = static_cast<std::uint16_t>(value);
    return position;
}
} // namespace

std::uint16_t Utf8::read(const char*& position, const char* end)
{
    std::uint16_t character = 0;
    position = decode(position, end, 3, character);
    return character;
}

std::uint16_t Utf8::peek(const char* position, const char* end)
{
    std::uint16_t character = 0;
    decode(position, end, 2, character);
    return character;
}

const char* Utf8::advance(const char* position, const char* end, std::size_t n)
{
    std::uint16_t ignored = 0;
    for (std::size_t i = 0; i < n && position != end; ++i)
        position = decode(position, end, 3, ignored);
    return position;
}

const char* Utf8::stepBack(const char* position, const char* begin, std::size_t n)
{
    for (std::size_t i = 0; i < n && position != begin; ++i)
    {
        int skipped = 0;
        do
        {
            --position;
            ++skipped;
        } while (position != begin && skipped < 4 && isContinuation(static_cast<unsigned char>(*position)));
    }
    return position;
}

std::size_t Utf8::length(const char* position, const char* end)
{
    std::size_t count = 0;
    for (; position != end; ++count)
        position = advance(position, end);
    return count;
}
} // namespace ondo
