#include "Completion.h"

#include <gtest/gtest.h>

#include <fstream>

#include "ChildProcess.h"
#include "Commands.h"
#include "ScratchRoot.h"

namespace {

std::string scriptFile(const std::string& shell)
{
    CLI::App app;
    Tool::Action chosen;
    Tool::buildCommandLine(app, chosen);
    const std::string file = TestSupport::ScratchRoot::file("completion." + shell);
    std::ofstream(file) << Tool::completionScript(app, shell);
    return file;
}

// What bash offers for the last of these words.
std::string offered(const std::string& words)
{
    const std::string ask = "source " + scriptFile("bash") + "; COMP_WORDS=(" + words +
                            "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _appliance; echo \"${COMPREPLY[*]}\"";
    TestSupport::ChildProcess bash({"bash", "--norc", "-c", ask});
    EXPECT_EQ(bash.wait().status, 0);
    EXPECT_EQ(bash.errors(), "");
    std::string output = bash.output();
    return output.substr(0, output.find('\n'));
}

TEST(BashCompletion, OffersEverySubCommand)
{
    CLI::App app;
    Tool::Action chosen;
    Tool::buildCommandLine(app, chosen);
    const std::string all = " " + offered("appliance ''") + " ";
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        EXPECT_NE(all.find(" " + command->get_name() + " "), std::string::npos) << command->get_name();
    }
}

TEST(BashCompletion, CompletesASubCommand)
{
    EXPECT_EQ(offered("appliance st"), "status");
}

TEST(BashCompletion, OffersTheOptionsOfASubCommand)
{
    EXPECT_EQ(offered("appliance search --no"), "--no-pictures");
    EXPECT_EQ(offered("appliance up --con"), "--confirm --confirm-after");
}

TEST(BashCompletion, OffersTheValuesOfAnOption)
{
    EXPECT_EQ(offered("appliance up --confirm ''"), "now late fail never");
    EXPECT_EQ(offered("appliance up --confirm l"), "late");
    EXPECT_EQ(offered("appliance log --level ''"), "verbose debug info warning error fatal");
    EXPECT_EQ(offered("appliance log --only w"), "warning");
    EXPECT_EQ(offered("appliance monitor --kind re"), "reply refusal");
    EXPECT_EQ(offered("appliance completion ''"), "-h --help bash zsh");
}

TEST(BashCompletion, OffersNothingWhereAnythingMayStand)
{
    EXPECT_EQ(offered("appliance search --merchant ''"), "");
}

TEST(BashCompletion, OffersFoldersForARoot)
{
    EXPECT_EQ(offered("appliance status --root /us"), "/usr");
}

TEST(ZshCompletion, CallsItsBridgeToBash)
{
    CLI::App app;
    Tool::Action chosen;
    Tool::buildCommandLine(app, chosen);
    EXPECT_NE(Tool::completionScript(app, "zsh").find("bashcompinit"), std::string::npos);
}

}  // namespace
