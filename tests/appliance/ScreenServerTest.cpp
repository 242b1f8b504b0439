// The screen's server, asked as a browser and as others would.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <thread>

#include "EventListener.h"
#include "EventStream.h"
#include "Gate.h"
#include "HttpClient.h"
#include "PictureFolder.h"
#include "ScratchRoot.h"
#include "Server.h"

namespace {

namespace fs = std::filesystem;
using ApplianceTest::EventListener;
using ApplianceTest::HttpClient;
using ApplianceTest::Reply;
using nlohmann::json;
using Screen::Command;
using Screen::Server;
using Screen::Timeline;
using TestSupport::ScratchRoot;

class TheScreensServer : public testing::Test {
  protected:
    void SetUp() override
    {
        fs::remove_all(page_);
        fs::remove_all(pictures_);
        fs::create_directories(page_);
        fs::create_directories(pictures_);
        std::ofstream(page_ / "index.html") << "<!doctype html>";
        std::ofstream(ScratchRoot::file("secret")) << "secret";
        server_ = std::make_unique<Server>(Screen::ServerSettings{0, page_, pictures_}, timeline_,
                                           [this](Command command) { return take(std::move(command)); });
        port_ = std::to_string(server_->port());
    }

    bool take(Command command)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        commands_.push_back(std::move(command));
        return !isFull_;
    }

    void setFull()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isFull_ = true;
    }

    std::vector<Command> commands()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return commands_;
    }

    HttpClient client(std::vector<std::string> headers = {}) const
    {
        HttpClient client("127.0.0.1", server_->port());
        client.headers = std::move(headers);
        client.headers.push_back("Host: 127.0.0.1:" + port_);
        return client;
    }

    HttpClient clientOf(const std::string& host) const
    {
        HttpClient client("127.0.0.1", server_->port());
        client.headers = {host};
        return client;
    }

    Reply post(const std::string& path, const std::string& body, std::vector<std::string> headers = {}) const
    {
        headers.push_back("Content-Type: application/json");
        return client(headers).post(path, body);
    }

    static std::string errorIn(const Reply& reply)
    {
        return json::parse(reply.body, nullptr, false).value("error", "no error");
    }

    const fs::path page_ = ScratchRoot::file("page");
    const fs::path pictures_ = ScratchRoot::file("pictures");
    Timeline timeline_{Screen::EventStream::Beat};
    std::mutex mutex_;  // for both
    std::vector<Command> commands_;
    bool isFull_ = false;
    std::unique_ptr<Server> server_;
    std::string port_;
};

TEST_F(TheScreensServer, ServesThePage)
{
    const Reply reply = client().get("/");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.contentType, "text/html; charset=utf-8");
    EXPECT_EQ(reply.body, "<!doctype html>");
    EXPECT_EQ(client().get("/index.html").status, 200);
    EXPECT_EQ(client().get("/?from=elsewhere").status, 200);
}

TEST_F(TheScreensServer, AnswersUnderBothItsNames)
{
    EXPECT_EQ(clientOf("Host: localhost:" + port_).get("/").status, 200);
}

TEST_F(TheScreensServer, RefusesOtherHosts)
{
    for (const std::string& host :
         {"evil.example:" + port_, std::string("127.0.0.1"), std::string("localhost"),
          "127.0.0.1.evil.example:" + port_, "localhost.:" + port_, std::string("127.0.0.1:1"),
          "127.0.0.2:" + port_, "127.0.0.1:" + port_ + "0"}) {
        EXPECT_EQ(clientOf("Host: " + host).get("/").status, 403) << host;
        EXPECT_EQ(clientOf("Host: " + host).get("/events").status, 403) << host;
    }
    EXPECT_NE(clientOf("Host:").get("/").status, 200);
    EXPECT_EQ(commands().size(), 0U);
}

TEST_F(TheScreensServer, RefusesPagesFromElsewhere)
{
    for (const std::string& origin :
         {std::string("http://evil.example"), std::string("null"), "https://127.0.0.1:" + port_,
          std::string("http://127.0.0.1:1"), std::string("http://127.0.0.1"),
          "http://127.0.0.1:" + port_ + ".evil.example"}) {
        EXPECT_EQ(client({"Origin: " + origin}).get("/events").status, 403) << origin;
        EXPECT_EQ(post("/api/say", R"({"sentence":"check out"})", {"Origin: " + origin}).status, 403)
            << origin;
    }
    EXPECT_EQ(commands().size(), 0U);
    for (const std::string& origin : {"http://127.0.0.1:" + port_, "http://localhost:" + port_}) {
        EXPECT_EQ(client({"Origin: " + origin}).get("/").status, 200) << origin;
        EXPECT_EQ(post("/api/say", R"({"sentence":"check out"})", {"Origin: " + origin}).status, 202)
            << origin;
    }
}

TEST_F(TheScreensServer, TakesCommands)
{
    const Reply reply = post("/api/say", R"({"sentence":"add to cart"})");
    EXPECT_EQ(reply.status, 202);
    EXPECT_EQ(reply.body, "");
    ASSERT_EQ(commands().size(), 1U);
    EXPECT_EQ(std::get<Screen::SayCommand>(commands()[0]).sentence, "add to cart");
}

TEST_F(TheScreensServer, TakesCommandsAsJsonOnly)
{
    const HttpClient form = client();  // libcurl's own type: a form
    EXPECT_EQ(form.post("/api/say", R"({"sentence":"add to cart"})").status, 415);
    EXPECT_EQ(client({"Content-Type: text/plain"}).post("/api/say", R"({"sentence":"a"})").status, 415);
    EXPECT_EQ(client({"Content-Type: application/jsonx"}).post("/api/say", R"({"sentence":"a"})").status,
              415);
    EXPECT_EQ(commands().size(), 0U);
    EXPECT_EQ(client({"Content-Type: application/json; charset=utf-8"})
                  .post("/api/say", R"({"sentence":"a"})")
                  .status,
              202);
}

TEST_F(TheScreensServer, SaysWhatIsWrongWithACommand)
{
    const Reply reply = post("/api/say", "{}");
    EXPECT_EQ(reply.status, 400);
    EXPECT_EQ(errorIn(reply), "\"sentence\" is missing");
    EXPECT_EQ(post("/api/say", "").status, 400);
    setFull();
    EXPECT_EQ(post("/api/say", R"({"sentence":"a"})").status, 503);
}

TEST_F(TheScreensServer, RefusesBodiesThatAreTooLong)
{
    const Reply reply = post("/api/say", std::string(Server::BodyBytes + 1, ' '));
    EXPECT_EQ(reply.status, 413);
    EXPECT_EQ(errorIn(reply), "the body is too long");
    EXPECT_EQ(commands().size(), 0U);
}

TEST_F(TheScreensServer, RefusesBodiesThatDoNotTellTheirLength)
{
    const std::string body = R"({"sentence":"add to cart"})";
    EXPECT_EQ(post("/api/say", body, {"Transfer-Encoding: chunked"}).status, 411);
    EXPECT_EQ(post("/api/say", body, {"Content-Length:"}).status, 411);
    EXPECT_EQ(post("/api/say", body, {"Content-Encoding: gzip"}).status, 415);
    EXPECT_EQ(commands().size(), 0U);
}

TEST_F(TheScreensServer, ServesNothingInParts)
{
    EXPECT_EQ(client({"Range: bytes=0-"}).get("/events").status, 416);
    const Reply reply = client({"Range: bytes=0-0,0-1,0-2"}).get("/");
    EXPECT_EQ(reply.status, 416);
    EXPECT_EQ(reply.body.find("<!doctype"), std::string::npos);
}

TEST_F(TheScreensServer, RefusesWhatAnotherSitesPageLoadsButNotALinkToIt)
{
    for (const char* site : {"cross-site", "same-site"}) {
        EXPECT_EQ(
            client({std::string("Sec-Fetch-Site: ") + site, "Sec-Fetch-Mode: no-cors"}).get("/events").status,
            403);
        EXPECT_EQ(
            client({std::string("Sec-Fetch-Site: ") + site, "Sec-Fetch-Mode: navigate"}).get("/").status,
            200);
    }
    EXPECT_EQ(client({"Sec-Fetch-Site: same-origin"}).get("/").status, 200);
    EXPECT_EQ(client({"Sec-Fetch-Site: none"}).get("/").status, 200);
}

TEST(TheGate, TakesABareNameForThePortThatIsUsuallyLeftOut)
{
    httplib::Request request;
    request.headers = {{"Host", "127.0.0.1"}, {"Origin", "http://localhost"}};
    EXPECT_EQ(Screen::whyForeign(request, 80), std::nullopt);
    EXPECT_NE(Screen::whyForeign(request, 8080), std::nullopt);
    request.headers = {{"Host", "127.0.0.1:80"}};
    EXPECT_EQ(Screen::whyForeign(request, 80), std::nullopt);
}

TEST_F(TheScreensServer, KnowsOneMethodForEachPath)
{
    EXPECT_EQ(client().get("/api/say").status, 405);
    EXPECT_EQ(post("/", "{}").status, 405);
    EXPECT_EQ(post("/events", "{}").status, 405);
    EXPECT_EQ(post("/api/unknown", "{}").status, 404);
    EXPECT_EQ(post("/nothing", "{}").status, 404);
}

TEST_F(TheScreensServer, ServesPicturesOfTheirVersion)
{
    std::ofstream(pictures_ / "1.png") << "\x89PNG\r\n\x1A\n";
    const std::string address = Screen::PictureFolder(pictures_).addressOf((pictures_ / "1.png").string());
    const Reply reply = client().get("/pictures/" + address);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.contentType, "image/png");
    EXPECT_EQ(reply.body, "\x89PNG\r\n\x1A\n");
    EXPECT_EQ(client().get("/pictures/1.png").status, 404);
    EXPECT_EQ(client().get("/pictures/1.png?v=1").status, 404);
}

TEST_F(TheScreensServer, ServesNothingElse)
{
    for (const char* path : {"/secret", "/../secret", "/..%2fsecret", "/%2e%2e/secret", "/pictures/",
                             "/pictures/../secret", "/pictures/..%2Fsecret", "/pictures/%2e%2e%2fsecret",
                             "/pictures/....//secret", "/pictures//etc/passwd", "//etc/passwd", "/etc/passwd",
                             "/index.html%00.png", "/INDEX.HTML", "/favicon.ico"}) {
        const Reply reply = client().get(path);
        EXPECT_NE(reply.status, 200) << path;
        EXPECT_EQ(reply.body.find("secret"), std::string::npos) << path;
    }
}

TEST_F(TheScreensServer, BeginsAStreamWithTheWhole)
{
    timeline_.put("flag", 1);
    EventListener listener(client(), "\n\n");
    ASSERT_TRUE(listener.waitFor("event: timeline\ndata: {\"run\":"));
    EXPECT_TRUE(listener.waitFor(R"("name":"flag")"));
}

TEST_F(TheScreensServer, StreamsWhatHappensAndBeatsInBetween)
{
    EventListener listener(client(), "event: beat\ndata: {}\n\n");
    ASSERT_TRUE(listener.waitFor("event: timeline"));
    timeline_.put("flag", 2);
    timeline_.put("log", {{"line", "two\nlines"}});
    EXPECT_TRUE(listener.waitFor("event: step\ndata: {"));
    EXPECT_TRUE(listener.waitFor(R"({"line":"two\nlines"})"));
    EXPECT_TRUE(listener.waitFor("event: beat"));
}

TEST(AnEventStream, BeginsAnewForAPageThatCannotFollow)
{
    Timeline timeline(Screen::EventStream::Beat);
    std::atomic<std::size_t> open{0};
    Screen::EventStream stream(timeline, std::make_unique<Screen::EventStream::Seat>(open));
    std::string sent;
    httplib::DataSink sink;
    sink.write = [&sent](const char* data, std::size_t length) {
        sent.assign(data, length);
        return true;
    };
    ASSERT_TRUE(stream.sendNext(sink));
    EXPECT_EQ(open, 1U);
    timeline.put("flag", 1);
    ASSERT_TRUE(stream.sendNext(sink));
    EXPECT_EQ(sent.rfind("event: step\n", 0), 0U);
    for (std::size_t i = 0; i <= Timeline::EventsKept; ++i) {
        timeline.put("message", {{"number", i}});
    }
    ASSERT_TRUE(stream.sendNext(sink));
    EXPECT_EQ(sent.rfind("event: timeline\n", 0), 0U);
    timeline.put("flag", 2);
    ASSERT_TRUE(stream.sendNext(sink));
    EXPECT_NE(sent.find(R"("data":2)"), std::string::npos);
    sink.write = [](const char*, std::size_t) { return false; };
    timeline.put("flag", 3);
    EXPECT_FALSE(stream.sendNext(sink)) << "the page has left";
    timeline.end();
    EXPECT_FALSE(stream.sendNext(sink));
}

TEST_F(TheScreensServer, ServesABoundedNumberOfStreamsAndThePageBesides)
{
    std::vector<std::unique_ptr<EventListener>> listeners;
    for (std::size_t i = 0; i < Server::StreamsServed; ++i) {
        listeners.push_back(std::make_unique<EventListener>(client()));
        ASSERT_TRUE(listeners.back()->waitFor("event: timeline"));
    }
    EXPECT_EQ(client().get("/events").status, 503);
    EXPECT_EQ(client().get("/").status, 200);
    server_.reset();  // ends all of them
}

TEST_F(TheScreensServer, FreesTheStreamOfAPageThatLeft)
{
    for (std::size_t i = 0; i < 3 * Server::StreamsServed; ++i) {
        EventListener listener(client(), "event: timeline");
        ASSERT_TRUE(listener.waitFor("event: timeline")) << i;
        timeline_.put("flag", i);
    }
}

TEST_F(TheScreensServer, EndsAmongItsClients)
{
    std::atomic<bool> isOver{false};
    std::vector<std::thread> clients;
    for (int i = 0; i < 4; ++i) {
        clients.emplace_back([client = client(), &isOver] {
            while (!isOver) {
                client.get("/");
            }
        });
    }
    EventListener listener(client());
    EXPECT_TRUE(listener.waitFor("event: timeline"));
    server_.reset();
    isOver = true;
    for (std::thread& each : clients) {
        each.join();
    }
}

TEST_F(TheScreensServer, SaysWhereItsPortIsTaken)
{
    EXPECT_THROW(Server({server_->port(), page_, pictures_}, timeline_, [](Command) { return true; }),
                 std::runtime_error);
}

}  // namespace
