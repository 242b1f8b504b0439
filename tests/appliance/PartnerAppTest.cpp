#include <gtest/gtest.h>

#include "LogText.h"
#include "Names.h"
#include "ScreenAppFixture.h"
#include "ShopJson.h"

namespace {

using namespace Appliance;
using Partner::Page;
using Partner::ShopContent;
using TestSupport::RawPeer;

TestSupport::Extras productExtras(const std::string& merchant, const std::string& variantRef)
{
    return {{KeyMerchant, sdbus::Variant(merchant)}, {KeyVariantRefs, sdbus::Variant(variantRef)}};
}

// The partner app's process, and a peer in the service's place.
class ThePartnerApp : public TestSupport::ScreenAppFixture {
  protected:
    void SetUp() override
    {
        service_ = std::make_unique<RawPeer>(ServiceAppId);
        startApp({CARVOY_PARTNER}, PartnerAppId);
    }

    void fromService(const char* operation, const TestSupport::Extras& extras = {}, std::uint32_t id = 0)
    {
        ASSERT_EQ(service_->launch(PartnerAppId, operation, id, extras, ServiceAppId), "");
    }

    ShopContent shopAfter(int messages)
    {
        const auto shop = watch_->waitFor<ShopContent>(
            "partner.json", Partner::shopFromJson,
            [messages](const auto& content) { return lastNumber(content.messages) >= messages; });
        EXPECT_TRUE(shop);
        return shop.value_or(ShopContent());
    }

    std::unique_ptr<RawPeer> service_;
};

TEST_F(ThePartnerApp, ShowsNothingAtFirst)
{
    const ShopContent shop = shopAfter(0);
    EXPECT_EQ(shop.page, Page::None);
    EXPECT_TRUE(shop.cart.empty());
}

TEST_F(ThePartnerApp, OpensTheProductThatItIsAskedFor)
{
    fromService(OperationShowProduct, productExtras("freshmart", "FM-1"));
    const ShopContent shop = shopAfter(1);
    EXPECT_EQ(shop.page, Page::Product);
    EXPECT_EQ(shop.product.merchant, "freshmart");
    EXPECT_EQ(shop.product.variantRef, "FM-1");
    const Received& message = shop.messages.back();
    EXPECT_EQ(message.operation, OperationShowProduct);
    EXPECT_EQ(message.from, ServiceAppId);
    EXPECT_EQ(message.outcome, "taken");
    EXPECT_EQ(message.extras.at(KeyVariantRefs), "FM-1");
}

TEST_F(ThePartnerApp, PutsTheShownProductIntoTheCart)
{
    fromService(OperationShowProduct, productExtras("freshmart", "FM-1"));
    fromService(OperationAddToCart);
    fromService(OperationAddToCart);
    fromService(OperationShowCart);
    const ShopContent shop = shopAfter(4);
    EXPECT_EQ(shop.page, Page::Cart);
    ASSERT_EQ(shop.cart.size(), 1U);
    EXPECT_EQ(shop.cart[0].product.variantRef, "FM-1");
    EXPECT_EQ(shop.cart[0].quantity, 2);
}

TEST_F(ThePartnerApp, SaysThatThereIsNothingToAdd)
{
    fromService(OperationAddToCart);
    const ShopContent shop = shopAfter(1);
    EXPECT_TRUE(shop.cart.empty());
    EXPECT_EQ(shop.messages.back().outcome, "ignored: no product is shown");
}

TEST_F(ThePartnerApp, GoesToTheCheckOut)
{
    fromService(OperationCheckOut);
    EXPECT_EQ(shopAfter(1).page, Page::CheckOut);
}

TEST_F(ThePartnerApp, ListensToTheServiceOnly)
{
    ASSERT_EQ(tool_->launch(PartnerAppId, OperationShowProduct, 3, productExtras("freshmart", "FM-1")), "");
    const auto reply = tool_->nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->result, -1);
    const ShopContent shop = shopAfter(1);
    EXPECT_EQ(shop.page, Page::None);
    EXPECT_EQ(shop.messages.back().outcome, "ignored: it is not from the service");
    EXPECT_EQ(shop.messages.back().from, "org.example.raw");
}

TEST_F(ThePartnerApp, IgnoresWhatMakesNoSense)
{
    fromService(OperationShowProduct, productExtras("freshmart", ""));
    fromService(OperationShowProduct, {{KeyVariantRefs, sdbus::Variant(std::vector<std::string>{"FM-1"})}});
    fromService("http://tizen.org/appcontrol/operation/click_nothing");
    fromService(OperationCloseApp);
    const ShopContent shop = shopAfter(4);
    EXPECT_EQ(shop.page, Page::None);
    for (const Received& message : shop.messages) {
        EXPECT_EQ(message.outcome.rfind("ignored: ", 0), 0U) << message.outcome;
    }
}

TEST_F(ThePartnerApp, RepliesToAServiceThatWantsIt)
{
    fromService(OperationCheckOut, {}, 9);
    const auto reply = service_->nextReply();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->id, 9U);
    EXPECT_EQ(reply->result, 0);
}

TEST_F(ThePartnerApp, GoesOnWhereItsFileCannotBeWritten)
{
    shopAfter(0);  // its first writing is over
    std::filesystem::create_directory(TestSupport::ScratchRoot::file("screen/partner.json.new"));
    for (const std::uint32_t id : {1U, 2U}) {
        fromService(OperationCheckOut, {}, id);
        const auto reply = service_->nextReply();
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->result, 0);
    }
    const std::string log = LogText::contentOf(TestSupport::ScratchRoot::file("platform.log"));
    EXPECT_NE(log.find("File not written"), std::string::npos) << log;
}

TEST(ThePartnerProgram, SaysWhyItCannotRun)
{
    TestSupport::ChildProcess lonely({CARVOY_PARTNER},
                                     {{"DBUS_SESSION_BUS_ADDRESS", "unix:abstract=nobody-listens-here"}});
    EXPECT_EQ(lonely.wait().status, 1);
    EXPECT_NE(lonely.errors(), "");
    TestSupport::ChildProcess wrong({CARVOY_PARTNER, "--fly"});
    EXPECT_EQ(wrong.wait().status, 2);
    TestSupport::ChildProcess help({CARVOY_PARTNER, "--help"});
    EXPECT_EQ(help.wait().status, 0);
    EXPECT_NE(help.output().find("Exit status:"), std::string::npos);
}

}  // namespace
