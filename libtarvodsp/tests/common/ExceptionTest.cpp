#include "common/TarvoDspAlloc.h"
#include "common/TarvoDspException.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace
{
TEST(Exception, ReportNamesFileAndLine)
{
    const ondo::Exception e("went wrong", ondo::SourceLocation("/some/where/TarvoDspThing.cpp", 42), false);
    EXPECT_STREQ(e.what(), "went wrong");
    EXPECT_EQ(e.getLocation().file, "TarvoDspThing.cpp");
    EXPECT_EQ(e.getReport(), "Exception occurred in \"TarvoDspThing.cpp\" (line 42): went wrong");
}

TEST(Exception, EmptyLocationPrintsShortForm)
{
    const ondo::Exception e("bare", {}, false);
    EXPECT_EQ(e.getReport(), "Exception occurred: bare");
}

TEST(Exception, ReportGoesToErrorStreamUnlessQuiet)
{
    testing::internal::CaptureStderr();
    ondo::Exception loud("loud", ondo::SourceLocation("a/B.cpp", 1));
    ondo::Exception quiet("quiet", {}, true, true);
    ondo::Exception silent("silent", {}, false);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ondo >> Exception occurred in \"B.cpp\" (line 1): loud\n");
}

TEST(Exception, FileExceptionsQuoteThePath)
{
    EXPECT_STREQ(ondo::exceptions::NoSuchFile("/tmp/a b.wav", {}, false).what(), "Could not find file \"/tmp/a b.wav\"");
    EXPECT_STREQ(ondo::exceptions::UnsupportedFile("x.sofa", {}, false).what(),
                 "Could not open file \"x.sofa\". Unsupported format?");
    EXPECT_STREQ(ondo::exceptions::ErrorReadingFile("y", {}, false).what(), "Error reading file \"y\"");
    EXPECT_STREQ(ondo::exceptions::Unknown({}, false).what(), "Unknown exception");
}

TEST(Exception, TranslationKeepsFamilyAndText)
{
    const ondo::SourceLocation here("dir/TarvoDspHere.cpp", 7);
    try
    {
        ondo::rethrowAsOndoException(here, []() -> int { throw std::runtime_error("disk on fire"); });
    }
    catch (const ondo::Exception& e)
    {
        EXPECT_STREQ(e.what(), "disk on fire");
        EXPECT_EQ(e.getLocation().file, "TarvoDspHere.cpp");
    }
    EXPECT_THROW(ondo::rethrowAsOndoException(here, [] { throw 3; }), ondo::exceptions::Unknown);
    EXPECT_EQ(ondo::rethrowAsOndoException(here, [] { return 5; }), 5);
}

TEST(AlignedAllocator, ZeroElementsAllocateNothing)
{
    EXPECT_EQ(ondo::alignedAllocate(0, 8), nullptr);
    ondo::alignedFree(nullptr);
}

TEST(AlignedAllocator, OverflowIsALengthError)
{
    try
    {
        ondo::alignedAllocate(std::numeric_limits<std::size_t>::max() / 2, 8);
        FAIL();
    }
    catch (const std::length_error& e)
    {
        EXPECT_STREQ(e.what(), "allocation overflow.");
    }
}

TEST(AlignedAllocator, FailureIsABadAllocationWithItsText)
{
    // Larger than any machine can give, yet not an overflow of the address space.
    try
    {
        ondo::alignedAllocate(std::size_t{1} << 61, 1);
        FAIL();
    }
    catch (const std::bad_alloc& e)
    {
        EXPECT_STREQ(e.what(), "bad allocation");
    }
}
} // namespace
