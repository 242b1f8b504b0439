#include "Root.h"

#include <gtest/gtest.h>

#include <fstream>

#include "ScratchRoot.h"
#include "Session.h"

namespace {

TEST(ARoot, OfPlainCharactersIsFit)
{
    EXPECT_EQ(Tool::whyUnfit("/home/me/My-Build_1.0/+,:@%="), std::nullopt);
}

TEST(ARoot, WithACharacterThatMeansSomethingToAShellIsUnfit)
{
    for (const char* path : {"/a b", "/a~b", "/a'b", "/a\"b", "/a$b", "/a;b", "/a*b", "/a\nb", "/a`b",
                             "/caf\xC3\xA9", "/a&b", "/a|b", "/a(b)", "/a\\b", "/a!b", "/a#b"}) {
        EXPECT_NE(Tool::whyUnfit(path), std::nullopt) << path;
    }
}

TEST(ARoot, WhosePicturesFolderHasAHundredCharactersIsTheLongestFit)
{
    const std::string pictures = "/media/tmp";
    const std::string longest = "/" + std::string(99 - pictures.size(), 'x');
    EXPECT_EQ(Tool::whyUnfit(longest), std::nullopt);
    EXPECT_NE(Tool::whyUnfit(longest + "x"), std::nullopt);
}

TEST(ARoot, IsTheOneOfTheOptionBeforeTheOneOfTheEnvironment)
{
    EXPECT_EQ(Tool::chosenRoot("/a/../b").path, "/b");
    EXPECT_EQ(Tool::chosenRoot("").path, TestSupport::ScratchRoot::path());
}

TEST(ARootsLock, IsHeldByOneAtATime)
{
    const Tool::Root root{TestSupport::ScratchRoot::file("locked")};
    EXPECT_FALSE(Tool::RootLock::isTaken(root));
    {
        const auto lock = Tool::RootLock::take(root);
        EXPECT_TRUE(lock);
        EXPECT_TRUE(Tool::RootLock::isTaken(root));
        EXPECT_FALSE(Tool::RootLock::take(root));
    }
    EXPECT_FALSE(Tool::RootLock::isTaken(root));
    EXPECT_TRUE(Tool::RootLock::take(root));
}

TEST(ASession, IsNotFoundInAFileOfAnotherKind)
{
    const Tool::Root root{TestSupport::ScratchRoot::file("foreign")};
    const auto lock = Tool::RootLock::take(root);
    for (const char* text : {"", "no json", "[]", "{}", R"({"environment": 1, "processes": {}})"}) {
        std::ofstream(root.sessionFile()) << text;
        EXPECT_FALSE(Tool::findSession(root)) << text;
    }
}

TEST(ASession, IsFoundOnlyWhileItsRootIsLocked)
{
    const Tool::Root root{TestSupport::ScratchRoot::file("session")};
    auto lock = std::make_unique<std::optional<Tool::RootLock>>(Tool::RootLock::take(root));
    const Tool::Session session{root, {{"APPLIANCE_ROOT", root.path}}, {{"bus", 12}}};
    session.write();
    const auto found = Tool::findSession(root);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->environment, session.environment);
    EXPECT_EQ(found->processes, session.processes);
    lock.reset();
    EXPECT_FALSE(Tool::findSession(root));
}

TEST(AShellWord, KeepsEveryCharacter)
{
    EXPECT_EQ(Tool::shellWord("plain"), "'plain'");
    EXPECT_EQ(Tool::shellWord("it's $HOME"), "'it'\\''s $HOME'");
}

}  // namespace
