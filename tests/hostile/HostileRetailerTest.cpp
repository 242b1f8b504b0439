// A retailer who misbehaves: some of what a merchant may do, without TLS.
#include <fstream>
#include <set>

#include "HostileServer.h"
#include "RetailerWorld.h"
#include "SiteValues.h"

namespace ServiceTest {

namespace {

using Texts = std::vector<std::string>;

class AHostileRetailer : public RetailerWorld {
  protected:
    void SetUp() override
    {
        RetailerWorld::SetUp();
        startRetailer();
    }

    HostileServer& standForRetailer()
    {
        retailer.reset();
        server_ = std::make_unique<HostileServer>("http://" CARVOY_RETAILER_API_HOST, plainHttp(),
                                                  ServerPlace{"127.0.0.1", retailerPort.number()});
        return *server_;
    }

    void expectASearchThatWorks()
    {
        server_.reset();
        retailer = std::make_unique<Merchant>(retailerPort.number());
        stock(threeItems());
        search("두유");
        const auto result = resultMessage();
        EXPECT_EQ(textOf(result, "key_total_num_of_products"), "3");
        ui->confirm(result);
        for (const char* index : {"0", "0", "1"})
            EXPECT_EQ(ui->nextRetailerPicture().index, index);
        EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
        waitForPictures();
        stopService();
        EXPECT_EQ(service->errors(), "");
    }

  private:
    std::unique_ptr<HostileServer> server_;
};

class ASearchAtAHostileRetailer : public AHostileRetailer, public testing::WithParamInterface<Hostility> {};

TEST_P(ASearchAtAHostileRetailer, FailsIsLoggedAndLeavesTheNextOneUnharmed)
{
    standForRetailer().handle(SearchPath, GetParam().handler);

    search();

    EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "0");
    EXPECT_EQ(errors(), (Texts{"perform: curl_easy_perform() failed: " + GetParam().reason,
                               "searchProduct: curl perform failed: 0"}));
    EXPECT_EQ(status(), (StatusRecord{1, 0, 0, {}, {}}));
    expectASearchThatWorks();
}

std::vector<Hostility> some()
{
    const std::set<std::string> names = {"NoAnswer",       "NoStatusLine",      "HeaderOf100KB",
                                         "NegativeLength", "ChunkWithoutASize", "ResetInTheBody"};
    std::vector<Hostility> chosen;
    for (const Hostility& one : hostilitiesOverHttp()) {
        if (names.count(one.name) > 0)
            chosen.push_back(one);
    }
    return chosen;
}

INSTANTIATE_TEST_SUITE_P(By, ASearchAtAHostileRetailer, testing::ValuesIn(some()),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_F(AHostileRetailer, SendsASearchElsewhereInVain)
{
    HostileServer other("http://other.example", plainHttp());
    HostileServer& server = standForRetailer();
    server.answer(SearchPath, 307, "", "Location: http://" + other.place() + "/\r\n");

    search();
    resultMessage();

    EXPECT_EQ(errors(), Texts{"searchProduct: curl perform failed: 307"});
    EXPECT_EQ(server.connections(), 1);
    EXPECT_EQ(other.connections(), 0);
    expectASearchThatWorks();
}

TEST_F(AHostileRetailer, AsksInVainToBeAskedLater)
{
    HostileServer& server = standForRetailer();
    server.answer(SearchPath, 429, "", "Retry-After: 1\r\n");

    search();
    resultMessage();

    EXPECT_EQ(errors(), Texts{"searchProduct: curl perform failed: 429"});
    EXPECT_EQ(server.connections(), 1);
    expectASearchThatWorks();
}

TEST_F(AHostileRetailer, SpoilsNoPictureButItsOwn)
{
    const std::string secret = root + "/secret.png";
    std::ofstream(secret) << "what nobody outside may read";
    HostileServer& server = standForRetailer();
    const std::string body = answerOf(threeItems());
    server.answer(SearchPath, 200, body);
    server.answer("/i/seoul.jpg", 302, "", "Location: file://" + secret + "\r\n");
    server.handle(iconPath("91"), bytes("HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n"));
    server.answer("/i/maeil.png", 200, "maeil");

    search();
    ui->confirm(resultMessage());

    const Picture picture = ui->nextRetailerPicture();
    EXPECT_EQ(picture.index, "1");
    EXPECT_EQ(contentOf(picture.path), "maeil");
    EXPECT_EQ(contentOf(picturesFolder() + "/10.jpg"), "");
    const std::string failed = "startDownload: curl_easy_perform failed, result: ";
    const std::string lost = "startDownloadImages: Failed to startDownload for index 0, type: ";
    EXPECT_EQ(errors(), (Texts{failed + "Unsupported protocol", lost + "0", failed + "Weird server reply",
                               lost + "2"}));
    expectASearchThatWorks();
}

}  // namespace

}  // namespace ServiceTest
