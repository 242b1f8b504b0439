#include "GivenUpPicture.h"

#include <gtest/gtest.h>

namespace {

const std::string GivenUp =
    "E/carvoy-service( 4711): \x1B[31m[4712] SearchControl.cpp: operator()(407) > Failed to startDownload "
    "for "
    "index 3\x1B[0m";

TEST(ALogLine, IsReadPartByPart)
{
    const auto line = Appliance::parseLogLine(GivenUp);
    ASSERT_TRUE(line);
    EXPECT_EQ(line->priority, 'E');
    EXPECT_EQ(line->tag, "carvoy-service");
    EXPECT_EQ(line->pid, 4711);
    EXPECT_EQ(line->text, "[4712] SearchControl.cpp: operator()(407) > Failed to startDownload for index 3");
    EXPECT_EQ(Appliance::messageOf(*line), "Failed to startDownload for index 3");
    EXPECT_EQ(Appliance::threadOf(*line), 4712);
    EXPECT_TRUE(Appliance::isServiceError(*line));
}

TEST(ALogLine, MayHaveAShortTagAndNoText)
{
    const auto line = Appliance::parseLogLine("I/ui      (    7): ");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->tag, "ui");
    EXPECT_EQ(line->pid, 7);
    EXPECT_EQ(line->text, "");
}

TEST(ALogLine, OfAnotherFormIsNone)
{
    for (const char* text :
         {"", "hello", "E carvoy-service( 1): x", "X/tag( 1): x", "E/tag( x): x", "E/tag(1)"}) {
        EXPECT_FALSE(Appliance::parseLogLine(text)) << text;
    }
}

TEST(ALogLine, MayTellNoThread)
{
    for (const char* text : {"", "[", "[]", "[] x", "[-1] x", "[x] x", "[12x] x", "[12]", "x [12] y"}) {
        const auto line = Appliance::parseLogLine(std::string("E/carvoy-service( 1): ") + text);
        ASSERT_TRUE(line) << text;
        EXPECT_EQ(Appliance::threadOf(*line), std::nullopt) << text;
    }
}

TEST(ALogLine, TellsWhereItWasLogged)
{
    const auto place = Appliance::placeOf(*Appliance::parseLogLine(GivenUp));
    ASSERT_TRUE(place);
    EXPECT_EQ(place->thread, 4712);
    EXPECT_EQ(place->file, "SearchControl.cpp");
    EXPECT_EQ(place->function, "operator()");
    EXPECT_EQ(place->line, 407);
}

TEST(ALogLine, TellsItsPlaceWhateverItsMessageSays)
{
    const auto line =
        Appliance::parseLogLine("D/carvoy-service( 1): [2] main.cpp: _create(10) > [3] b.cpp: f(4) > x");
    ASSERT_TRUE(line);
    const auto place = Appliance::placeOf(*line);
    ASSERT_TRUE(place);
    EXPECT_EQ(place->file, "main.cpp");
    EXPECT_EQ(place->function, "_create");
    EXPECT_EQ(place->line, 10);
    EXPECT_EQ(Appliance::messageOf(*line), "[3] b.cpp: f(4) > x");
}

TEST(ALogLine, MayTellNoPlace)
{
    for (const char* text :
         {"", "card shown", "[2] card shown", "[2] a.cpp: f(3)", "[2] a.cpp: f(3) >", "[2] a.cpp f(3) > x",
          "[2] : f(3) > x", "[2] a.cpp: (3) > x", "[2] a.cpp: f) > x", "[2] a.cpp: f() > x",
          "[2] a.cpp: f(x) > x", "[2] a.cpp: f(-3) > x", "[x] a.cpp: f(3) > x", "a.cpp: f(3) > x",
          "[2] (3) > a.cpp: f(3) > x", "[2] ) > a.cpp: f(3) > x", "] > [2] a.cpp: f(3) > x"}) {
        const auto line = Appliance::parseLogLine(std::string("E/carvoy-service( 1): ") + text);
        ASSERT_TRUE(line) << text;
        EXPECT_FALSE(Appliance::placeOf(*line)) << text;
    }
}

TEST(AGivenUpPicture, IsKnownByItsLine)
{
    const auto picture = Tool::pictureGivenUp(*Appliance::parseLogLine(GivenUp));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->source, Ui::Source::Merchant);
    EXPECT_EQ(picture->index, 3U);
    EXPECT_EQ(picture->kind, Ui::PictureKind::Product);
}

TEST(AGivenUpPicture, OfTheRetailerHasAType)
{
    const std::string line =
        "E/carvoy-service( 1): [2] SearchEmartControl.cpp: f(2) > Failed to startDownload for index 4, "
        "type: ";
    const auto picture = Tool::pictureGivenUp(*Appliance::parseLogLine(line + "0"));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->source, Ui::Source::Retailer);
    EXPECT_EQ(picture->index, 4U);
    EXPECT_EQ(picture->kind, Ui::PictureKind::Product);
    const auto badge = Tool::pictureGivenUp(*Appliance::parseLogLine(line + "2"));
    ASSERT_TRUE(badge);
    EXPECT_EQ(badge->kind, Ui::PictureKind::Badge);
}

TEST(AGivenUpPicture, IsNeitherAnotherErrorNorAnotherProgramsLine)
{
    const std::string message = "[1] a.cpp: f(2) > Failed to startDownload for index ";
    for (const std::string& text :
         {"E/carvoy-ui( 1): " + message + "3", "D/carvoy-service( 1): " + message + "3",
          "E/carvoy-service( 1): " + message, "E/carvoy-service( 1): " + message + "x",
          "E/carvoy-service( 1): " + message + "3 or so", "E/carvoy-service( 1): " + message + "3, type: 1",
          "E/carvoy-service( 1): " + message + "3, type: ", "E/carvoy-service( 1): " + message + "x, type: 0",
          "E/carvoy-service( 1): " + message + "3, type: 20", "E/carvoy-service( 1): " + message + "3,",
          std::string("E/carvoy-service( 1): [1] a.cpp: f(2) > curl perform failed: 0")}) {
        const auto line = Appliance::parseLogLine(text);
        ASSERT_TRUE(line) << text;
        EXPECT_FALSE(Tool::pictureGivenUp(*line)) << text;
    }
}

}  // namespace
