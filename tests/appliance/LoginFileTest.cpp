#include "LoginFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>

#include "Exit.h"
#include "ScratchRoot.h"

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

class ALoginFile : public testing::Test {
  protected:
    void SetUp() override { fs::remove_all(folder_); }

    void write(const std::string& text) const
    {
        fs::create_directories(folder_);
        std::ofstream(file_) << text;
    }

    std::string content() const
    {
        std::ifstream in(file_);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    // Without the lock, which stays.
    std::set<std::string> files() const
    {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_)) {
            if (entry.path().extension() != ".lock") {
                names.insert(entry.path().filename());
            }
        }
        return names;
    }

    Tool::EventLoop loop_;
    fs::path folder_ = TestSupport::ScratchRoot::file("documents");
    fs::path file_ = folder_ / "emartLoginStatus.txt";
};

const std::set<std::string> OnlyTheFile = {"emartLoginStatus.txt"};

TEST_F(ALoginFile, IsMadeWhereThereIsNone)
{
    {
        const Tool::LoginHold hold(loop_, file_, false, 1s);
        EXPECT_EQ(content(), "login\n");
        EXPECT_EQ(hold.whyLoggedOut(), std::nullopt);
    }
    EXPECT_EQ(content(), "login\n");
    EXPECT_EQ(files(), OnlyTheFile);
}

TEST_F(ALoginFile, KeepsWhatSomebodyWrote)
{
    for (const char* text : {"logout\n", "", "LOGIN"}) {
        write(text);
        const Tool::LoginHold hold(loop_, file_, false, 1s);
        EXPECT_EQ(content(), text);
    }
}

TEST_F(ALoginFile, CannotBeMadeWhereThereIsNoFolder)
{
    std::ofstream(folder_) << "a file";
    EXPECT_THROW(Tool::LoginHold(loop_, file_, true, 1s), Tool::Failure);
    fs::remove(folder_);
}

TEST_F(ALoginFile, SaysLogoutWhileThatIsWanted)
{
    write("my login\nand more");
    {
        const Tool::LoginHold hold(loop_, file_, true, 1s);
        EXPECT_EQ(content(), "logout\n");
        EXPECT_EQ(hold.whyLoggedOut(), file_.string() + " begins with “logout”");
    }
    EXPECT_EQ(content(), "my login\nand more");
    EXPECT_EQ(files(), OnlyTheFile);
}

TEST_F(ALoginFile, IsReadAsTheServiceReadsIt)
{
    const auto whyLoggedOut = [this](const std::string& text) {
        write(text);
        return Tool::LoginHold(loop_, file_, false, 1s).whyLoggedOut().value_or("");
    };
    EXPECT_EQ(whyLoggedOut("login"), "");
    EXPECT_EQ(whyLoggedOut("logout, or login\n"), "");
    EXPECT_EQ(whyLoggedOut("LOGIN\nlogin\n"), file_.string() + " begins with “LOGIN”");
    EXPECT_EQ(whyLoggedOut(""), file_.string() + " begins with “”");
    const Tool::LoginHold hold(loop_, file_, false, 1s);
    fs::remove(file_);
    EXPECT_EQ(hold.whyLoggedOut(), file_.string() + " cannot be read");
}

TEST_F(ALoginFile, TellsThatItHasToBeAwaited)
{
    int waits = 0;
    const auto count = [&waits] { ++waits; };
    const Tool::LoginHold hold(loop_, file_, false, 1s, count);
    EXPECT_EQ(waits, 0);
    EXPECT_THROW(Tool::LoginHold(loop_, file_, false, 1ms, count), Tool::Failure);
    EXPECT_EQ(waits, 1);
}

TEST_F(ALoginFile, HasOneHolderAtATime)
{
    {
        const Tool::LoginHold hold(loop_, file_, false, 1s);
        try {
            const Tool::LoginHold second(loop_, file_, true, 10ms);
            FAIL() << "two hold it";
        } catch (const Tool::Failure& failure) {
            EXPECT_EQ(failure.status(), Tool::Exit::TimedOut);
            EXPECT_STREQ(failure.what(), "another search at the retailer is under way");
        }
        EXPECT_EQ(content(), "login\n");
    }
    const Tool::LoginHold next(loop_, file_, true, 1s);
    EXPECT_EQ(content(), "logout\n");
}

TEST_F(ALoginFile, StaysWhereSomebodyWritesItMeanwhile)
{
    write("before\n");
    {
        const Tool::LoginHold hold(loop_, file_, true, 1s);
        write("meanwhile\n");
    }
    EXPECT_EQ(content(), "meanwhile\n");
    EXPECT_EQ(files(), OnlyTheFile);
    fs::rename(file_, file_.string() + ".kept");
    write("after a kill\n");
    const Tool::LoginHold hold(loop_, file_, false, 1s);
    EXPECT_EQ(content(), "after a kill\n");
    EXPECT_EQ(files(), OnlyTheFile);
}

TEST_F(ALoginFile, LeavesNothingOfAKilledWriter)
{
    write("login\n");
    {
        const Tool::LoginHold hold(loop_, file_, true, 1s);
        std::ofstream(file_.string() + ".new") << "longer than what is written there";
    }
    const Tool::LoginHold hold(loop_, file_, true, 1s);
    EXPECT_EQ(content(), "logout\n");
    EXPECT_EQ(files(), (std::set<std::string>{"emartLoginStatus.txt", "emartLoginStatus.txt.kept"}));
}

// What a killed hold leaves is the file that it kept, and its own in the place of that or not yet.
TEST_F(ALoginFile, IsPutBackAfterAKilledHold)
{
    write("the user's login\n");
    fs::rename(file_, file_.string() + ".kept");
    write("logout\n");
    {
        const Tool::LoginHold hold(loop_, file_, false, 1s);
        EXPECT_EQ(content(), "the user's login\n");
    }
    fs::create_hard_link(file_, file_.string() + ".kept");
    {
        const Tool::LoginHold hold(loop_, file_, true, 1s);
        EXPECT_EQ(content(), "logout\n");
    }
    EXPECT_EQ(content(), "the user's login\n");
    EXPECT_EQ(files(), OnlyTheFile);
}

}  // namespace
