#include "files/TarvoDspMemoryInputStream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{
using ondo::MemoryInputStream;

TEST(InputStream, ReadsBothByteOrders)
{
    // 1.0f is 0x3F800000 and 1.0 is 0x3FF0000000000000 in IEEE 754.
    const unsigned char bytes[] = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, //
                                   0x3F, 0x80, 0x00, 0x00, 0x00, 0x00, 0x80, 0x3F, //
                                   0x3F, 0xF0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F, 0xFF, 0xFE};
    MemoryInputStream in(bytes, sizeof bytes);
    EXPECT_EQ(in.readInt(), 0x04030201);
    EXPECT_EQ(in.readIntBigEndian(), 0x05060708);
    EXPECT_EQ(in.readFloatBigEndian(), 1.0f);
    EXPECT_EQ(in.readFloat(), 1.0f);
    EXPECT_EQ(in.readDoubleBigEndian(), 1.0);
    EXPECT_EQ(in.readDouble(), 1.0);
    EXPECT_EQ(in.readShort(), -257) << "0xFEFF read little-endian";
    EXPECT_TRUE(in.isExhausted());

    in.setPosition(0);
    EXPECT_EQ(in.readInt64(), 0x0807060504030201LL);
    in.setPosition(0);
    EXPECT_EQ(in.readInt64BigEndian(), 0x0102030405060708LL);
    EXPECT_EQ(in.readShortBigEndian(), 0x3F80);
    EXPECT_EQ(in.readByte(), 0);
}

TEST(InputStream, ShortReadsGiveZeroAndPositionsClamp)
{
    const unsigned char bytes[] = {0x3F, 0x80, 0x00};
    MemoryInputStream in(bytes, sizeof bytes);
    EXPECT_EQ(in.readFloatBigEndian(), 0.0f) << "three bytes left";
    EXPECT_TRUE(in.isExhausted());
    EXPECT_EQ(in.readByte(), 0);
    EXPECT_EQ(in.readInt64(), 0);

    EXPECT_TRUE(in.setPosition(99));
    EXPECT_EQ(in.getPosition(), 3);
    EXPECT_TRUE(in.isExhausted());
    EXPECT_TRUE(in.setPosition(-5));
    EXPECT_EQ(in.getPosition(), 0);
    EXPECT_EQ(in.getNumBytesRemaining(), 3);
    in.skipNextBytes(2);
    EXPECT_EQ(in.getNumBytesRemaining(), 1);
    in.skipNextBytes(100);
    EXPECT_EQ(in.getPosition(), 3);

    MemoryInputStream empty(nullptr, 10);
    EXPECT_EQ(empty.getTotalLength(), 0) << "no data, no bytes";
}

TEST(InputStream, StringsLinesAndBlocks)
{
    const std::string text = std::string("abc\0", 4) + "one\r\ntwo\n\nlast\r";
    MemoryInputStream in(text.data(), text.size());
    EXPECT_EQ(in.readString(), "abc");
    std::string line;
    ASSERT_TRUE(in.readLine(line));
    EXPECT_EQ(line, "one");
    ASSERT_TRUE(in.readLine(line, false));
    EXPECT_EQ(line, "two");
    ASSERT_TRUE(in.readLine(line));
    EXPECT_EQ(line, "");
    ASSERT_TRUE(in.readLine(line, false));
    EXPECT_EQ(line, "last\r") << "kept without the flag";
    EXPECT_FALSE(in.readLine(line));

    in.setPosition(4);
    EXPECT_EQ(in.readString(), "") << "no zero before the end";

    // A string longer than the first buffer and its growth steps.
    const std::string longText(2000, 'x');
    MemoryInputStream longIn(longText.c_str(), longText.size() + 1);
    EXPECT_EQ(longIn.readString(), longText);

    std::vector<std::uint8_t> block{9, 9, 9};
    in.setPosition(4);
    EXPECT_EQ(in.readIntoMemoryBlock(block, 3), 3u);
    EXPECT_EQ(std::string(block.begin(), block.end()), "one");
    EXPECT_EQ(in.readIntoMemoryBlock(block, 1000), text.size() - 7) << "above the remainder";
    EXPECT_EQ(block.back(), '\r');
    in.setPosition(10);
    EXPECT_EQ(in.readIntoMemoryBlock(block), text.size() - 10) << "negative: the remainder";
    EXPECT_EQ(in.readIntoMemoryBlock(block), 0u);
    EXPECT_TRUE(block.empty());
}
} // namespace
