// Platform paths: where they lead, how they are joined, how long they live, and which roots are taken.
#include <gtest/gtest.h>
#include <tzplatform_config.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "ChildProcess.h"
#include "ScratchRoot.h"

namespace {

namespace fs = std::filesystem;
using TestSupport::ChildProcess;
using TestSupport::ScratchRoot;

const char* const pathBeforeMain = tzplatform_mkpath(TZ_USER_APP, "before/main");

std::string outputOf(const std::string& command, const ChildProcess::Variables& variables)
{
    ChildProcess process({STORE_PROBE, command}, variables);
    EXPECT_EQ(process.wait().status, 0);
    return process.output();
}

std::string foldersUnder(const std::string& root)
{
    return root + "/apps_rw\n" + root + "/media\nsame path to the end\n";
}

}  // namespace

TEST(Tzplatform, TheVariablesHaveTheAppliancesNumbers)
{
    EXPECT_EQ(TZ_USER_APP, 50);
    EXPECT_EQ(TZ_USER_CONTENT, 55);
    EXPECT_EQ(_TZPLATFORM_VARIABLES_INVALID_, -1);
}

TEST(Tzplatform, TheVariablesAreFoldersOfTheRoot)
{
    EXPECT_EQ(tzplatform_getenv(TZ_USER_APP), ScratchRoot::file("apps_rw"));
    EXPECT_EQ(tzplatform_getenv(TZ_USER_CONTENT), ScratchRoot::file("media"));
}

TEST(Tzplatform, TheFoldersAreThere)
{
    EXPECT_TRUE(fs::is_directory(tzplatform_getenv(TZ_USER_APP)));
    EXPECT_TRUE(fs::is_directory(tzplatform_getenv(TZ_USER_CONTENT)));
}

TEST(Tzplatform, JoinsWithOneSlash)
{
    const std::string expected = ScratchRoot::file("media/tmp/x");
    EXPECT_EQ(tzplatform_mkpath(TZ_USER_CONTENT, "tmp/x"), expected);
    EXPECT_EQ(tzplatform_mkpath(TZ_USER_CONTENT, "/tmp/x"), expected);
    EXPECT_EQ(tzplatform_mkpath(TZ_USER_CONTENT, "//tmp/x"), expected);
}

TEST(Tzplatform, LeavesTheRestOfThePathAsItIs)
{
    EXPECT_EQ(tzplatform_mkpath(TZ_USER_APP, "a//b/"), ScratchRoot::file("apps_rw/a//b/"));
}

TEST(Tzplatform, AnEmptyPathIsTheFolderItself)
{
    EXPECT_EQ(tzplatform_mkpath(TZ_USER_APP, ""), ScratchRoot::file("apps_rw"));
    EXPECT_EQ(tzplatform_mkpath(TZ_USER_APP, "/"), ScratchRoot::file("apps_rw"));
}

TEST(Tzplatform, MakesNoFolderOfAPath)
{
    EXPECT_FALSE(fs::exists(tzplatform_mkpath(TZ_USER_CONTENT, "never/made")));
    EXPECT_TRUE(fs::is_empty(tzplatform_getenv(TZ_USER_CONTENT)));
}

TEST(Tzplatform, EqualPathsAreOneText)
{
    const char* first = tzplatform_mkpath(TZ_USER_CONTENT, "tmp");

    EXPECT_EQ(static_cast<const void*>(tzplatform_mkpath(TZ_USER_CONTENT, "tmp")), first);
    EXPECT_EQ(static_cast<const void*>(tzplatform_mkpath(TZ_USER_CONTENT, std::string("/tmp").c_str())),
              first);
    EXPECT_NE(static_cast<const void*>(tzplatform_mkpath(TZ_USER_APP, "tmp")), first);
}

TEST(Tzplatform, APathStaysAsItWasWhileOthersCome)
{
    const char* first = tzplatform_mkpath(TZ_USER_APP, "first");
    for (int i = 0; i < 10'000; ++i)
        tzplatform_mkpath(TZ_USER_APP, std::to_string(i).c_str());

    EXPECT_EQ(first, ScratchRoot::file("apps_rw/first"));
    EXPECT_EQ(static_cast<const void*>(tzplatform_mkpath(TZ_USER_APP, "first")), first);
}

TEST(Tzplatform, OtherNumbersAreNoVariables)
{
    for (const int id : {-1, 0, 49, 51, 54, 56, 1000}) {
        EXPECT_EQ(tzplatform_mkpath(static_cast<tzplatform_variable>(id), "tmp"), nullptr);
        EXPECT_EQ(tzplatform_getenv(static_cast<tzplatform_variable>(id)), nullptr);
    }
}

TEST(Tzplatform, ANullPathGivesNull)
{
    EXPECT_EQ(tzplatform_mkpath(TZ_USER_APP, nullptr), nullptr);
}

TEST(Tzplatform, PathsAreThereBeforeMain)
{
    EXPECT_EQ(pathBeforeMain, ScratchRoot::file("apps_rw/before/main"));
}

TEST(Tzplatform, ThreadsGetTheSameText)
{
    std::vector<const char*> paths(8);
    std::vector<std::thread> threads;
    for (const char*& path : paths)
        threads.emplace_back([&path] {
            for (int i = 0; i < 200; ++i)
                path = tzplatform_mkpath(TZ_USER_APP, ("thread/" + std::to_string(i)).c_str());
        });
    for (std::thread& thread : threads)
        thread.join();

    for (const char* path : paths)
        EXPECT_EQ(static_cast<const void*>(path), paths.front());
}

TEST(ApplianceRoot, IsMadeWithItsParents)
{
    const std::string root = ScratchRoot::file("new/root");

    EXPECT_EQ(outputOf("folders", {{"APPLIANCE_ROOT", root}}), foldersUnder(root));
    EXPECT_TRUE(fs::is_directory(root + "/apps_rw"));
    EXPECT_TRUE(fs::is_directory(root + "/media"));
}

TEST(ApplianceRoot, LosesItsFinalSlashAndItsDetours)
{
    EXPECT_EQ(outputOf("folders", {{"APPLIANCE_ROOT", ScratchRoot::file("a/../b//c/")}}),
              foldersUnder(ScratchRoot::file("b/c")));
}

TEST(ApplianceRoot, IsMadeAbsolute)
{
    const std::string relative = fs::relative(ScratchRoot::file("relative"));

    EXPECT_EQ(outputOf("folders", {{"APPLIANCE_ROOT", relative}}),
              foldersUnder(ScratchRoot::file("relative")));
}

TEST(ApplianceRoot, UnsetIsInTheUsersStateFolder)
{
    const std::string state = ScratchRoot::file("state");

    EXPECT_EQ(outputOf("folders", {{"APPLIANCE_ROOT", ""}, {"XDG_STATE_HOME", state}}),
              foldersUnder(state + "/carvoy-appliance"));
}

TEST(ApplianceRoot, UnsetAndWithoutAStateFolderIsInTheHome)
{
    const std::string home = ScratchRoot::file("home");
    const std::string expected = foldersUnder(home + "/.local/state/carvoy-appliance");

    EXPECT_EQ(outputOf("folders", {{"APPLIANCE_ROOT", ""}, {"XDG_STATE_HOME", ""}, {"HOME", home}}),
              expected);
    EXPECT_EQ(outputOf("folders", {{"APPLIANCE_ROOT", ""}, {"XDG_STATE_HOME", "relative"}, {"HOME", home}}),
              expected);
}

TEST(ApplianceRoot, IsTakenAsItIsWhateverItsCharacters)
{
    const std::vector<std::string> roots = {ScratchRoot::file("with blank"), ScratchRoot::file("dollar$HOME"),
                                            ScratchRoot::file("a;b"), ScratchRoot::file("quote'"),
                                            ScratchRoot::file(std::string(200, 'r'))};
    for (const std::string& root : roots) {
        SCOPED_TRACE(root);
        EXPECT_EQ(outputOf("folders", {{"APPLIANCE_ROOT", root}}), foldersUnder(root));
    }
}

TEST(ApplianceRoot, ThatCannotBeWrittenMakesTheStoresFail)
{
    ChildProcess process({STORE_PROBE, "results"}, {{"APPLIANCE_ROOT", "/proc/appliance"}});
    EXPECT_EQ(process.wait().status, 0);

    EXPECT_EQ(process.output(), "vconf_set_int -1\nndd_manager_create -5\nsame path to the end\n");
    EXPECT_EQ(process.errors(),
              "host platform: cannot make /proc/appliance/apps_rw: No such file or directory\n"
              "host platform: cannot make /proc/appliance/media: No such file or directory\n");
}
