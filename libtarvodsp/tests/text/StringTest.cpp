#include "text/TarvoDspString.h"
#include "text/TarvoDspVersion.h"

#include <gtest/gtest.h>

namespace
{
using ondo::StringHelper;

TEST(StringHelper, NumbersToShortestText)
{
    EXPECT_EQ(StringHelper::toString(0.1f), "0.1");
    EXPECT_EQ(StringHelper::toString(0.1), "0.1");
    EXPECT_EQ(StringHelper::toString(1.0 / 3.0), "0.3333333333333333");
    EXPECT_EQ(StringHelper::toString(1e20f), "1e+20");
    EXPECT_EQ(StringHelper::toString(-7), "-7");
    EXPECT_EQ(StringHelper::toString(std::uint64_t{18446744073709551615ull}), "18446744073709551615");
    EXPECT_EQ(StringHelper::toString(true), "true");
    EXPECT_EQ(StringHelper::toString(false), "false");
}

TEST(StringHelper, RecognisesNumbers)
{
    EXPECT_TRUE(StringHelper::isNumber("0x10"));
    EXPECT_TRUE(StringHelper::isNumber("1e3"));
    EXPECT_TRUE(StringHelper::isNumber("-.5"));
    EXPECT_TRUE(StringHelper::isNumber(" 3.25 "));
    EXPECT_FALSE(StringHelper::isNumber("0x"));
    EXPECT_FALSE(StringHelper::isNumber("1e"));
    EXPECT_FALSE(StringHelper::isNumber("."));
    EXPECT_FALSE(StringHelper::isNumber("12abc"));
    EXPECT_FALSE(StringHelper::isNumber(""));
    EXPECT_TRUE(StringHelper::isInteger("1e3")) << "an integer by value";
    EXPECT_TRUE(StringHelper::isInteger("-4"));
    EXPECT_FALSE(StringHelper::isInteger("2.5"));
    EXPECT_TRUE(StringHelper::isBoolean("TRUE"));
    EXPECT_FALSE(StringHelper::isBoolean("1"));
}

TEST(StringHelper, ParsesAsTheCLibraryDoes)
{
    EXPECT_EQ(StringHelper::toInt("  42abc"), 42);
    EXPECT_EQ(StringHelper::toInt("abc"), 0);
    EXPECT_DOUBLE_EQ(StringHelper::toFloat("2.5e1x"), 25.0);
}

TEST(StringHelper, SearchAndEdit)
{
    EXPECT_TRUE(StringHelper::contains("/dsp/mute", "mute"));
    EXPECT_TRUE(StringHelper::containsAny("a*b", "?*"));
    EXPECT_FALSE(StringHelper::containsAny("ab", "?*"));
    EXPECT_TRUE(StringHelper::startsWith("/dsp/mute", "/dsp"));
    EXPECT_TRUE(StringHelper::endsWith("file.wav", ".wav"));
    EXPECT_EQ(StringHelper::indexOf("abcabc", "c", 3), 5);
    EXPECT_EQ(StringHelper::indexOf("abc", "z"), -1);
    EXPECT_EQ(StringHelper::replaceAll("a-b-c", "-", "--"), "a--b--c");
    EXPECT_EQ(StringHelper::replaceAll("aaa", "", "x"), "aaa");
    EXPECT_EQ(StringHelper::trim("\t x y \n"), "x y");
    EXPECT_EQ(StringHelper::trimStart("  x "), "x ");
    EXPECT_EQ(StringHelper::trimEnd("  x "), "  x");
    EXPECT_EQ(StringHelper::toUpperCase("MiXed"), "MIXED");
    EXPECT_EQ(StringHelper::toLowerCase("MiXed"), "mixed");
    EXPECT_EQ(StringHelper::substring("hello", 1, 3), "ell");
    EXPECT_EQ(StringHelper::substring("hello", 10), "");
    EXPECT_EQ(StringHelper::dropLastCharacters("hello", 2), "hel");
    EXPECT_EQ(StringHelper::dropLastCharacters("hi", 5), "");
    EXPECT_EQ(StringHelper::padLeft("7", 3, '0'), "007");
    EXPECT_EQ(StringHelper::padRight("ab", 4), "ab  ");
    EXPECT_EQ(StringHelper::padLeft("long", 2), "long");
}

TEST(StringHelper, Quotes)
{
    EXPECT_EQ(StringHelper::quoted("a b"), "\"a b\"");
    EXPECT_EQ(StringHelper::quoted("a", '\''), "'a'");
    EXPECT_TRUE(StringHelper::isQuoted("'x'"));
    EXPECT_FALSE(StringHelper::isQuoted("'x\""));
    EXPECT_FALSE(StringHelper::isQuoted("\""));
    EXPECT_EQ(StringHelper::unquoted("\"a b\""), "a b");
    EXPECT_EQ(StringHelper::unquoted("plain"), "plain");
}

TEST(StringHelper, SplitAndJoin)
{
    using Parts = std::vector<std::string>;
    EXPECT_EQ(StringHelper::split("a,,b,", ","), (Parts{"a", "b"}));
    EXPECT_EQ(StringHelper::split("a,,b,", ",", true), (Parts{"a", "", "b", ""}));
    EXPECT_EQ(StringHelper::split("a::b", "::"), (Parts{"a", "b"}));
    EXPECT_TRUE(StringHelper::split("", ",").empty());
    EXPECT_EQ(StringHelper::join({"x", "y", "z"}, ", "), "x, y, z");
    EXPECT_EQ(StringHelper::join({}, ","), "");
}

TEST(Version, LibraryVersionLine)
{
    EXPECT_EQ(ondo::getLibraryVersionLine(), "libondo v5.0.0");
    EXPECT_EQ(ondo::getLibraryVersionLine(true), "libondo v5.0.0 (32-bit float)");
}
} // namespace
