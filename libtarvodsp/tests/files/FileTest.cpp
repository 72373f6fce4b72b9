#include "files/TarvoDspFile.h"
#include "files/TarvoDspTime.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace
{
using ondo::File;

TEST(File, NamesAndExtensions)
{
    const File file("/tmp/x.dir/Song.Take2.TXT");
    EXPECT_EQ(file.getFileName(), "Song.Take2.TXT");
    EXPECT_EQ(file.getFileExtension(), ".TXT");
    EXPECT_EQ(file.getParentDirectory().getFullPathName(), "/tmp/x.dir");
    EXPECT_EQ(File("/tmp/a.txt/").getFullPathName(), "/tmp/a.txt") << "a trailing separator names the same";
    EXPECT_EQ(File("/tmp/x/../y/./z").getFullPathName(), "/tmp/y/z");
    EXPECT_EQ(File("rel/a.wav").getFullPathName(), File::getCurrentWorkingDirectory().getChildFile("rel/a.wav").getFullPathName());
    EXPECT_EQ(File("/tmp").getChildFile("/etc/x").getFullPathName(), "/etc/x");
    EXPECT_EQ(file.withFileExtension("osc").getFileName(), "Song.Take2.osc");
    EXPECT_EQ(file.withFileExtension("").getFileName(), "Song.Take2");
    EXPECT_EQ(File("/tmp/x.dir/noext").withFileExtension(".xml").getFileName(), "noext.xml");

    struct Case
    {
        const char* path;
        const char* extension;
        bool expected;
    };
    const Case cases[] = {
        {"/d/a.txt", ".TXT", true},   {"/d/a.txt", "txt", true},   {"/d/a.TXT", ".txt", true},
        {"/d/a.txt", ".tx", false},   {"/d/a.txt", "", false},     {"/d/a", "", true},
        {"/d.x/a", "", true},         {"/d.x/a", ".x", false},     {"/d/a.tar.gz", ".gz", true},
        {"/d/a.tar.gz", ".tar", false}, {"/d/a.", "", false},      {"/d/a.coll", ".COLL", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(File(c.path).hasFileExtension(c.extension), c.expected) << c.path << " vs " << c.extension;
}

TEST(File, ExistenceKindsAndSizes)
{
    testing_files::TemporaryFolder folder;
    const File dirNamedLikeAFile(folder / "a.txt");
    ASSERT_TRUE(dirNamedLikeAFile.createDirectory());
    EXPECT_TRUE(dirNamedLikeAFile.exists());
    EXPECT_TRUE(dirNamedLikeAFile.isDirectory());
    EXPECT_FALSE(dirNamedLikeAFile.existsAsFile()) << "a directory is not a file";

    const File file(folder.write("b.bin", "12345"));
    EXPECT_TRUE(file.existsAsFile());
    EXPECT_TRUE(file.existsAndWritable());
    EXPECT_EQ(file.getSize(), 5);
    EXPECT_EQ(dirNamedLikeAFile.getSize(), 0);

    const File temp = file.getTemporaryFile();
    EXPECT_NE(temp.getFileName().find("_temp"), std::string::npos);
    EXPECT_EQ(temp.getParentDirectory(), file.getParentDirectory());
    EXPECT_FALSE(temp.exists());
    EXPECT_NE(temp, file.getTemporaryFile()) << "two asks, two names";

    EXPECT_TRUE(file.deleteFile());
    EXPECT_FALSE(file.exists());
    EXPECT_TRUE(file.deleteFile()) << "nothing there afterwards either way";
    EXPECT_TRUE(File(folder / "x/y/z").createDirectory()) << "parents too";
    EXPECT_FALSE(File().exists());
}

TEST(File, MakeReadyForWritingSaysWhyNot)
{
    testing_files::TemporaryFolder folder;
    const std::string existing = folder.write("old.txt", "data");
    const std::string plainFile = folder.write("plain", "");
    std::filesystem::create_directories(folder / "dir");

    struct Case
    {
        std::string path;
        bool overwrite;
        bool ready;
        std::string failure;
    };
    const Case cases[] = {
        {folder / "new.txt", false, true, ""},
        {folder / "deep/er/new.txt", false, true, ""},
        {existing, false, false, "File already exists " + existing},
        {folder / "dir", true, false, folder / "dir" + " is a folder"},
        {plainFile + "/sub/x.txt", false, false, "Cannot create directory " + plainFile + "/sub"},
        // Refused even to root: these live in the kernel's own file system.
        {"/proc/tarvodsp_probe.txt", false, false, "Couldnt create or write in folder /proc"},
        {"/proc/self/status", true, false, "Error deleting /proc/self/status"},
        {existing, true, true, ""},
    };
    for (const auto& c : cases)
    {
        std::string failure;
        EXPECT_EQ(File(c.path).makeReadyForWriting(c.overwrite, &failure), c.ready) << c.path;
        EXPECT_EQ(failure, c.failure) << c.path;
    }
    EXPECT_FALSE(File(existing).exists()) << "overwriting deletes the old file first";
    EXPECT_TRUE(File(folder / "deep/er").isDirectory());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.str()), {}), 3)
        << "plain, dir and deep: no probe file left behind, nothing written";
}

TEST(Time, SleepLastsAtLeastItsTime)
{
    for (const int ms : {2, 15})
    {
        const double start = ondo::Time::getMillisecondCounterHiRes();
        ondo::Time::sleep(ms);
        EXPECT_GE(ondo::Time::getMillisecondCounterHiRes() - start, ms - 0.01);
    }
}
} // namespace
