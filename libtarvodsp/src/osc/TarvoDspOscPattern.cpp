#include "osc/TarvoDspOscPattern.h"

#include "text/TarvoDspUtf8.h"

#include <cstdint>

namespace ondo
{
namespace
{
using Char = std::uint16_t;

struct Cursor
{
    const char* position;
    const char* end;

    bool done() const { return position == end; }
    Char read() { return Utf8::read(position, end); }
};

bool matchFrom(Cursor pattern, Cursor text);

/// A set from just after its '['. The members are not stored: the text's character is tested
/// against each one as the set is read, so that a wide range costs no memory.
bool matchSet(Cursor pattern, Cursor text)
{
    const bool textDone = text.done();
    Cursor afterCharacter = text;
    const Char character = textDone ? 0 : afterCharacter.read();
    bool negated = false;
    bool found = false;
    std::size_t members = 0;
    Char last = 0;
    const auto addMember = [&](Char member) {
        ++members;
        last = member;
        found = found || (!textDone && member == character);
    };
    while (true)
    {
        if (pattern.done())
            return false;
        const Char c = pattern.read();
        if (c == ']')
            break;
        if (c == '!' && members == 0 && !negated)
        {
            negated = true;
            continue;
        }
        if (c == '-')
        {
            if (pattern.done())
                return false;
            // The range's upper end is looked at, not consumed: it is read again below as an
            // ordinary member.
            const Char upper = Utf8::peek(pattern.position, pattern.end);
            if (upper == ']')
            {
                addMember('-');
                continue;
            }
            if (upper == ',' || upper == '{' || upper == '}' || members == 0)
                return false;
            if (upper > last)
            {
                members += static_cast<std::size_t>(upper - last);
                found = found || (!textDone && character > last && character <= upper);
                last = upper;
            }
            continue;
        }
        addMember(c);
    }
    if (members == 0)
        return matchFrom(pattern, text); // an empty set consumes nothing
    if (textDone || found == negated)
        return false;
    return matchFrom(pattern, afterCharacter);
}

/// Alternatives from just after their '{': each is compared literally with the text ahead.
bool matchAlternatives(Cursor pattern, Cursor text)
{
    Cursor closing = pattern;
    while (true)
    {
        if (closing.done())
            return false;
        const char* before = closing.position;
        if (closing.read() == '}')
        {
            closing.position = before;
            break;
        }
    }
    Cursor rest{Utf8::advance(closing.position, closing.end), closing.end};
    Cursor alternative = pattern;
    while (true)
    {
        Cursor candidate = text;
        bool equal = true;
        bool another = false;
        while (alternative.position != closing.position)
        {
            const Char c = alternative.read();
            if (c == ',')
            {
                another = true;
                break;
            }
            if (equal && (candidate.done() || candidate.read() != c))
                equal = false;
        }
        if (equal && matchFrom(rest, candidate))
            return true;
        if (!another)
            return false;
    }
}

bool matchFrom(Cursor pattern, Cursor text)
{
    // Plain characters and '?' loop here; only the wildcards that must try several ways
    // recurse, so the depth stays bounded by the pattern's length.
    while (true)
    {
        if (pattern.done())
            return text.done();
        const Char c = pattern.read();
        switch (c)
        {
        case '*':
            while (true)
            {
                // At the end of the text, only a '*' that ends the pattern matches.
                if (text.done())
                    return pattern.done();
                if (matchFrom(pattern, text))
                    return true;
                text.read();
            }
        case '?':
            if (text.done())
                return false;
            text.read();
            break;
        case '[': return matchSet(pattern, text);
        case '{': return matchAlternatives(pattern, text);
        default:
            if (text.done() || text.read() != c)
                return false;
            break;
        }
    }
}
} // namespace

bool OSCPattern::match(std::string_view pattern, std::string_view text)
{
    return matchFrom({pattern.data(), pattern.data() + pattern.size()}, {text.data(), text.data() + text.size()});
}
} // namespace ondo
