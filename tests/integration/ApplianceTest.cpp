// The whole appliance on a PC, each part a process of its own: merchant bridge, service, UI app.
#include <signal.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "BridgeProgram.h"
#include "ServiceWorld.h"

namespace ServiceTest {

namespace {

using nlohmann::json;
using TestSupport::ChildProcess;

constexpr const char* UiId = "org.tizen.carvoy";

class TheAppliance : public ServiceWorld {
  protected:
    void SetUp() override
    {
        bridge = std::make_unique<TestSupport::BridgeProgram>(root, tokenFile());
        service = runService(bridge->variables());
        ASSERT_TRUE(TestSupport::waitForName(ServiceId)) << service->errors();
        screen = std::make_unique<ChildProcess>(std::vector<std::string>{CARVOY_UI}, variables());
        ASSERT_TRUE(TestSupport::waitForName(UiId)) << screen->errors();
    }

    void TearDown() override
    {
        for (ChildProcess* process : {screen.get(), service.get(), &bridge->process()}) {
            process->signal(SIGTERM);
            expectEnd(*process, 0);
            EXPECT_EQ(process->errors(), "");
        }
        EXPECT_EQ(pictureFiles(), std::vector<std::string>{});
    }

    /** Searches on the screen, and gives the card once it is full but for the pictures left out. */
    json cardOf(const std::string& term, std::size_t withoutPicture = 0)
    {
        std::filesystem::create_directories(root + "/screen");
        const std::string file = root + "/screen/card.json";
        EXPECT_EQ(client->launch(UiId, serviceOperation("search"), 0,
                                 {{"key_merchant", "freshmart"}, {"key_search_term", term}}),
                  "");
        EXPECT_TRUE(waitForContent(file, [&](const std::string& text) {
            const json card = json::parse(text, nullptr, false);
            return !card.is_discarded() && card["term"] == term && card["state"] == "shown" &&
                   picturesMissing(card) == withoutPicture;
        })) << contentOf(file);
        return json::parse(contentOf(file));
    }

    static std::size_t picturesMissing(const json& card)
    {
        std::size_t missing = 0;
        for (const json& product : card["products"])
            missing += product["picture"] == "" ? 1 : 0;
        return missing;
    }

    static bool isPicture(const std::string& bytes)
    {
        return bytes.compare(0, 4, "\x89PNG") == 0 || bytes.compare(0, 3, "GIF") == 0 ||
               bytes.compare(0, 2, "\xff\xd8") == 0;
    }

    std::unique_ptr<TestSupport::BridgeProgram> bridge;
    std::unique_ptr<ChildProcess> screen;
};

TEST_F(TheAppliance, ShowsSixKindsOfMilkWithTheirPictures)
{
    const json card = cardOf("milk");

    EXPECT_EQ(card["total"], 6);
    for (const json& product : card["products"]) {
        EXPECT_NE(product["name"].get<std::string>().find("ilk"), std::string::npos) << product;
        EXPECT_EQ(product["price"].get<std::string>().substr(0, 1), "$") << product;
        EXPECT_TRUE(isPicture(contentOf(product["picture"]))) << product;
    }
    EXPECT_EQ(status(), (StatusRecord{1, 1, 6, {}, {}}));
    EXPECT_EQ(responseFlag(), "1\n");
}

TEST_F(TheAppliance, ShowsTheOtherPicturesWhereOneIsMissing)
{
    const json card = cardOf("milk ~image-404=2", 1);

    EXPECT_EQ(card["products"][1]["picture"], "");
    EXPECT_EQ(log.count("Failed to startDownload for index 1"), 1U);
}

TEST_F(TheAppliance, ShowsAnEmptyCardAfterASearchThatFailedAndAFullOneAfterTheNext)
{
    EXPECT_EQ(cardOf("milk ~status=503")["total"], 0);
    EXPECT_EQ(log.count("curl perform failed: 503"), 1U);
    EXPECT_EQ(status(), (StatusRecord{1, 0, 0, {}, {}}));

    EXPECT_GT(cardOf("bread")["total"], 0);
}

}  // namespace

}  // namespace ServiceTest
