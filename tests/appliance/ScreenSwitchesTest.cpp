#include "Switches.h"

#include <gtest/gtest.h>

#include <set>

#include "ScratchRoot.h"
#include "Trouble.h"

namespace {

using nlohmann::json;
using Screen::Switches;
using TestSupport::ScratchRoot;

std::set<std::string> onIn(const Switches& switches)
{
    std::set<std::string> on;
    for (const json& known : switches.toJson()) {
        if (known.at("on") == true) {
            on.insert(known.at("id"));
        }
    }
    return on;
}

TEST(TheSwitches, AreOffAtTheStartAndAddNothing)
{
    const Switches switches("");
    EXPECT_EQ(onIn(switches), std::set<std::string>());
    EXPECT_EQ(switches.words(), "");
}

TEST(TheSwitches, AddTheirWordsToASearch)
{
    Switches switches("");
    EXPECT_TRUE(switches.turn("missing-picture", true));
    EXPECT_TRUE(switches.turn("slow-answer", true));
    EXPECT_EQ(switches.words(), " ~delay=3s ~image-404=2");
    EXPECT_TRUE(switches.turn("slow-answer", false));
    EXPECT_EQ(switches.words(), " ~image-404=2");
}

TEST(TheSwitches, AllowOneAnswerAtATime)
{
    Switches switches("");
    switches.turn("slow-answer", true);
    switches.turn("401", true);
    switches.turn("503", true);
    EXPECT_EQ(onIn(switches), (std::set<std::string>{"slow-answer", "503"}));
    switches.turn("garbage", true);
    EXPECT_EQ(onIn(switches), (std::set<std::string>{"slow-answer", "garbage"}));
}

TEST(TheSwitches, KnowOnlyTheirOwnNames)
{
    Switches switches("");
    EXPECT_FALSE(switches.turn("502", true));
    EXPECT_FALSE(switches.turn("untrusted-certificate", true)) << "there is no file for it";
    EXPECT_EQ(switches.words(), "");
}

TEST(TheSwitches, HaveOnlyWordsThatTheStandInsKnow)
{
    for (const json& known : Switches("").toJson()) {
        EXPECT_NO_THROW(Appliance::StandIn::parseQuery(known.at("words").get<std::string>())) << known;
    }
}

TEST(TheSwitches, MakeAndRemoveTheFileOfTheUntrustedCertificate)
{
    const std::filesystem::path file = ScratchRoot::file("untrusted-certificate");
    Switches switches(file);
    EXPECT_TRUE(switches.turn("untrusted-certificate", true));
    EXPECT_TRUE(std::filesystem::exists(file));
    EXPECT_EQ(switches.words(), "");
    EXPECT_EQ(onIn(Switches(file)), (std::set<std::string>{"untrusted-certificate"})) << "as it is found";
    EXPECT_TRUE(switches.turn("untrusted-certificate", false));
    EXPECT_TRUE(switches.turn("untrusted-certificate", false));
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(TheSwitches, SayWhereTheFileCannotBeHad)
{
    Switches switches(ScratchRoot::file("no/such/folder/file"));
    EXPECT_THROW(switches.turn("untrusted-certificate", true), std::runtime_error);
    EXPECT_EQ(onIn(switches), std::set<std::string>());
}

}  // namespace
