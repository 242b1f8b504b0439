#include "LogFollower.h"

#include <gtest/gtest.h>

#include <fstream>

#include "EventLoop.h"
#include "Patience.h"
#include "ScratchRoot.h"

namespace {

using Lines = std::vector<std::string>;

class ALogFollower : public testing::Test {
  protected:
    ALogFollower() : file_(TestSupport::ScratchRoot::file("follower") + "/the.log")
    {
        std::filesystem::create_directories(file_.parent_path());
        std::filesystem::remove(file_);
    }

    void write(const std::string& text) { std::ofstream(file_, std::ios::app) << text; }

    Appliance::LogFollower::LineHandler keep()
    {
        return [this](const std::string& line) { lines_.push_back(line); };
    }

    bool waitForLines(std::size_t count)
    {
        return loop_.runUntil([&] { return lines_.size() >= count; }, TestSupport::Patience) ==
               Tool::EventLoop::Outcome::Done;
    }

    std::filesystem::path file_;
    Lines lines_;
    Tool::EventLoop loop_;
};

TEST_F(ALogFollower, SeesLinesAsTheyAreWritten)
{
    write("before\n");
    const Appliance::LogFollower follower(file_, Appliance::endOf(file_), keep());
    write("one\ntwo\n");
    ASSERT_TRUE(waitForLines(2));
    EXPECT_EQ(lines_, (Lines{"one", "two"}));
}

TEST_F(ALogFollower, WaitsForAFileThatIsNotThereYet)
{
    const Appliance::LogFollower follower(file_, 0, keep());
    write("first\n");
    ASSERT_TRUE(waitForLines(1));
    EXPECT_EQ(lines_, Lines{"first"});
}

TEST_F(ALogFollower, HandsOutALineWhenItIsWhole)
{
    Appliance::LogFollower follower(file_, 0, keep());
    write("half");
    follower.readOn();
    EXPECT_TRUE(lines_.empty());
    write(" and half\n\n");
    follower.readOn();
    EXPECT_EQ(lines_, (Lines{"half and half", ""}));
}

TEST_F(ALogFollower, StartsAtTheLastLines)
{
    write("1\n2\n3\n");
    EXPECT_EQ(Appliance::lastLines(file_, 2), "2\n3\n");
    EXPECT_EQ(Appliance::lastLines(file_, 9), "1\n2\n3\n");
    EXPECT_EQ(Appliance::lastLines(file_, 0), "");
    write("no newline");
    EXPECT_EQ(Appliance::lastLines(file_, 2), "3\nno newline");
    EXPECT_EQ(Appliance::lastLines(file_.string() + ".missing", 2), "");
}

TEST_F(ALogFollower, FindsTheLastLinesOfAFileOfManyBlocks)
{
    const std::string line(1000, 'x');
    for (int i = 0; i < 500; ++i) {
        write(line + std::to_string(i) + "\n");
    }
    const std::string last = Appliance::lastLines(file_, 100);
    EXPECT_EQ(last.size(), 100 * 1004U);
    EXPECT_EQ(last.substr(1000, 3), "400");
}

}  // namespace
