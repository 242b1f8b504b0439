// The program as a parent sees it: options, the line that says it is ready, signals, exit statuses.
#include "BridgeFixture.h"
#include "ChildProcess.h"
#include "ScratchRoot.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <list>

namespace ApplianceTest {
namespace {

using TestSupport::ChildProcess;
using TestSupport::ProcessEnd;
using TestSupport::ScratchRoot;

// A connection over which nothing is sent.
class WaitingClient {
  public:
    explicit WaitingClient(int port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    }

    ~WaitingClient() { close(socket_); }
    WaitingClient(const WaitingClient&) = delete;
    WaitingClient& operator=(const WaitingClient&) = delete;

    // On this machine a connection that the kernel takes is there when connect() returns.
    bool isConnected() const
    {
        pollfd watch{socket_, POLLOUT, 0};
        return poll(&watch, 1, 0) == 1 && (watch.revents & (POLLERR | POLLHUP)) == 0;
    }

  private:
    int socket_;
};

class TheBridgeProgram : public BridgeFixture {
  protected:
    void SetUp() override { settings(); }

    static std::vector<std::string> command(const std::vector<std::string>& options)
    {
        std::vector<std::string> words{MERCHANT_BRIDGE_PROGRAM};
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }

    static std::vector<std::string> goodOptions()
    {
        return {"--ca-file", ScratchRoot::file("ca.pem"), "--tokens-file", ScratchRoot::file("tokens.txt")};
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

    static HttpsClient clientOf(const nlohmann::json& ready)
    {
        return {ready.at("host"), ready.at("port"), ready.at("caFile")};
    }
};

TEST_F(TheBridgeProgram, SaysWhenItIsReadyAndServesUntilItIsTerminated)
{
    ChildProcess program(command(goodOptions()));
    const nlohmann::json ready = readyLine(program);
    EXPECT_EQ(ready.size(), 3U);
    EXPECT_EQ(ready.at("caFile"), ScratchRoot::file("ca.pem"));
    EXPECT_EQ(clientOf(ready).get("/images/whole-milk.png").status, 200);
    program.signal(SIGTERM);
    expectExit(program, 0);
    EXPECT_EQ(program.errors(), "");
}

TEST_F(TheBridgeProgram, EndsOnInterruptAsWell)
{
    ChildProcess program(command(goodOptions()));
    readyLine(program);
    program.signal(SIGINT);
    expectExit(program, 0);
}

TEST_F(TheBridgeProgram, EndsWhileAPictureStalls)
{
    ChildProcess program(command(goodOptions()));
    HttpsClient client = clientOf(readyLine(program));
    client.onData = [&](const std::string&) { program.signal(SIGTERM); };
    EXPECT_NE(client.get("/images/stall/whole-milk.png").result, CURLE_OK);
    expectExit(program, 0);
}

// As it is when more come at once than it can look after: it stands still, and only its kernel answers, which
// lets 128 wait where it is set to the least.
TEST_F(TheBridgeProgram, LetsManyClientsWait)
{
    ChildProcess program(command(goodOptions()));
    const int port = readyLine(program).at("port");
    program.signal(SIGSTOP);
    std::list<WaitingClient> clients;
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(clients.emplace_back(port).isConnected()) << i;
}

TEST_F(TheBridgeProgram, ServesUnderTheHostNameItIsGiven)
{
    auto options = goodOptions();
    options.insert(options.end(), {"--host", "shop.example"});
    ChildProcess program(command(options));
    const nlohmann::json ready = readyLine(program);
    EXPECT_EQ(ready.at("host"), "shop.example");
    EXPECT_EQ(clientOf(ready).get("/images/whole-milk.png").status, 200);
}

TEST_F(TheBridgeProgram, ExplainsItself)
{
    ChildProcess program(command({"--help"}));
    expectExit(program, 0);
    const std::string help = program.output();
    for (const char* text : {"--port", "--address", "--host", "--ca-file", "--tokens-file", "--catalogue",
                             "--pictures", "--log", "--untrusted-while", "Exit status", "~image-404"})
        EXPECT_NE(help.find(text), std::string::npos) << text;
}

TEST_F(TheBridgeProgram, RefusesWrongUsage)
{
    auto badPort = goodOptions();
    badPort.insert(badPort.end(), {"--port", "65536"});
    for (const auto& options :
         std::vector<std::vector<std::string>>{{}, {"--nonsense"}, {"stray"}, badPort}) {
        ChildProcess program(command(options));
        expectExit(program, 2);
        EXPECT_EQ(program.output(), "");
        EXPECT_NE(program.errors(), "");
    }
}

TEST_F(TheBridgeProgram, SaysWhyItCannotStart)
{
    ChildProcess program(command({"--ca-file", ScratchRoot::file("ca.pem"), "--tokens-file", "/nowhere"}));
    expectExit(program, 1);
    EXPECT_EQ(program.output(), "");
    EXPECT_EQ(program.errors(), "merchant-bridge: cannot read the tokens file /nowhere\n");
}

}  // namespace
}  // namespace ApplianceTest
