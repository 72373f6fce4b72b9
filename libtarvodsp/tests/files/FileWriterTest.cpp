#include "files/TarvoDspFileWriter.h"
#include "files/TarvoDspMemoryInputStream.h"
#include "files/TarvoDspMemoryOutputStream.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

namespace
{
using ondo::File;

/// Writes a header whose size field is known only at the end, as WAV and OSC bundles do.
void writeChunkAndPatchItsSize(ondo::OutputStream& out)
{
    EXPECT_TRUE(out.writeText("RIFF"));
    const auto sizeField = out.getPosition();
    EXPECT_TRUE(out.writeInt(0));
    EXPECT_TRUE(out.writeShortBigEndian(0x0102));
    EXPECT_TRUE(out.writeFloatBigEndian(1.0f));
    EXPECT_TRUE(out.writeDouble(1.0));
    EXPECT_TRUE(out.writeInt64BigEndian(-2));
    EXPECT_TRUE(out.writeString("ab"));
    EXPECT_TRUE(out.writeRepeatedByte(0x7F, 3));
    const auto end = out.getPosition();
    EXPECT_TRUE(out.setPosition(sizeField));
    EXPECT_TRUE(out.writeInt(static_cast<std::int32_t>(end - sizeField - 4)));
    EXPECT_TRUE(out.setPosition(end + 100)) << "clamped to the end of what was written";
    EXPECT_EQ(out.getPosition(), end);
}

// The same bytes written by hand: 1.0f is 3F800000, 1.0 is 3FF0000000000000, -2 is FF..FE.
const std::string expectedChunk = std::string("RIFF\x1C\0\0\0\x01\x02\x3F\x80\0\0", 14) + std::string(6, '\0') +
                                  "\xF0\x3F" + std::string(7, '\xFF') + "\xFE" + std::string("ab\0", 3) + "\x7F\x7F\x7F";

TEST(FileWriter, WritesAndPatchesAHeader)
{
    testing_files::TemporaryFolder folder;
    const File file(folder / "chunk.bin");
    {
        ondo::FileWriter out(file);
        ASSERT_TRUE(out.openedOk());
        writeChunkAndPatchItsSize(out);
        EXPECT_TRUE(out.flush());
        EXPECT_TRUE(out.close());
        EXPECT_FALSE(out.writeByte(1)) << "closed";
    }
    EXPECT_EQ(testing_files::readAll(file.getFullPathName()), expectedChunk);

    ondo::FileWriter intoADirectory{File(folder.str())};
    EXPECT_FALSE(intoADirectory.openedOk());
    EXPECT_FALSE(intoADirectory.writeText("x"));
}

TEST(MemoryOutputStream, GrowsPatchesAndRefusesBeyondItsLimit)
{
    ondo::MemoryOutputStream out(4);
    writeChunkAndPatchItsSize(out);
    EXPECT_EQ(std::string(out.getData(), out.getData() + out.getDataSize()), expectedChunk);
    ondo::MemoryInputStream in(out.getData(), out.getDataSize());
    in.setPosition(4);
    EXPECT_EQ(in.readInt(), 28);

    ondo::MemoryOutputStream small(0, 6);
    EXPECT_TRUE(small.writeInt(1));
    EXPECT_FALSE(small.writeInt(2)) << "would pass 6 bytes";
    EXPECT_EQ(small.getDataSize(), 4u) << "a failed write stores nothing";
    EXPECT_TRUE(small.writeShort(3));
    small.reset();
    EXPECT_EQ(small.getDataSize(), 0u);
    EXPECT_TRUE(small.writeRepeatedByte(0, 6));
}
} // namespace
