#include "LogFollower.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>

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

TEST_F(ALogFollower, StartsOverWhereTheFileIsCut)
{
    write("one\ntwo\nhalf");
    Appliance::LogFollower follower(file_, 4, keep());
    follower.readOn();
    std::filesystem::resize_file(file_, 0);
    write("new\n");
    ASSERT_TRUE(waitForLines(3));
    EXPECT_EQ(lines_, (Lines{"two", "half", "new"}));
    write("newer\n");
    ASSERT_TRUE(waitForLines(4));
    EXPECT_EQ(lines_.back(), "newer");
}

TEST_F(ALogFollower, GoesOnWithTheFileThatTakesTheName)
{
    write("one\n");
    Appliance::LogFollower follower(file_, 0, keep());
    follower.readOn();
    const std::string old = file_.string() + ".1";
    std::filesystem::rename(file_, old);
    std::ofstream(old, std::ios::app) << "the old one's last\nhalf";
    write("the new one's first, longer than all of the old one's\n");
    ASSERT_TRUE(waitForLines(4));
    EXPECT_EQ(lines_, (Lines{"one", "the old one's last", "half",
                             "the new one's first, longer than all of the old one's"}));
    write("second\n");
    ASSERT_TRUE(waitForLines(5));
    EXPECT_EQ(lines_.back(), "second");
}

TEST_F(ALogFollower, GoesOnWithAFileThatIsMovedInPlace)
{
    write("old\n");
    Appliance::LogFollower follower(file_, Appliance::endOf(file_), keep());
    const std::string next = file_.string() + ".next";
    std::ofstream(next) << "new\n";
    std::filesystem::rename(next, file_);
    ASSERT_TRUE(waitForLines(1));
    EXPECT_EQ(lines_, Lines{"new"});
}

TEST_F(ALogFollower, KeepsToTheOldFileUntilThereIsANewOne)
{
    write("one\n");
    Appliance::LogFollower follower(file_, 0, keep());
    std::filesystem::remove(file_);
    follower.readOn();
    EXPECT_EQ(lines_, Lines{"one"});
    write("two\n");
    follower.readOn();
    EXPECT_EQ(lines_, (Lines{"one", "two"}));
}

TEST_F(ALogFollower, CutsALineThatIsTooLong)
{
    const std::string longest(Appliance::LogFollower::MostLineBytes, 'x');
    Appliance::LogFollower follower(file_, 0, keep());
    write(longest + "\n" + longest + "y");
    follower.readOn();
    write(longest);
    follower.readOn();
    EXPECT_EQ(lines_.size(), 1U);
    write("\nnext\n");
    follower.readOn();
    ASSERT_EQ(lines_.size(), 3U);
    EXPECT_TRUE(lines_[0] == longest);
    EXPECT_TRUE(lines_[1] == longest) << lines_[1].size();
    EXPECT_EQ(lines_[2], "next");
}

TEST_F(ALogFollower, GoesOnBehindALineThatItsHandlerThrewAt)
{
    write("one\ntwo\nthree\n");
    Appliance::LogFollower follower(file_, 0, [this](const std::string& line) {
        lines_.push_back(line);
        if (line == "two") {
            throw std::runtime_error("no");
        }
    });
    EXPECT_THROW(follower.readOn(), std::runtime_error);
    EXPECT_EQ(lines_, (Lines{"one", "two"}));
    follower.readOn();
    EXPECT_EQ(lines_, (Lines{"one", "two", "three"}));
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
