// One HTTP request: what is set, what comes back, and what is left after a failure.
#include "Curl.h"

#include <atomic>
#include <mutex>
#include <thread>
#include <type_traits>

#include "HttpServer.h"
#include "ObservedTest.h"
#include "ThrowawayCertificates.h"

using TestSupport::Call;
using TestSupport::Calls;
using Util::Curl;

namespace {

using List = std::vector<std::string>;
using WriteCallback = size_t (*)(void*, size_t, size_t, void*);

static_assert(std::has_virtual_destructor_v<Curl>);
static_assert(!std::is_copy_constructible_v<Curl> && !std::is_copy_assignable_v<Curl>);
static_assert(!std::is_move_constructible_v<Curl> && !std::is_move_assignable_v<Curl>);

// The options set so far, each by its name.
List options()
{
    List names;
    for (const Call& call : Calls::of("curl_easy_setopt"))
        names.push_back(call.arguments.at(0));
    return names;
}

// What the option was set to; the test fails where it was not.
List valuesOf(const std::string& option)
{
    for (const Call& call : Calls::of("curl_easy_setopt"))
        if (call.arguments.at(0) == option)
            return {call.arguments.begin() + 1, call.arguments.end()};
    ADD_FAILURE() << option << " was not set";
    return {""};
}

void* pointerOf(const std::string& option)
{
    return reinterpret_cast<void*>(std::stoull(valuesOf(option).at(0)));
}

WriteCallback callbackOf(const std::string& option)
{
    return reinterpret_cast<WriteCallback>(pointerOf(option));
}

class CurlRequest : public ObservedTest {
  protected:
    // What the server got last.
    struct Received {
        std::string method;
        std::string body;
        httplib::Headers headers;
    };

    CurlRequest()
    {
        server.answer("/ok", 200, "milk");
        server.answer("/missing", 404, "nothing of that name");
        server.answer("/empty", 200, "");
        server.answer("/bytes", 200, bytes);
        server.redirect("/moved", "/ok");
        server.breakOff("/broken", "half of it");
        server.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response&) {
            const std::lock_guard<std::mutex> lock(mutex_);
            received_.headers = request.headers;
            return httplib::Server::HandlerResponse::Unhandled;
        });
        const auto echo = [this](const httplib::Request& request, httplib::Response& response) {
            const std::lock_guard<std::mutex> lock(mutex_);
            received_ = {request.method, request.body, request.headers};
            response.set_content("echoed", "text/plain");
        };
        server.Post("/echo", echo);
        server.start();
    }

    Received received()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }

    void setUrl(const Curl& curl, const std::string& path)
    {
        curl_easy_setopt(curl.mHandle, CURLOPT_URL, server.url(path).c_str());
    }

    long get(Curl& curl, const std::string& path)
    {
        setUrl(curl, path);
        return curl.perform();
    }

    const std::string bytes = std::string("\0\x01\xFF\r\n\0 end", 11);

  private:
    std::mutex mutex_;
    Received received_;

  protected:
    HttpServer server;
};

class CurlObject : public ObservedTest {};

}  // namespace

TEST_F(CurlObject, SetsWhatEveryRequestNeedsInAFixedOrder)
{
    const Curl curl;

    EXPECT_EQ(options(), (List{"HEADERFUNCTION", "HEADERDATA", "WRITEFUNCTION", "WRITEDATA", "VERBOSE",
                               "TIMEOUT", "NOSIGNAL"}));
    EXPECT_EQ(valuesOf("VERBOSE"), List{"0"});
    EXPECT_EQ(valuesOf("TIMEOUT"), List{"60"});
    EXPECT_EQ(valuesOf("NOSIGNAL"), List{"1"});
}

TEST_F(CurlObject, TakesHeadersAndBodyWithOneCallbackIntoTwoStreams)
{
    const Curl curl;

    EXPECT_EQ(pointerOf("HEADERFUNCTION"), pointerOf("WRITEFUNCTION"));
    EXPECT_NE(pointerOf("HEADERDATA"), pointerOf("WRITEDATA"));
}

TEST_F(CurlObject, InitialisesLibcurlBeforeItMakesItsHandle)
{
    const Curl curl;

    EXPECT_EQ(Calls::order({"curl_global_init", "curl_easy_init"}),
              (List{"curl_global_init", "curl_easy_init"}));
    EXPECT_EQ(Calls::of("curl_global_init").at(0).arguments, List{"3"});
}

TEST_F(CurlObject, TwoAtOnceInitialiseOnceAndTheSecondToGoCleansUp)
{
    auto first = std::make_unique<Curl>();
    auto second = std::make_unique<Curl>();
    EXPECT_EQ(Calls::count("curl_global_init"), 1U);

    first.reset();
    EXPECT_EQ(Calls::count("curl_global_cleanup"), 0U);
    second.reset();
    EXPECT_EQ(Calls::count("curl_global_cleanup"), 1U);
}

TEST_F(CurlObject, OneAfterTheOtherInitialiseAndCleanUpEachTime)
{
    for (int i = 0; i < 3; ++i)
        Curl();

    EXPECT_EQ(Calls::order({"curl_global_init", "curl_global_cleanup"}),
              (List{"curl_global_init", "curl_global_cleanup", "curl_global_init", "curl_global_cleanup",
                    "curl_global_init", "curl_global_cleanup"}));
}

TEST_F(CurlObject, ManyThreadsCleanUpAsOftenAsTheyInitialise)
{
    const Curl outer;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int j = 0; j < 50; ++j)
                Curl();
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(Calls::count("curl_global_init"), 1U);
    EXPECT_EQ(Calls::count("curl_global_cleanup"), 0U);
}

TEST_F(CurlObject, EndsWithItsHandleItsHeadersAndThenLibcurl)
{
    {
        Curl curl;
        curl.appendHeader("X-One: 1");
        Calls::reset();
    }

    EXPECT_EQ(Calls::order({"curl_easy_cleanup", "curl_slist_free_all", "curl_global_cleanup"}),
              (List{"curl_easy_cleanup", "curl_slist_free_all", "curl_global_cleanup"}));
}

TEST_F(CurlObject, EndsWithoutAListWhereNoHeaderWasAppended)
{
    {
        const Curl curl;
    }

    EXPECT_EQ(Calls::count("curl_slist_free_all"), 0U);
}

TEST_F(CurlObject, WritesEveryByteItIsGiven)
{
    const Curl curl;
    std::stringstream stream;
    char data[] = "a\0b";

    EXPECT_EQ(callbackOf("WRITEFUNCTION")(data, 1, 3, &stream), 3U);
    EXPECT_EQ(callbackOf("WRITEFUNCTION")(data, 3, 1, &stream), 3U);
    EXPECT_EQ(stream.str(), std::string("a\0ba\0b", 6));
}

TEST_F(CurlObject, WritesNothingForASizeOrCountOfZero)
{
    const Curl curl;
    std::stringstream stream;
    char data[] = "abc";

    EXPECT_EQ(callbackOf("WRITEFUNCTION")(data, 0, 3, &stream), 0U);
    EXPECT_EQ(callbackOf("WRITEFUNCTION")(data, 1, 0, &stream), 0U);
    EXPECT_EQ(stream.str(), "");
}

TEST_F(CurlObject, NeverTellsLibcurlOfAnErrorOfTheStream)
{
    const Curl curl;
    std::stringstream stream;
    stream.setstate(std::ios::badbit);
    char data[] = "abc";

    EXPECT_EQ(callbackOf("WRITEFUNCTION")(data, 1, 3, &stream), 3U);
}

TEST_F(CurlObject, WithoutAHandleNothingIsAnswered)
{
    Calls::fail("curl_easy_init", 0);
    Curl curl;

    EXPECT_EQ(curl.mHandle, nullptr);
    EXPECT_EQ(curl.perform(), 0);
    EXPECT_EQ(errors().size(), 1U);
    EXPECT_EQ(curl.getBody(), "");
}

TEST_F(CurlObject, EscapesWhatAUrlCannotHold)
{
    Curl curl;

    EXPECT_EQ(curl.encode(""), "");
    EXPECT_EQ(curl.encode("oat milk"), "oat%20milk");
    EXPECT_EQ(curl.encode("a&b=c"), "a%26b%3Dc");
    EXPECT_EQ(curl.encode("AZaz09-._~"), "AZaz09-._~");
    EXPECT_EQ(curl.encode("/?#+%\"'"), "%2F%3F%23%2B%25%22%27");
    EXPECT_EQ(curl.encode("\x01\r\n\x7F"), "%01%0D%0A%7F");
    EXPECT_EQ(errors(), List());
}

TEST_F(CurlObject, EscapesTheBytesOfUtf8AndOfAnythingElse)
{
    Curl curl;

    EXPECT_EQ(curl.encode("Cr\xC3\xA8me"), "Cr%C3%A8me");
    EXPECT_EQ(curl.encode("\xEC\x9A\xB0\xEC\x9C\xA0"), "%EC%9A%B0%EC%9C%A0");
    EXPECT_EQ(curl.encode("\xFF\xFE"), "%FF%FE");
}

TEST_F(CurlObject, EscapesZeroBytes)
{
    Curl curl;

    EXPECT_EQ(curl.encode(std::string("a\0b", 3)), "a%00b");
    EXPECT_EQ(curl.encode(std::string("\0", 1)), "%00");
    EXPECT_EQ(Calls::of("curl_easy_escape").at(0).arguments.at(1), "3");
}

TEST_F(CurlObject, EscapesLongTexts)
{
    Curl curl;
    std::string expected;
    for (int i = 0; i < 100'000; ++i)
        expected += "%20";

    EXPECT_EQ(curl.encode(std::string(100'000, ' ')), expected);
}

TEST_F(CurlObject, ATextThatCannotBeEscapedComesBackAsItIs)
{
    Curl curl;
    Calls::fail("curl_easy_escape", 0);

    EXPECT_EQ(curl.encode("oat milk"), "oat milk");
    EXPECT_EQ(errors(), List{"Curl.cpp: encode(107) > curl_easy_escape failed"});
    EXPECT_EQ(curl.encode("oat milk"), "oat%20milk");
}

TEST_F(CurlRequest, GivesStatusAndBody)
{
    Curl curl;

    EXPECT_EQ(get(curl, "/ok"), 200);
    EXPECT_EQ(curl.getBody(), "milk");
    EXPECT_EQ(errors(), List());
}

TEST_F(CurlRequest, KeepsTheHeadersApartFromTheBody)
{
    Curl curl;
    get(curl, "/ok");
    const auto* headers =
        static_cast<std::ostream*>(static_cast<std::stringstream*>(pointerOf("HEADERDATA")));
    const std::string text = static_cast<const std::stringstream*>(headers)->str();

    EXPECT_EQ(text.rfind("HTTP/1.1 200 OK\r\n", 0), 0U) << text;
    EXPECT_NE(text.find("Content-Length: 4\r\n"), std::string::npos) << text;
}

TEST_F(CurlRequest, KeepsEveryByteOfABody)
{
    Curl curl;

    EXPECT_EQ(get(curl, "/bytes"), 200);
    EXPECT_EQ(curl.getBody(), bytes);
}

TEST_F(CurlRequest, AnErrorStatusIsAnAnswerAndItsBodyIsKept)
{
    Curl curl;

    EXPECT_EQ(get(curl, "/missing"), 404);
    EXPECT_EQ(curl.getBody(), "nothing of that name");
    EXPECT_EQ(errors(), List());
}

TEST_F(CurlRequest, ARedirectIsAnAnswerAndIsNotFollowed)
{
    Curl curl;

    EXPECT_EQ(get(curl, "/moved"), 302);
    EXPECT_EQ(curl.getBody(), "");
}

TEST_F(CurlRequest, AnEmptyBodyIsEmpty)
{
    Curl curl;

    EXPECT_EQ(get(curl, "/empty"), 200);
    EXPECT_EQ(curl.getBody(), "");
}

TEST_F(CurlRequest, SendsTheHeadersInOrderWithTheRequestAndNotBefore)
{
    Curl curl;
    curl.appendHeader("X-One: first");
    curl.appendHeader("X-Two: second");
    EXPECT_EQ(Calls::count("curl_slist_append"), 2U);
    setUrl(curl, "/ok");
    EXPECT_EQ(options().back(), "URL");

    EXPECT_EQ(curl.perform(), 200);
    EXPECT_EQ(valuesOf("HTTPHEADER"), (List{"X-One: first", "X-Two: second"}));
    EXPECT_EQ(received().headers.find("X-One")->second, "first");
    EXPECT_EQ(received().headers.find("X-Two")->second, "second");
}

TEST_F(CurlRequest, WithoutHeadersNoListIsSet)
{
    Curl curl;
    get(curl, "/ok");

    for (const std::string& option : options())
        EXPECT_NE(option, "HTTPHEADER");
}

TEST_F(CurlRequest, AHeaderThatCannotBeAppendedDropsThoseBefore)
{
    Curl curl;
    curl.appendHeader("X-One: first");
    Calls::fail("curl_slist_append", 0);
    curl.appendHeader("X-Two: second");

    EXPECT_EQ(get(curl, "/ok"), 200);
    EXPECT_EQ(received().headers.count("X-One"), 0U);
    EXPECT_EQ(received().headers.count("X-Two"), 0U);
    for (const std::string& option : options())
        EXPECT_NE(option, "HTTPHEADER");
}

TEST_F(CurlRequest, SendsMethodBodyAndCookieOfItsCaller)
{
    Curl curl;
    setUrl(curl, "/echo");
    curl_easy_setopt(curl.mHandle, CURLOPT_CUSTOMREQUEST, "POST");
    curl_easy_setopt(curl.mHandle, CURLOPT_POSTFIELDS, "{\"query\": \"milk\"}");
    curl_easy_setopt(curl.mHandle, CURLOPT_POSTFIELDSIZE, 17L);
    curl_easy_setopt(curl.mHandle, CURLOPT_COOKIE, "name=value");
    curl.appendHeader("Content-Type: application/json");

    EXPECT_EQ(curl.perform(), 200);
    EXPECT_EQ(curl.getBody(), "echoed");
    EXPECT_EQ(received().method, "POST");
    EXPECT_EQ(received().body, "{\"query\": \"milk\"}");
    EXPECT_EQ(received().headers.find("Cookie")->second, "name=value");
    EXPECT_EQ(received().headers.find("Content-Type")->second, "application/json");
}

TEST_F(CurlRequest, ASecondOneAppendsToTheBodyAndSendsAllHeaders)
{
    Curl curl;
    curl.appendHeader("X-One: first");
    EXPECT_EQ(get(curl, "/ok"), 200);
    curl.appendHeader("X-Two: second");
    EXPECT_EQ(get(curl, "/missing"), 404);

    EXPECT_EQ(curl.getBody(), "milknothing of that name");
    EXPECT_EQ(received().headers.count("X-One"), 1U);
    EXPECT_EQ(received().headers.count("X-Two"), 1U);
}

TEST_F(CurlRequest, WithoutAServerTheResultIsZeroAndTheReasonIsLogged)
{
    const DeafPort port;
    Curl curl;
    curl_easy_setopt(curl.mHandle, CURLOPT_URL, port.url("/").c_str());

    EXPECT_EQ(curl.perform(), 0);
    EXPECT_EQ(curl.getBody(), "");
    EXPECT_EQ(errors(), List{std::string("Curl.cpp: perform(69) > curl_easy_perform() failed: ") +
                             curl_easy_strerror(CURLE_COULDNT_CONNECT)});
}

TEST_F(CurlRequest, WithoutAUrlTheResultIsZero)
{
    Curl curl;

    EXPECT_EQ(curl.perform(), 0);
    EXPECT_EQ(errors(), List{std::string("Curl.cpp: perform(69) > curl_easy_perform() failed: ") +
                             curl_easy_strerror(CURLE_URL_MALFORMAT)});
}

TEST_F(CurlRequest, AnAnswerThatBreaksOffGivesZeroAndLeavesWhatCame)
{
    Curl curl;

    EXPECT_EQ(get(curl, "/broken"), 0);
    EXPECT_EQ(curl.getBody(), "half of it");
    EXPECT_EQ(errorMessages(),
              List{std::string("curl_easy_perform() failed: ") + curl_easy_strerror(CURLE_PARTIAL_FILE)});
}

TEST_F(CurlRequest, AFailureAfterASuccessGivesZero)
{
    Curl curl;
    EXPECT_EQ(get(curl, "/ok"), 200);
    Calls::fail("curl_easy_perform", CURLE_OPERATION_TIMEDOUT);

    EXPECT_EQ(curl.perform(), 0);
    EXPECT_EQ(curl.getBody(), "milk");
    EXPECT_EQ(errorMessages(), List{std::string("curl_easy_perform() failed: ") +
                                    curl_easy_strerror(CURLE_OPERATION_TIMEDOUT)});
}

TEST_F(CurlRequest, AFailureClearsTheStreamsErrorsSoThatTheNextOneIsRead)
{
    Curl curl;
    get(curl, "/ok");
    auto* const body = static_cast<std::stringstream*>(pointerOf("WRITEDATA"));
    body->setstate(std::ios::badbit);
    Calls::fail("curl_easy_perform", CURLE_OPERATION_TIMEDOUT);
    curl.perform();

    EXPECT_EQ(get(curl, "/ok"), 200);
    EXPECT_EQ(curl.getBody(), "milkmilk");
}

TEST_F(CurlRequest, AServerThatNobodyVouchesForGivesNoAnswer)
{
    const Appliance::Certificate certificate =
        Appliance::ThrowawayCertificates::selfSigned({"localhost", "127.0.0.1"});
    LocalServer<httplib::SSLServer> impostor(certificate.x509.get(), certificate.key.get());
    impostor.Get("/", [](const httplib::Request&, httplib::Response& response) {
        response.set_content("stolen", "text/plain");
    });
    impostor.start();
    Curl curl;
    const std::string url = "https://localhost:" + std::to_string(impostor.port()) + "/";
    curl_easy_setopt(curl.mHandle, CURLOPT_URL, url.c_str());

    EXPECT_EQ(curl.perform(), 0);
    EXPECT_EQ(curl.getBody(), "");
    EXPECT_EQ(errorMessages(), List{std::string("curl_easy_perform() failed: ") +
                                    curl_easy_strerror(CURLE_PEER_FAILED_VERIFICATION)});
}
