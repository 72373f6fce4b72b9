#include "PositionMessages.h"
#include "RenderSettings.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
using namespace tarvo::render;
using ondo::Point3;

std::string refusal(const std::function<void()>& call)
{
    try
    {
        call();
    }
    catch (const UsageError& error)
    {
        return error.what();
    }
    return "accepted";
}

TEST(PositionMessages, SourceMessageInEachNotation)
{
    ondo::Point3Array present(3);
    present[1] = Point3(0.0f, 4.0f, 3.0f);
    std::vector<std::string> notes;
    const auto xyz = parseSourceMessage("1 xyz 1 2 3", present, notes);
    EXPECT_EQ(xyz.index, 0u);
    EXPECT_FLOAT_EQ(xyz.position.x, 1.0f);
    EXPECT_FLOAT_EQ(xyz.position.z, 3.0f);
    // Azimuth 30 degrees to the right, 2 m, on the horizon: (2 sin 30, 2 cos 30, 0).
    const auto ade = parseSourceMessage("3 ade 30 2 0", present, notes);
    EXPECT_EQ(ade.index, 2u);
    EXPECT_NEAR(ade.position.x, 1.0f, 1e-5f);
    EXPECT_NEAR(ade.position.y, std::sqrt(3.0f), 1e-5f);
    EXPECT_NEAR(ade.position.z, 0.0f, 1e-6f);
    EXPECT_TRUE(notes.empty());
}

TEST(PositionMessages, SourceMessageKeepsWhatAOneValueFormatLeaves)
{
    // Source 2 stands 5 m away, up 36.87 degrees; turning it to 45 degrees keeps both.
    ondo::Point3Array present(3);
    present[1] = Point3(0.0f, 4.0f, 3.0f);
    std::vector<std::string> notes;
    const auto turned = parseSourceMessage("2 azim 45", present, notes);
    EXPECT_NEAR(turned.position.length(), 5.0f, 1e-5f);
    EXPECT_NEAR(turned.position.z, 3.0f, 1e-5f);
    EXPECT_NEAR(turned.position.x, turned.position.y, 1e-5f);
}

TEST(PositionMessages, SourceMessageWithoutFormatUsesAdeAndSaysSo)
{
    ondo::Point3Array present(2);
    std::vector<std::string> notes;
    const auto placed = parseSourceMessage("2 0 1.5 0", present, notes);
    EXPECT_NEAR(placed.position.y, 1.5f, 1e-6f);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_NE(notes[0].find("using default coordinate type (ade)"), std::string::npos);
    parseSourceMessage("2 xyz 1 2 3 4", present, notes);
    EXPECT_NE(notes.back().find("too many source coordinates. only 3 coordinates will be read"), std::string::npos);
}

TEST(PositionMessages, BadSourceMessagesAreRefusedInTheObjectsWords)
{
    ondo::Point3Array present(6);
    std::vector<std::string> notes;
    EXPECT_NE(refusal([&] { parseSourceMessage("0 xyz 1 2 3", present, notes); }).find("invalid source index 0"),
              std::string::npos);
    EXPECT_NE(refusal([&] { parseSourceMessage("7 xyz 1 2 3", present, notes); }).find("invalid source index 7"),
              std::string::npos);
    EXPECT_NE(refusal([&] { parseSourceMessage("1 xyz 1 2", present, notes); })
                  .find("not enough source coordinates. expected 3 coordinates"),
              std::string::npos);
    EXPECT_NE(refusal([&] { parseSourceMessage("1 polar 1 2 3", present, notes); }).find("unknown coordinate type"),
              std::string::npos);
    EXPECT_NE(refusal([&] { parseSourceMessage("one xyz 1 2 3", present, notes); }).find("source number"),
              std::string::npos);
    EXPECT_NE(refusal([&] { parseSourceMessage("1 xyz 1 two 3", present, notes); }).find("not a number"),
              std::string::npos);
    // Numbers beyond int and float: refused as written, never converted first (that was UB).
    EXPECT_NE(refusal([&] { parseSourceMessage("1e10 ade 0 1 0", present, notes); }).find("invalid source index 1e10"),
              std::string::npos);
    EXPECT_NE(refusal([&] { parseSourceMessage("-3e9 ade 0 1 0", present, notes); }).find("invalid source index -3e9"),
              std::string::npos);
    EXPECT_NE(refusal([&] { parseSourceMessage("1 xyz 1e40 0 0", present, notes); }).find("too large"),
              std::string::npos);
}

TEST(PositionMessages, SpeakersMessagePlacesEverySpeakerFromTheOrigin)
{
    std::vector<std::string> notes;
    const auto pair = parseSpeakersMessage("ade -30 1 0 30 1 0", 2, notes);
    ASSERT_EQ(pair.size(), 2u);
    EXPECT_NEAR(pair[0].x, -0.5f, 1e-6f);
    EXPECT_NEAR(pair[1].x, 0.5f, 1e-6f);
    // "xy" gives no height: the speakers start at the origin, so z stays 0.
    const auto flat = parseSpeakersMessage("xy 1 0 0 1 -1 0", 3, notes);
    EXPECT_EQ(flat[2].x, -1.0f);
    EXPECT_EQ(flat[2].z, 0.0f);
    EXPECT_TRUE(notes.empty());
    EXPECT_NE(refusal([&] { parseSpeakersMessage("ade -30 1 0 30 1", 2, notes); })
                  .find("not enough loudspeakers positions. expected 2 loudspeakers positions"),
              std::string::npos);
    parseSpeakersMessage("xyz 1 0 0 0 1 0 9", 2, notes);
    EXPECT_NE(notes.back().find("too many loudspeakers positions"), std::string::npos);
}
} // namespace
