// The program as a parent sees it: options, the line that says it is ready, signals, exit statuses.
#include "ChildProcess.h"
#include "RetailerFixture.h"
#include "ScratchRoot.h"

#include <csignal>

namespace ApplianceTest {
namespace {

using TestSupport::ChildProcess;
using TestSupport::ProcessEnd;
using TestSupport::ScratchRoot;

class TheRetailerProgram : public RetailerFixture {
  protected:
    void SetUp() override {}

    static std::vector<std::string> command(const std::vector<std::string>& options)
    {
        std::vector<std::string> words{RETAILER_PROGRAM};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }

    static void expectExit(ChildProcess& program, int status)
    {
        const ProcessEnd end = program.wait();
        EXPECT_TRUE(end.inTime);
        EXPECT_EQ(end.signal, 0);
        EXPECT_EQ(end.status, status) << program.errors();
    }

    static nlohmann::json readyLine(ChildProcess& program)
    {
        EXPECT_TRUE(program.waitForOutput("\n")) << program.errors();
        return nlohmann::json::parse(program.output());
    }
};

TEST_F(TheRetailerProgram, SaysWhenItIsReadyAndServesUntilItIsTerminated)
{
    const std::string log = ScratchRoot::file("program.log");
    ChildProcess program(command({"--log", log}));
    const nlohmann::json ready = readyLine(program);
    EXPECT_EQ(ready.size(), 3U);
    EXPECT_EQ(ready.at("host"), host);
    EXPECT_EQ(ready.at("iconHost"), iconHost);
    HttpClient client(host, ready.at("port"));
    client.headers = soundHeaders();
    EXPECT_EQ(client.post(searchPath, soundBody("우유").dump()).status, 200);
    EXPECT_EQ(client.get("/images/kimchi.png").status, 200);
    EXPECT_EQ(HttpClient(iconHost, ready.at("port")).get("/ui/app/6001/icon/90.png").status, 200);
    program.signal(SIGTERM);
    expectExit(program, 0);
    EXPECT_EQ(program.errors(), "");
    EXPECT_NE(readFile(log).find(searchPath), std::string::npos);
}

TEST_F(TheRetailerProgram, EndsOnInterruptAsWell)
{
    ChildProcess program(command({}));
    readyLine(program);
    program.signal(SIGINT);
    expectExit(program, 0);
}

TEST_F(TheRetailerProgram, EndsWhileAPictureStalls)
{
    ChildProcess program(command({}));
    HttpClient client(host, readyLine(program).at("port"));
    client.onData = [&](const std::string&) { program.signal(SIGTERM); };
    EXPECT_NE(client.get("/images/stall/kimchi.png").result, CURLE_OK);
    expectExit(program, 0);
}

TEST_F(TheRetailerProgram, ServesUnderTheHostNamesItIsGiven)
{
    ChildProcess program(command({"--host", "shop.example", "--icon-host", "icons.example"}));
    const nlohmann::json ready = readyLine(program);
    EXPECT_EQ(ready.at("host"), "shop.example");
    EXPECT_EQ(HttpClient("shop.example", ready.at("port")).get("/images/kimchi.png").status, 200);
    EXPECT_EQ(HttpClient("icons.example", ready.at("port")).get("/ui/app/6001/icon/91.png").status, 200);
    EXPECT_EQ(HttpClient(host, ready.at("port")).get("/images/kimchi.png").status, 421);
}

TEST_F(TheRetailerProgram, ExplainsItself)
{
    ChildProcess program(command({"--help"}));
    expectExit(program, 0);
    const std::string help = program.output();
    for (const char* text : {"--port", "--address", "--host", "--icon-host", "--catalogue", "--pictures",
                             "--icons", "--log", "Exit status", "~image-404"})
        EXPECT_NE(help.find(text), std::string::npos) << text;
}

TEST_F(TheRetailerProgram, RefusesWrongUsage)
{
    for (const auto& options : std::vector<std::vector<std::string>>{
             {"--nonsense"}, {"stray"}, {"--port", "65536"}, {"--port", "x"}}) {
        ChildProcess program(command(options));
        expectExit(program, 2);
        EXPECT_EQ(program.output(), "");
        EXPECT_NE(program.errors(), "");
    }
}

TEST_F(TheRetailerProgram, SaysWhyItCannotStart)
{
    ChildProcess program(command({"--catalogue", "/nowhere"}));
    expectExit(program, 1);
    EXPECT_EQ(program.output(), "");
    EXPECT_EQ(program.errors(), "retailer: cannot read the catalogue /nowhere\n");
}

}  // namespace
}  // namespace ApplianceTest
