#include "text/TarvoDspUtf8.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
using ondo::Utf8;

// Expected values worked out by hand from the bit layout of UTF-8: the value bits of the lead
// byte, then six bits per continuation byte, cut to 16 bits.
TEST(Utf8, ReadPeekAndStep)
{
    const struct
    {
        std::string bytes;
        std::uint16_t read;
        std::size_t bytesRead;
        std::uint16_t peek;
    } cases[] = {
        {"A", 0x41, 1, 0x41},
        {"\xC3\xA9", 0xE9, 2, 0xE9},             // e acute
        {"\xE2\x82\xAC", 0x20AC, 3, 0x20AC},     // euro sign
        {"\xF0\x9F\x98\x80", 0xF600, 4, 0x07D8}, // U+1F600; the look-ahead stops one byte short
        {"\xA9", 0x29, 1, 0x29},                 // a stray continuation byte loses its top bit
        {"\xE2\x82" "A", 0x82, 2, 0x82},         // broken sequence: 'A' stays unread
        {"\xC3", 0x03, 1, 0x03},                 // lead byte at the end of the text
    };
    for (const auto& c : cases)
    {
        const char* begin = c.bytes.data();
        const char* end = begin + c.bytes.size();
        const char* position = begin;
        EXPECT_EQ(Utf8::read(position, end), c.read) << c.bytes;
        EXPECT_EQ(static_cast<std::size_t>(position - begin), c.bytesRead) << c.bytes;
        EXPECT_EQ(Utf8::peek(begin, end), c.peek) << c.bytes;
        EXPECT_EQ(Utf8::advance(begin, end), position) << c.bytes;
    }
    const std::string text = "a\xE2\x82\xAC" "b";
    const char* begin = text.data();
    const char* end = begin + text.size();
    EXPECT_EQ(Utf8::length(begin, end), 3u);
    EXPECT_EQ(Utf8::advance(begin, end, 2), begin + 4);
    EXPECT_EQ(Utf8::advance(begin, end, 9), end);
    EXPECT_EQ(Utf8::stepBack(end, begin, 2), begin + 1);
    EXPECT_EQ(Utf8::stepBack(end, begin, 9), begin);
    const std::string continuations = "x\x80\x80\x80\x80\x80";
    EXPECT_EQ(Utf8::stepBack(continuations.data() + 6, continuations.data()), continuations.data() + 2)
        << "a step back skips at most four bytes";
}
} // namespace
