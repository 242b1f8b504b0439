// What the server writes down, and how it starts and ends.
#include "RetailerFixture.h"
#include "ScratchRoot.h"

#include <algorithm>
#include <fstream>
#include <thread>

namespace ApplianceTest {
namespace {

using Appliance::Retailer::Server;
using Appliance::Retailer::Settings;
using TestSupport::ScratchRoot;

class ARetailer : public RetailerFixture {};

TEST_F(ARetailer, LogsALineForEachRequest)
{
    search("우유");
    search("우유 ~reset");
    search("우유 ~truncate");
    client().get(searchPath);
    iconClient().get("/ui/app/6001/icon/90.png");
    server.reset();
    const std::string log = readFile(ScratchRoot::file("retailer.log"));
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 5);
    const std::string line = std::string("Z POST ") + searchPath;
    EXPECT_NE(log.find(line + " 200\n"), std::string::npos) << log;
    EXPECT_NE(log.find(line + " 0\n"), std::string::npos) << log;
    EXPECT_NE(log.find(line + " 200 cut\n"), std::string::npos) << log;
    EXPECT_NE(log.find(std::string("Z GET ") + searchPath + " 405\n"), std::string::npos) << log;
    EXPECT_NE(log.find("Z GET /ui/app/6001/icon/90.png 200\n"), std::string::npos) << log;
}

TEST_F(ARetailer, EndsWhileASearchIsBeingDelayed)
{
    std::thread searching([client = client(), body = soundBody("우유 ~delay=600s").dump()] {
        const Reply reply = client.post(searchPath, body);
        EXPECT_NE(reply.result, CURLE_OK);
        EXPECT_EQ(reply.status, 0);
    });
    server.reset();
    searching.join();
}

TEST_F(ARetailer, ServesManyAtOnceAndEndsAmongThem)
{
    std::vector<std::thread> clients;
    for (int i = 0; i < 8; ++i) {
        clients.emplace_back([client = client(), body = soundBody("우유").dump()] {
            while (client.post(searchPath, body).result == CURLE_OK)
                client.get("/images/slow/100/kimchi.png");
        });
    }
    search("우유");
    server.reset();
    for (std::thread& each : clients)
        each.join();
}

TEST_F(ARetailer, EndsRightAfterItsStart)
{
    for (int i = 0; i < 20; ++i)
        Server{settings()};
}

TEST_F(ARetailer, CannotShareItsPort)
{
    Settings second = settings();
    second.port = server->port();
    try {
        const Server other(second);
        ADD_FAILURE();
    } catch (const std::exception& error) {
        EXPECT_EQ(std::string(error.what()),
                  "cannot listen on 127.0.0.1 port " + std::to_string(second.port));
    }
}

TEST_F(ARetailer, DoesNotStartWithoutItsFiles)
{
    const std::string nowhere = "/nowhere/at/all";
    for (auto member :
         {&Settings::catalogueFile, &Settings::picturesFolder, &Settings::iconsFolder, &Settings::logFile}) {
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
    broken.picturesFolder = settings().iconsFolder;
    EXPECT_THROW(Server{broken}, std::exception);
}

}  // namespace
}  // namespace ApplianceTest
