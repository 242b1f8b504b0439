#include "FolderWatch.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <stdexcept>

#include "EventLoop.h"
#include "Patience.h"
#include "ScratchRoot.h"

namespace {

namespace fs = std::filesystem;

class AFolderWatch : public testing::Test {
  protected:
    AFolderWatch() : folder_(TestSupport::ScratchRoot::file("watched"))
    {
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }

    void write(const std::string& name) { std::ofstream(folder_ / name) << name; }

    bool tellsOf(const std::string& name)
    {
        const bool told = loop_.runUntil([&] { return told_.count(name) > 0; }, TestSupport::Patience) ==
                          Tool::EventLoop::Outcome::Done;
        told_.clear();
        return told;
    }

    std::function<void(const std::string&)> keep()
    {
        return [this](const std::string& name) { told_.insert(name); };
    }

    fs::path folder_;
    std::set<std::string> told_;
    Tool::EventLoop loop_;
};

TEST_F(AFolderWatch, TellsOfAFileThatComesAndGoes)
{
    const Appliance::FolderWatch watch(folder_, keep());
    write("one");
    EXPECT_TRUE(tellsOf("one"));
    fs::remove(folder_ / "one");
    EXPECT_TRUE(tellsOf("one"));
}

TEST_F(AFolderWatch, TellsOfBothNamesOfAFileThatIsRenamed)
{
    write("old");
    const Appliance::FolderWatch watch(folder_, keep());
    fs::rename(folder_ / "old", folder_ / "new");
    EXPECT_TRUE(loop_.runUntil([&] { return told_.size() == 2; }, TestSupport::Patience) ==
                Tool::EventLoop::Outcome::Done);
    EXPECT_EQ(told_, (std::set<std::string>{"new", "old"}));
}

TEST_F(AFolderWatch, TellsThatAFileIsWrittenToTheEnd)
{
    std::ofstream file(folder_ / "slow");
    file << "half" << std::flush;
    const Appliance::FolderWatch watch(folder_, keep());
    file.close();
    EXPECT_TRUE(tellsOf("slow"));
}

TEST_F(AFolderWatch, NeedsAFolder)
{
    EXPECT_THROW(Appliance::FolderWatch(folder_ / "missing", keep()), std::system_error);
}

TEST_F(AFolderWatch, KeepsAnExceptionForWhoeverRunsTheLoop)
{
    const Appliance::FolderWatch watch(folder_,
                                       [](const std::string& name) { throw std::runtime_error(name); });
    write("one");
    EXPECT_THROW(loop_.runUntil([] { return false; }, TestSupport::Patience), std::runtime_error);
    EXPECT_EQ(Appliance::takeCallbackError(), nullptr);
}

}  // namespace
