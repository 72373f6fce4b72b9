#include "files/TarvoDspFileReader.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace
{
using ondo::File;
using ondo::FileReader;

TEST(FileReader, ReadsSeeksAndReadsLines)
{
    testing_files::TemporaryFolder folder;
    const File file(folder.write("a.txt", std::string("RIFF\x10\0\0\0first\r\nsecond\nthird", 27)));
    FileReader in(file);
    ASSERT_TRUE(in.openedOk());
    EXPECT_EQ(in.getTotalLength(), 27);
    char tag[4];
    ASSERT_EQ(in.read(tag, 4), 4);
    EXPECT_EQ(std::string(tag, 4), "RIFF");
    EXPECT_EQ(in.readInt(), 16);

    std::string line;
    EXPECT_TRUE(in.readLine(line));
    EXPECT_EQ(line, "first");
    EXPECT_TRUE(in.readLine(line));
    EXPECT_EQ(line, "second");

    // The seek waits for the next read; moving away and back costs no seek at all.
    EXPECT_TRUE(in.setPosition(4));
    EXPECT_EQ(in.getPosition(), 4);
    EXPECT_TRUE(in.setPosition(22));
    EXPECT_TRUE(in.readLine(line));
    EXPECT_EQ(line, "third");
    EXPECT_FALSE(in.readLine(line));
    EXPECT_TRUE(in.isExhausted());

    EXPECT_TRUE(in.setPosition(1000));
    EXPECT_EQ(in.getPosition(), 27);
    EXPECT_TRUE(in.isExhausted());
    EXPECT_EQ(in.readByte(), 0);
    EXPECT_TRUE(in.setPosition(-3));
    EXPECT_EQ(in.readByte(), 'R') << "a read after reaching the end works again after a seek";
}

TEST(FileReader, MissingFilesAndDirectoriesDoNotOpen)
{
    testing_files::TemporaryFolder folder;
    for (const File& f : {File(folder / "missing"), File(folder.str())})
    {
        FileReader in(f);
        EXPECT_FALSE(in.openedOk());
        EXPECT_EQ(in.getTotalLength(), -1);
        EXPECT_EQ(in.readInt(), 0);
        EXPECT_FALSE(in.setPosition(0));
    }
}

TEST(FileReader, PositionsBeyondFourGigabytes)
{
    // A sparse file: 5 GB long, two marked places, almost nothing on disk.
    testing_files::TemporaryFolder folder;
    const std::string path = folder / "big.bin";
    const int fd = ::open(path.c_str(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    const off_t far = 4500000000LL, length = 5000000000LL;
    const bool made = ::ftruncate(fd, length) == 0 && ::pwrite(fd, "far!", 4, far) == 4;
    ::close(fd);
    if (!made)
        GTEST_SKIP() << "this file system refuses a sparse 5 GB file";

    FileReader in{File(path)};
    ASSERT_TRUE(in.openedOk());
    EXPECT_EQ(in.getTotalLength(), length);
    in.setPosition(far);
    char text[4];
    ASSERT_EQ(in.read(text, 4), 4);
    EXPECT_EQ(std::string(text, 4), "far!");
    EXPECT_EQ(in.getPosition(), far + 4);
    EXPECT_EQ(in.getNumBytesRemaining(), length - far - 4);
}
} // namespace
