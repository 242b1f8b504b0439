// Whom the server lets in, what it writes down, and how it starts and ends.
#include "BridgeFixture.h"

#include "ScratchRoot.h"

#include <fstream>
#include <thread>

namespace ApplianceTest {
namespace {

using Appliance::MerchantBridge::Server;
using Appliance::MerchantBridge::Settings;
using nlohmann::json;
using TestSupport::ScratchRoot;

std::string messageOf(const Reply& reply)
{
    return json::parse(reply.body).at("error").at("message");
}

class ABridge : public BridgeFixture {
  protected:
    Reply askWith(const std::vector<std::string>& headers) const
    {
        HttpsClient client = customer();
        client.headers = headers;
        return client.get(searchTarget("milk"));
    }

    Reply ask(const std::string& parameters) const
    {
        return customer().get("/merchantbridge-production/api/product/search" + parameters);
    }
};

TEST_F(ABridge, LetsNobodySearchWithoutBothTokens)
{
    const std::string access = std::string("X-Auth-Access-Token:") + accessToken;
    const std::string session = std::string("X-Auth-Session-Token:") + sessionToken;
    EXPECT_EQ(askWith({access, session}).status, 200);
    for (const auto& headers :
         std::vector<std::vector<std::string>>{{},
                                               {access},
                                               {session},
                                               {access, "X-Auth-Session-Token:wrong"},
                                               {"X-Auth-Access-Token:wrong", session}}) {
        const Reply reply = askWith(headers);
        EXPECT_EQ(reply.status, 401);
        EXPECT_EQ(json::parse(reply.body).at("error").at("status"), 401);
        EXPECT_EQ(reply.body.find(accessToken), std::string::npos);
        EXPECT_EQ(reply.body.find(sessionToken), std::string::npos);
        EXPECT_EQ(reply.body.find("wrong"), std::string::npos);
    }
    EXPECT_EQ(messageOf(askWith({access})), "X-Auth-Session-Token is missing");
}

TEST_F(ABridge, NamesTheParameterThatIsMissingOrBad)
{
    EXPECT_EQ(messageOf(ask("")), "parameter merchant is missing");
    EXPECT_EQ(messageOf(ask("?merchant=freshmart")), "parameter query is missing");
    EXPECT_EQ(messageOf(ask("?merchant=freshmart&query=%20")), "parameter query is missing");
    EXPECT_EQ(messageOf(ask("?merchant=freshmart&query=milk")), "parameter searchBy is missing");
    EXPECT_EQ(messageOf(ask("?merchant=freshmart&query=milk&searchBy=full")),
              "parameter pageSize is missing");
    EXPECT_EQ(ask("?merchant=freshmart&query=milk&searchBy=full").status, 400);
    EXPECT_EQ(ask("?merchant=freshmart&query=milk&searchBy=half&pageSize=6").status, 400);
    for (const char* size : {"0", "101", "six", "6x", "-1"})
        EXPECT_EQ(ask(std::string("?merchant=freshmart&query=milk&searchBy=full&pageSize=") + size).status,
                  400);
}

TEST_F(ABridge, KnowsOnlyItsMerchants)
{
    const Reply reply = search("milk", "supermarket");
    EXPECT_EQ(reply.status, 404);
    EXPECT_EQ(messageOf(reply), "unknown merchant");
}

TEST_F(ABridge, AnswersToItsOwnHostNameOnly)
{
    HttpsClient client("other.example", server->port(), ScratchRoot::file("ca.pem"));
    EXPECT_EQ(client.get("/").result, CURLE_PEER_FAILED_VERIFICATION);
}

TEST_F(ABridge, HasAnAuthorityOfItsOwn)
{
    const std::string first = readFile(ScratchRoot::file("ca.pem"));
    Settings other = settings();
    other.caFile = ScratchRoot::file("other-ca.pem");
    const Server second(other);
    EXPECT_NE(first, readFile(other.caFile));
    HttpsClient client(host, server->port(), other.caFile);
    EXPECT_EQ(client.get("/").result, CURLE_PEER_FAILED_VERIFICATION);
}

TEST_F(ABridge, LogsALineForEachRequestAndNoToken)
{
    search("milk");
    search("milk ~reset");
    search("milk ~truncate");
    askWith({std::string("X-Auth-Access-Token:") + accessToken});
    server.reset();
    const std::string log = readFile(ScratchRoot::file("bridge.log"));
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 4);
    EXPECT_NE(log.find("Z GET " + searchTarget("milk") + " 200\n"), std::string::npos);
    EXPECT_NE(log.find(searchTarget("milk ~reset") + " 0\n"), std::string::npos);
    EXPECT_NE(log.find(searchTarget("milk ~truncate") + " 200 cut\n"), std::string::npos);
    EXPECT_NE(log.find(" 401\n"), std::string::npos);
    EXPECT_EQ(log.find(accessToken), std::string::npos);
    EXPECT_EQ(log.find(sessionToken), std::string::npos);
}

TEST_F(ABridge, EndsWhileASearchIsBeingDelayed)
{
    std::thread searching([this, client = customer()] {
        const Reply reply = client.get(searchTarget("milk ~delay=600s"));
        EXPECT_NE(reply.result, CURLE_OK);
        EXPECT_EQ(reply.status, 0);
    });
    server.reset();
    searching.join();
}

TEST_F(ABridge, ServesManyAtOnceAndEndsAmongThem)
{
    std::vector<std::thread> customers;
    for (int i = 0; i < 8; ++i) {
        customers.emplace_back([this, client = customer()] {
            while (client.get(searchTarget("milk ~slow-images")).result == CURLE_OK)
                client.get("/images/slow/100/whole-milk.png");
        });
    }
    search("milk");
    server.reset();
    for (std::thread& each : customers)
        each.join();
}

TEST_F(ABridge, EndsRightAfterItsStart)
{
    for (int i = 0; i < 20; ++i)
        Server{settings()};
}

TEST_F(ABridge, CannotShareItsPort)
{
    Settings second = settings();
    second.port = server->port();
    EXPECT_NO_THROW(search("milk"));
    try {
        const Server other(second);
        ADD_FAILURE();
    } catch (const std::exception& error) {
        EXPECT_EQ(std::string(error.what()),
                  "cannot listen on 127.0.0.1 port " + std::to_string(second.port));
    }
}

TEST_F(ABridge, DoesNotStartWithoutItsFiles)
{
    const std::string nowhere = "/nowhere/at/all";
    for (auto member : {&Settings::caFile, &Settings::tokensFile, &Settings::catalogueFile,
                        &Settings::picturesFolder, &Settings::logFile}) {
        Settings broken = settings();
        broken.*member = nowhere;
        try {
            const Server other(broken);
            ADD_FAILURE();
        } catch (const std::exception& error) {
            EXPECT_NE(std::string(error.what()).find(nowhere), std::string::npos) << error.what();
        }
    }
    Settings broken = settings();
    broken.picturesFolder = ScratchRoot::path();
    EXPECT_THROW(Server{broken}, std::exception);
}

}  // namespace
}  // namespace ApplianceTest
