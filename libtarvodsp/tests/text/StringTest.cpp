#include "text/TarvoDspString.h"
#include "text/TarvoDspVersion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>

namespace
{
using ondo::StringHelper;

TEST(StringHelper, NumbersToShortestText)
{
    // Expected texts are what "%g" prints once given enough digits to read back exactly.
    const struct
    {
        double value;
        const char* asFloat;
        const char* asDouble;
    } cases[] = {
        {100.0, "100", "100"},
        {44100.0, "44100", "44100"},
        {250.0, "250", "250"},
        {0.0, "0", "0"},
        {-0.0, "-0", "-0"},
        {1.0e6, "1e+06", "1e+06"},
        {123456789.0, "1.2345679e+08", "123456789"},
        {0.1, "0.1", "0.1"},
        {1.995, "1.995", "1.995"},
        {0.0001, "0.0001", "0.0001"},
        {1.0 / 3.0, "0.33333334", "0.3333333333333333"},
        {-2.5, "-2.5", "-2.5"},
        {-0.001, "-0.001", "-0.001"},
        {1e-7, "1e-07", "1e-07"},
        {1e20, "1e+20", "1e+20"},
        {-3.25e-12, "-3.25e-12", "-3.25e-12"},
        {std::numeric_limits<double>::quiet_NaN(), "nan", "nan"},
        {-std::numeric_limits<double>::quiet_NaN(), "nan", "nan"},
        {std::numeric_limits<double>::infinity(), "inf", "inf"},
        {-std::numeric_limits<double>::infinity(), "-inf", "-inf"},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(StringHelper::toString(static_cast<float>(c.value)), c.asFloat) << c.value;
        EXPECT_EQ(StringHelper::toString(c.value), c.asDouble) << c.value;
    }
    EXPECT_EQ(StringHelper::toString(-7), "-7");
    EXPECT_EQ(StringHelper::toString(std::uint64_t{18446744073709551615ull}), "18446744073709551615");
    EXPECT_EQ(StringHelper::toString(true), "true");
    EXPECT_EQ(StringHelper::toString(false), "false");
}

TEST(StringHelper, FloatTextReadsBackAndIsPlainPercentGWheneverThatReadsBack)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> mantissa(-10.0f, 10.0f);
    std::uniform_int_distribution<int> exponent(-30, 30);
    for (int i = 0; i < 2000; ++i)
    {
        const float value = std::round(std::ldexp(mantissa(random), 12)) * std::ldexp(1.0f, exponent(random) - 12);
        const std::string text = StringHelper::toString(value);
        EXPECT_EQ(std::strtof(text.c_str(), nullptr), value) << text;
        char plain[32];
        std::snprintf(plain, sizeof plain, "%g", static_cast<double>(value));
        if (std::strtof(plain, nullptr) == value)
        {
            EXPECT_EQ(text, plain);
        }
    }
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
    EXPECT_TRUE(StringHelper::isNumber("-inf")) << "what number-to-text writes reads back";
    EXPECT_TRUE(StringHelper::isNumber("NaN"));
    EXPECT_FALSE(StringHelper::isNumber("info"));
    EXPECT_FALSE(StringHelper::isInteger("inf"));
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
    const struct
    {
        const char* line;
        Parts tokens;
    } quotedCases[] = {
        {"/a 1  'b c' d", {"/a", "1", "'b c'", "d"}},
        {"x'y z'w", {"x'y z'w"}},
        {"it's one", {"it's", "one"}},
        {"'a' 'b c'", {"'a'", "'b c'"}},
        {"  \t ", {}},
        {"'  '", {"'  '"}},
    };
    for (const auto& c : quotedCases)
        EXPECT_EQ(StringHelper::splitQuoted(c.line), c.tokens) << c.line;
}

TEST(Version, LibraryVersionLine)
{
    EXPECT_EQ(ondo::getLibraryVersionLine(), "libondo v5.0.0");
    EXPECT_EQ(ondo::getLibraryVersionLine(true), "libondo v5.0.0 (32-bit float)");
}
} // namespace
