#include "osc/TarvoDspOscPattern.h"

#include <gtest/gtest.h>

#include <fnmatch.h>

#include <random>
#include <string>

namespace
{
using ondo::OSCPattern;

TEST(OscPattern, MatchesTheWrittenCases)
{
    const struct
    {
        const char* pattern;
        const char* text;
        bool matches;
    } cases[] = {
        // sets
        {"[!abc]", "d", true},
        {"[!abc]", "a", false},
        {"[a!b]", "!", true},
        {"[a!b]", "b", true},
        {"[a!b]", "c", false},
        {"[]x", "x", true}, // an empty set consumes nothing
        {"[!]x", "x", true},
        {"[a-c]", "b", true},
        {"[a-c]", "c", true},
        {"[a-c]", "d", false},
        {"[c-a]", "b", false}, // a reversed range adds only its ends
        {"[c-a]", "a", true},
        {"[c-a]", "c", true},
        {"[-a]", "a", false},
        {"[-a]", "-", false},
        {"[a-]", "-", true},
        {"[a-]", "a", true},
        {"[a-", "a", false},
        {"[a", "a", false},
        {"[a-{]", "a", false},
        {"[a-,]", "a", false},
        {"[0-9][0-9]", "42", true},
        {"[a-c]x", "b", false},
        {"[ab]", "", false},
        // alternatives
        {"{foo,bar}x", "foox", true},
        {"{foo,bar}x", "barx", true},
        {"{foo,bar}x", "bazx", false},
        {"{}x", "x", true},
        {"{foo", "foo", false},
        {"{a,}b", "b", true},
        {"{a,}b", "ab", true},
        {"{ab,a}c", "ac", true},
        {"{ab,a}", "a", true},
        {"{abc}", "ab", false},
        {"x{a,b}*", "xbzz", true},
        // stars and single characters
        {"ab*", "ab", true}, // a trailing star matches the empty rest
        {"*", "", true},
        {"*", "anything", true},
        {"a*c", "abbbc", true},
        {"a*c", "abbb", false},
        {"*b*", "abc", true},
        {"a**", "ab", true},
        {"a**", "a", false}, // at the end of the text only a star that ends the pattern matches
        {"*x", "", false},
        {"?", "", false},
        {"??", "ab", true},
        {"??", "abc", false},
        {"abc", "abc", true},
        {"abc", "abd", false},
        {"", "", true},
        {"", "a", false},
        // characters are UTF-8 decoded: one '?' takes the two bytes of an e acute
        {"?", "\xC3\xA9", true},
        {"\xC3\xA9", "\xC3\xA9", true},
        {"[\xC3\xA0-\xC3\xAA]", "\xC3\xA9", true},
        {"{\xC3\xA9}x", "\xC3\xA9x", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(OSCPattern::match(c.pattern, c.text), c.matches) << c.pattern << " against " << c.text;
}

// Where the two agree by construction (no two stars in a row, no empty sets, no braces), the
// C library's fnmatch is an independent reference.
TEST(OscPattern, AgreesWithFnmatchOnStarsQuestionMarksAndSets)
{
    const std::string pieces[] = {"a", "b", "*", "?", "[ab]", "[!a]", "[a-b]"};
    std::mt19937 random(11);
    std::uniform_int_distribution<int> piece(0, 6);
    std::uniform_int_distribution<int> length(0, 6);
    std::uniform_int_distribution<int> letter(0, 2);
    for (int i = 0; i < 20000; ++i)
    {
        std::string pattern;
        for (int n = length(random); n > 0; --n)
        {
            const std::string next = pieces[piece(random)];
            if (next == "*" && !pattern.empty() && pattern.back() == '*')
                continue;
            pattern += next;
        }
        std::string text;
        for (int n = length(random); n > 0; --n)
            text += "abc"[letter(random)];
        EXPECT_EQ(OSCPattern::match(pattern, text), fnmatch(pattern.c_str(), text.c_str(), 0) == 0)
            << pattern << " against " << text;
    }
}

TEST(OscPattern, LongTextWithAStarStaysShallow)
{
    const std::string text = std::string(100000, 'a') + "z";
    EXPECT_TRUE(OSCPattern::match("*z", text));
    EXPECT_FALSE(OSCPattern::match("*y", text));
}
} // namespace
