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

TEST_F(ALogFollower, StartsAtTheLastLinesThatCount)
{
    const auto isEven = [](const std::string& head) { return (head.back() - '0') % 2 == 0; };
    write("1\n2\n3\n4\n5\n");
    EXPECT_EQ(Appliance::startOfLastLines(file_, 1, isEven), 6U);
    EXPECT_EQ(Appliance::startOfLastLines(file_, 2, isEven), 2U);
    EXPECT_EQ(Appliance::startOfLastLines(file_, 3, isEven), 0U);
    EXPECT_EQ(Appliance::startOfLastLines(file_, 0, isEven), 10U);
    EXPECT_EQ(Appliance::startOfLastLines(file_.string() + ".missing", 2, isEven), 0U);
}

// The blocks end at any place of a line, also between two.
TEST_F(ALogFollower, FindsTheLinesThatCountWhereverTheBlocksEnd)
{
    const std::size_t blockSize = 65536;
    for (std::size_t behind = blockSize - 8; behind <= blockSize + 2; ++behind) {
        std::filesystem::remove(file_);
        write("other\nwanted\n" + std::string(behind - 1, 'x') + "\n");
        const auto start =
            Appliance::startOfLastLines(file_, 1, [](const std::string& head) { return head == "wanted"; });
        EXPECT_EQ(start, 6U) << behind;
    }
}

TEST_F(ALogFollower, JudgesALineByItsHead)
{
    const std::string longest(Appliance::LineHeadBytes, 'h');
    write("first\n" + longest + std::string(200'000, 't') + "\nlast\n");
    Lines heads;
    Appliance::startOfLastLines(file_, 9, [&heads](const std::string& head) {
        heads.push_back(head);
        return false;
    });
    EXPECT_EQ(heads, (Lines{"last", longest}));
}

}  // namespace
