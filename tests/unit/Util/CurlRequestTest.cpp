// HTTP requests to a server on this machine: what comes back, and what is left after a failure.
#include <mutex>
#include <sstream>

#include "Curl.h"
#include "CurlOptions.h"
#include "HttpServer.h"
#include "ObservedTest.h"
#include "ThrowawayCertificates.h"

using TestSupport::Calls;
using Util::Curl;

namespace {

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

}  // namespace

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
