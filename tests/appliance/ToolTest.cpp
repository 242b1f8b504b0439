#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>

#include "ChildProcess.h"
#include "EventListener.h"
#include "PrivateBus.h"
#include "ScratchRoot.h"
#include "ToolFixture.h"

namespace {

using namespace TestSupport;

// Whether the process is gone (or nobody's child any more, waiting to be collected).
bool endsInTime(pid_t pid)
{
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    if (handle < 0) {
        return true;
    }
    pollfd watch{handle, POLLIN, 0};
    const std::chrono::milliseconds limit = Patience;
    const bool ended = poll(&watch, 1, static_cast<int>(limit.count())) == 1;
    close(handle);
    return ended;
}

// The root of a run, by the path of its first picture.
std::string rootOfRun(const std::string& output)
{
    const std::size_t start = output.find('/', output.find("✓ picture 1"));
    const std::string picture = output.substr(start, output.find('\n', start) - start);
    EXPECT_TRUE(has(picture, "/media/tmp/")) << output;
    return picture.substr(0, picture.find("/media/tmp/"));
}

TEST(ARun, ShowsASearchAndLeavesNothingBehind)
{
    const Ended run = tool({"run"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(has(run.output, "“milk” at freshmart: 6 products")) << run.output;
    EXPECT_EQ(count(run.output, "✓ picture"), 6U) << run.output;
    EXPECT_TRUE(has(run.output, "db/nuvex/e-commerce/response = 1"));
    EXPECT_FALSE(has(run.output, "\x1B"));
    EXPECT_FALSE(std::filesystem::exists(rootOfRun(run.output)));
}

TEST(ARun, SearchesWhereAndForWhatItIsTold)
{
    const Ended run = tool({"run", "--no-pictures", "--merchant", "greengrocer", "gala", "apples"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(has(run.output, "“gala apples” at greengrocer")) << run.output;
    EXPECT_TRUE(has(run.output, "Gala Apples"));
}

TEST(ARun, IsOneObjectInJson)
{
    const Ended run = tool({"run", "--json"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "");
    const nlohmann::json json = nlohmann::json::parse(run.output, nullptr, false);
    ASSERT_TRUE(json.is_object()) << run.output;
    EXPECT_EQ(json["card"]["total"], 6);
    EXPECT_EQ(json["status"]["Commerce"]["totalCount"], 6);
    EXPECT_EQ(json["status"]["db/nuvex/e-commerce/response"], 1);
}

TEST(ARun, OfARefusedSearchFailsAndSaysWhy)
{
    const Ended run = tool({"run", "milk ~status=503"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(has(run.output, "0 products"));
    EXPECT_TRUE(has(run.output, "✗ curl perform failed: 503")) << run.output;
    EXPECT_TRUE(has(run.output, "Status record"));
}

TEST(ARun, TellsOfAPictureThatCannotBeHad)
{
    const Ended run = tool({"run", "milk ~image-404=2"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(count(run.output, "✓ picture"), 5U);
    EXPECT_TRUE(has(run.output, "✗ picture 2  Failed to startDownload for index 1")) << run.output;
}

TEST(ARun, ThatTakesTooLongEnds)
{
    const Ended run = tool({"run", "--timeout", "1", "milk ~image-stall"});
    EXPECT_EQ(run.status, 4);
    EXPECT_TRUE(has(run.errors, "came in time")) << run.errors;
}

const char LongSearch[] = "milk ~image-stall=2,3,4,5,6";

TEST(ARun, ThatIsInterruptedCleansUp)
{
    ChildProcess run({APPLIANCE_TOOL, "run", LongSearch});
    ASSERT_TRUE(run.waitForOutput("✓ picture 1  ")) << run.errors();
    const std::string root = rootOfRun(run.output());
    EXPECT_TRUE(std::filesystem::exists(root));
    run.signal(SIGINT);
    EXPECT_EQ(run.wait().status, 130) << run.errors();
    EXPECT_FALSE(std::filesystem::exists(root));
}

TEST(ARun, RemovesWhatAKilledOneLeftBehind)
{
    ChildProcess run({APPLIANCE_TOOL, "run", LongSearch});
    ASSERT_TRUE(run.waitForOutput("✓ picture 1  ")) << run.errors();
    const std::string root = rootOfRun(run.output());
    run.signal(SIGKILL);
    run.wait();
    EXPECT_EQ(tool({"run", "--no-pictures"}).status, 0);
    EXPECT_FALSE(std::filesystem::exists(root));
}

TEST_F(ARunningAppliance, AnswersSearchesOfThisAndThat)
{
    up();
    const Ended search = on({"search", "milk"});
    EXPECT_EQ(search.status, 0) << search.errors;
    EXPECT_EQ(count(search.output, "✓ picture"), 6U) << search.output;
    const Ended result = on({"result", "--json"});
    EXPECT_EQ(result.status, 0);
    const nlohmann::json card = nlohmann::json::parse(result.output);
    EXPECT_EQ(card["results"], 2);
    EXPECT_NE(card["products"][0]["picture"], "");
    EXPECT_TRUE(has(on({"status"}).output, "response = 1"));
    EXPECT_EQ(on({"search", "nothing-of-this-name"}).status, 1);
    down();
}

TEST_F(ARunningAppliance, HasAMerchantThatNobodyTrustsWhileAFileIsThere)
{
    const std::string file = ScratchRoot::file("up") + "/untrusted-certificate";
    const auto distrust = [&file] { std::ofstream(file) << ""; };
    const Words search = {"search", "--no-pictures", "milk"};
    std::filesystem::create_directories(ScratchRoot::file("up"));
    distrust();  // of an earlier run
    up();
    EXPECT_EQ(on(search).status, 0);
    distrust();
    const Ended refused = on(search);
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(has(refused.output, "0 products")) << refused.output;
    EXPECT_TRUE(has(refused.output, "curl perform failed")) << refused.output;
    std::filesystem::remove(file);
    EXPECT_EQ(on(search).status, 0);
    down();
}

TEST_F(ARunningAppliance, RefusesASecondInTheSameRoot)
{
    up();
    const Ended second = on({"up"});
    EXPECT_EQ(second.status, 1);
    EXPECT_TRUE(has(second.errors, "already runs")) << second.errors;
    EXPECT_EQ(on({"status"}).status, 0);
    down();
}

TEST_F(ARunningAppliance, DiesWholeWhenItIsKilled)
{
    up();
    const auto all = processes();
    EXPECT_EQ(all.size(), 8U);
    up_->signal(SIGKILL);
    up_->wait();
    for (const auto& [name, pid] : all) {
        EXPECT_TRUE(endsInTime(pid)) << name;
    }
    EXPECT_EQ(on({"status"}).status, 3);
}

TEST_F(ARunningAppliance, EndsWhenOneOfItsProgramsDoes)
{
    up();
    const auto all = processes();
    kill(all.at("carvoy-service"), SIGKILL);
    EXPECT_EQ(up_->wait().status, 1);
    EXPECT_TRUE(has(up_->errors(), "carvoy-service ended unexpectedly: killed by signal 9")) << up_->errors();
    for (const auto& [name, pid] : all) {
        EXPECT_TRUE(endsInTime(pid)) << name;
    }
}

TEST_F(ARunningAppliance, SendsAnythingToAnyApp)
{
    up();
    EXPECT_EQ(on({"send", "org.tizen.carvoy-service", "service:result"}).status, 0);
    const Ended answered = on({"send", "--wait-reply", "--extra", "key_merchant=freshmart", "--extra",
                               "key_search_term=milk", "org.tizen.carvoy", "service:search"});
    EXPECT_EQ(answered.status, 0) << answered.errors;
    EXPECT_TRUE(has(answered.output, "succeeded\n")) << answered.output;
    EXPECT_TRUE(has(answered.output, "key_card_sequence = 1\n")) << answered.output;
    EXPECT_EQ(on({"send", "org.example.nobody", "service:result"}).status, 3);
    EXPECT_EQ(on({"send", "org.tizen.carvoy", "no-operation"}).status, 2);
    EXPECT_EQ(on({"send", "org.tizen.carvoy", "service:show", "--extra", "novalue"}).status, 2);
    const Ended silent =
        on({"send", "--wait-reply", "--timeout", "0.3", "org.tizen.carvoy-service", "service:result"});
    EXPECT_EQ(silent.status, 4);
    down();
}

TEST_F(ARunningAppliance, ShowsItsLogWithoutColoursToAFile)
{
    up();
    const Ended log = on({"log", "-n", "1000"});
    EXPECT_EQ(log.status, 0);
    EXPECT_TRUE(has(log.output, "Carvoy Version")) << log.output;
    EXPECT_FALSE(has(log.output, "\x1B"));
    const Ended one = on({"log", "-n", "1"});
    EXPECT_EQ(count(one.output, "\n"), 1U) << one.output;
    down();
}

TEST_F(ARunningAppliance, TakesAShellIn)
{
    up();
    const std::string script = "eval \"$(" + std::string(APPLIANCE_TOOL) + " env --root " + root_ +
                               ")\" && test \"$APPLIANCE_ROOT\" = " + root_ + " && " + APPLIANCE_TOOL +
                               " status";
    ChildProcess shell({"sh", "-c", script});
    EXPECT_EQ(shell.wait().status, 0) << shell.errors();
    down();
}

TEST_F(ARunningAppliance, EndsWithItsInputWhereThatIsAskedFor)
{
    const std::string root = ScratchRoot::file("stdin");
    ChildProcess shell(
        {"sh", "-c", "echo | " + std::string(APPLIANCE_TOOL) + " up --until-stdin-closes --root " + root});
    EXPECT_EQ(shell.wait().status, 0) << shell.errors();
    EXPECT_TRUE(has(shell.output(), "The appliance is up"));
    EXPECT_FALSE(std::filesystem::exists(root + "/session.json"));
}

TEST_F(ARunningAppliance, EndsAtOnceWhereItsInputCannotStayOpen)
{
    const std::string root = ScratchRoot::file("no-stdin");
    ChildProcess shell(
        {"sh", "-c",
         std::string(APPLIANCE_TOOL) + " up --until-stdin-closes --root " + root + " </dev/null"});
    EXPECT_EQ(shell.wait().status, 0) << shell.errors();
    EXPECT_TRUE(has(shell.output(), "The appliance is up"));
}

// The appliance with its screen, in a root of the test's own.
class AnApplianceWithItsScreen : public testing::Test {
  protected:
    void show(const Words& options = {})
    {
        root_ = ScratchRoot::file("screen");
        Words command = {APPLIANCE_TOOL, "screen", "--root", root_};
        command.insert(command.end(), options.begin(), options.end());
        tool_ = std::make_unique<ChildProcess>(command);
        ASSERT_TRUE(tool_->waitForOutput("Ctrl-C ends it.")) << tool_->errors();
    }

    // http://127.0.0.1:PORT/
    std::string address() const
    {
        const std::string output = tool_->output();
        const std::size_t start = output.find("http://127.0.0.1:");
        return start == std::string::npos ? ""
                                          : output.substr(start, output.find_first_of(" \n", start) - start);
    }

    int port() const { return std::stoi(address().substr(std::string("http://127.0.0.1:").size())); }

    // To the end of the tool, and of all that it started.
    void interrupt()
    {
        std::ifstream in(root_ + "/session.json");
        const std::map<std::string, pid_t> processes = nlohmann::json::parse(in)["processes"];
        EXPECT_EQ(processes.size(), 8U);
        tool_->signal(SIGINT);
        EXPECT_EQ(tool_->wait().status, 0) << tool_->errors();
        EXPECT_EQ(tool_->errors(), "");
        for (const auto& [name, pid] : processes) {
            EXPECT_TRUE(endsInTime(pid)) << name;
        }
    }

    std::string root_;
    std::unique_ptr<ChildProcess> tool_;
};

TEST_F(AnApplianceWithItsScreen, SaysWhereThatIsAndLeavesNothingRunning)
{
    show();
    EXPECT_EQ(count(tool_->output(), address()), 2U) << tool_->output();
    interrupt();
}

TEST_F(AnApplianceWithItsScreen, EndsWellWhileAPageIsOpen)
{
    show();
    ApplianceTest::HttpClient client("127.0.0.1", port());
    client.headers = {"Host: 127.0.0.1:" + std::to_string(port())};
    ApplianceTest::EventListener page(client);
    ASSERT_TRUE(page.waitFor("event: "));
    interrupt();
}

TEST_F(AnApplianceWithItsScreen, SaysWhereItsPortIsTaken)
{
    show();
    const std::string taken = std::to_string(port());
    const Ended second = tool({"screen", "--root", ScratchRoot::file("second"), "--port", taken});
    EXPECT_EQ(second.status, 1);
    EXPECT_TRUE(has(second.errors, "cannot listen on 127.0.0.1 port " + taken)) << second.errors;
    EXPECT_EQ(tool({"screen", "--port", "65536"}).status, 2);
}

TEST_F(ARunningAppliance, EndsWellWhenItsTerminalGoesAway)
{
    up();
    up_->signal(SIGHUP);
    EXPECT_EQ(up_->wait().status, 0) << up_->errors();
    EXPECT_FALSE(std::filesystem::exists(root_ + "/session.json"));
}

TEST_F(ARunningAppliance, EndsWellWithPicturesUnderWay)
{
    up();
    EXPECT_EQ(on({"search", "--no-pictures", "milk ~slow-images=3s"}).status, 0);
    down();
    EXPECT_FALSE(std::filesystem::exists(root_ + "/media/tmp"));
}

TEST(TheTool, NeedsABusOrARunningAppliance)
{
    const ChildProcess::Variables noBus = {{"DBUS_SESSION_BUS_ADDRESS", "unix:abstract=nobody-listens-here"}};
    const Ended send = tool({"send", "org.tizen.carvoy", "service:show"}, noBus);
    EXPECT_EQ(send.status, 3) << send.errors;
    EXPECT_EQ(tool({"search", "milk"}).status, 3);
    EXPECT_EQ(tool({"status"}).status, 3);
}

TEST(TheTool, SendsOnTheBusOfItsEnvironment)
{
    const PrivateBus bus;
    const Ended send = tool({"send", "org.example.nobody", "service:show"});
    EXPECT_EQ(send.status, 3);
    EXPECT_TRUE(has(send.errors, "no such app")) << send.errors;
}

TEST(TheTool, SaysHowItIsUsed)
{
    const Ended help = tool({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(has(help.output, "Exit status:"));
    for (const char* command : {"up", "screen", "run", "search", "result", "say", "status", "log", "monitor",
                                "send", "env", "completion"}) {
        EXPECT_TRUE(has(help.output, std::string("\n  ") + command + " ")) << command;
        const Ended own = tool({command, "--help"});
        EXPECT_EQ(own.status, 0);
        EXPECT_TRUE(has(own.output, "Examples:")) << command;
    }
    EXPECT_EQ(tool({}).status, 2);
    EXPECT_EQ(tool({"fly"}).status, 2);
    EXPECT_EQ(tool({"up", "--confirm", "perhaps"}).status, 2);
}

TEST(TheTool, RefusesARootThatTheServiceCannotLiveIn)
{
    const Ended blank = tool({"up", "--root", ScratchRoot::file("a b")});
    EXPECT_EQ(blank.status, 2);
    EXPECT_TRUE(has(blank.errors, "has a character other than")) << blank.errors;
    const Ended deep = tool({"up", "--root", ScratchRoot::file(std::string(100, 'x'))});
    EXPECT_EQ(deep.status, 2);
    EXPECT_TRUE(has(deep.errors, "characters long")) << deep.errors;
    EXPECT_FALSE(std::filesystem::exists(ScratchRoot::file("a b")));
}

}  // namespace
