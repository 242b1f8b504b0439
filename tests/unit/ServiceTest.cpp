#include "Service.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "DBControl.h"
#include "Products.h"
#include "SearchControlFixture.h"
#include "Singleton.h"
#include "VoiceControl.h"
#include "VoiceStandIn.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

const Texts CREATED = {"onCreate: Service::onCreate", "VoiceControl: ", "initVoiceControl: ",
                       "_vc_create_command_list: ==== Create Command List ===="};

const std::string SERVICE = "http://carvoy-service/appcontrol/operation/";

/** Here the controller is the one that the service makes. */
class ServiceTest : public SearchControlFixture {
  protected:
    void SetUp() override
    {
        SearchControlFixture::SetUp();
        search_.reset();
        TestSupport::VoiceStandIn::reset();
        Calls::reset();
    }

    void TearDown() override
    {
        delete std::exchange(Util::Singleton<VoiceControl>::mInstance, nullptr);
        search_.reset(std::exchange(Util::Singleton<SearchControl>::mInstance, nullptr));
        SearchControlFixture::TearDown();
    }

    static SearchControl* controller() { return Util::Singleton<SearchControl>::mInstance; }

    static VoiceControl* voice() { return Util::Singleton<VoiceControl>::mInstance; }

    /** The end of the service, behind which its controllers must not be asked for again. */
    void terminate()
    {
        service_.onTerminate();
        forgetControllers();
    }

    static void forgetControllers()
    {
        Util::Singleton<VoiceControl>::mInstance = nullptr;
        Util::Singleton<SearchControl>::mInstance = nullptr;
    }

    /** A request with this operation (none if empty) and these extras arrives. */
    void request(const std::string& operation, const std::map<std::string, std::string>& extras = {})
    {
        app_control_h handle = nullptr;
        ASSERT_EQ(app_control_create(&handle), APP_CONTROL_ERROR_NONE);
        if (!operation.empty())
            app_control_set_operation(handle, operation.c_str());
        for (const auto& [key, value] : extras)
            app_control_add_extra_data(handle, key.c_str(), value.c_str());
        service_.onAppControl(handle);
        EXPECT_EQ(app_control_destroy(handle), APP_CONTROL_ERROR_NONE);
    }

    Service service_;
};

}  // namespace

// Its owner deletes it through a pointer; it keeps nothing itself.
static_assert(std::has_virtual_destructor_v<Service>);
static_assert(std::has_virtual_destructor_v<SearchControl>);
static_assert(sizeof(Service) == sizeof(void*));

TEST_F(ServiceTest, CreateWritesTheFirstStatusRecord)
{
    EXPECT_TRUE(service_.onCreate());
    EXPECT_EQ(logged(), CREATED);
    EXPECT_EQ(statusRecord(), (StatusRecord{{}, {}, 0, {}, {}}));
    EXPECT_EQ(controller(), nullptr);
}

TEST_F(ServiceTest, CreateMakesTheClientOfVoiceControlBeforeItWritesTheRecord)
{
    EXPECT_TRUE(service_.onCreate());
    EXPECT_NE(voice(), nullptr);
    EXPECT_EQ(Calls::order({"vc_prepare", "ndd_manager_create"}),
              (Texts{"vc_prepare", "ndd_manager_create"}));
}

TEST_F(ServiceTest, CreateKeepsTheClientThatIsThereAlready)
{
    VoiceControl* const before = Util::Singleton<VoiceControl>::getInstance();
    Calls::reset();
    EXPECT_TRUE(service_.onCreate());
    EXPECT_EQ(voice(), before);
    EXPECT_EQ(logged(), Texts{"onCreate: Service::onCreate"});
    EXPECT_EQ(statusRecord(), (StatusRecord{{}, {}, 0, {}, {}}));
}

TEST_F(ServiceTest, CreateSucceedsWithoutVoice)
{
    Calls::fail("vc_initialize", VC_ERROR_NOT_SUPPORTED);
    EXPECT_TRUE(service_.onCreate());
    EXPECT_EQ(loggedErrors(), Texts{"initVoiceControl: [ERROR] Fail to initialize"});
    EXPECT_EQ(statusRecord(), (StatusRecord{{}, {}, 0, {}, {}}));
}

TEST_F(ServiceTest, CreateResetsTheCountOfProductsOnly)
{
    ASSERT_EQ(DBControl::updateStatus(1, 1, 6, 2, 3), 0);
    EXPECT_TRUE(service_.onCreate());
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 1, 0, 2, 3}));
}

TEST_F(ServiceTest, CreateSucceedsWithoutTheStatusStore)
{
    Calls::failAlways("ndd_manager_create", -5);
    EXPECT_TRUE(service_.onCreate());
    EXPECT_EQ(logged(), CREATED);
}

TEST_F(ServiceTest, ASearchIsMadeBeforeTheRequestIsOver)
{
    merchant_.answerSearch(200, Products::answer({R"({"name": "Milk"})"}));
    request(SERVICE + "search", {{"key_merchant", "freshmart"}, {"key_search_term", "oat milk"}});
    ASSERT_NE(controller(), nullptr);
    EXPECT_EQ(merchant_.requests().at(0).target,
              "/merchantbridge-production/api/product/search?merchant=freshmart"
              "&query=oat%20milk&searchBy=full&pageSize=6");
    EXPECT_EQ(statusRecord(), (StatusRecord{1, 1, 1, {}, {}}));
    EXPECT_EQ(logged().at(0), "onAppControl: Service::onAppControl");
}

TEST_F(ServiceTest, AResultIsSentToTheUiApp)
{
    merchant_.answerSearch(200, Products::answer({R"({"name": "Milk"})"}));
    request(SERVICE + "search", {{"key_merchant", "freshmart"}, {"key_search_term", "milk"}});
    request(SERVICE + "result");
    const std::vector<SentMessage> messages = sent();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_TRUE(messages[0].isResult());
    EXPECT_EQ(messages[0].list("key_product_names"), Texts{"Milk"});
    EXPECT_EQ(messages[0].userData, controller());
}

TEST_F(ServiceTest, AResultBeforeAnySearchIsEmpty)
{
    request(SERVICE + "result");
    ASSERT_NE(controller(), nullptr);
    const std::vector<SentMessage> messages = sent();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].keys, Texts{"key_total_num_of_products"});
    EXPECT_EQ(messages[0].text("key_total_num_of_products"), "0");
    EXPECT_EQ(merchant_.requests().size(), 0u);
}

TEST_F(ServiceTest, OneControllerServesAllRequests)
{
    request(SERVICE + "result");
    SearchControl* const first = controller();
    request(SERVICE + "search");
    request(SERVICE + "result");
    EXPECT_EQ(controller(), first);
}

TEST_F(ServiceTest, AMissingKeyIsAnEmptyText)
{
    for (const std::map<std::string, std::string>& extras : {std::map<std::string, std::string>{},
                                                             {{"key_search_term", "milk"}},
                                                             {{"key_merchant", "freshmart"}}}) {
        Calls::reset();
        request(SERVICE + "search", extras);
        EXPECT_EQ(logged(),
                  (Texts{"onAppControl: Service::onAppControl", "searchProduct: Invalid extra data"}));
        EXPECT_EQ(statusRecord(), (StatusRecord{0, 0, 0, {}, {}}));
        EXPECT_EQ(responseFlag(), 1);
    }
    EXPECT_EQ(merchant_.requests().size(), 0u);
}

TEST_F(ServiceTest, AListWhereATextBelongsIsAnEmptyText)
{
    app_control_h handle = nullptr;
    ASSERT_EQ(app_control_create(&handle), APP_CONTROL_ERROR_NONE);
    app_control_set_operation(handle, (SERVICE + "search").c_str());
    const char* merchants[] = {"freshmart", "cornershop"};
    app_control_add_extra_data_array(handle, "key_merchant", merchants, 2);
    app_control_add_extra_data(handle, "key_search_term", "milk");
    service_.onAppControl(handle);
    app_control_destroy(handle);
    EXPECT_EQ(loggedErrors(), Texts{"searchProduct: Invalid extra data"});
}

TEST_F(ServiceTest, OtherOperationsAreIgnored)
{
    const std::string platform = "http://tizen.org/appcontrol/operation/";
    const std::string assistant = "http://nuvex-da/appcontrol/operation/";
    const Texts others = {"",
                          SERVICE,
                          "search",
                          "result",
                          SERVICE + "search ",
                          SERVICE + "searchx",
                          SERVICE + "searc",
                          SERVICE + "Search",
                          " " + SERVICE + "search",
                          SERVICE + "result/",
                          SERVICE + "resul",
                          SERVICE + "show",
                          SERVICE + "hide",
                          SERVICE + "product_image",
                          platform + "search",
                          platform + "default",
                          platform + "show_detailed_view",
                          platform + "click_add_cart",
                          assistant + "search",
                          assistant + "close_app",
                          "https://carvoy-service/appcontrol/operation/search"};
    for (const std::string& operation : others)
        request(operation, {{"key_merchant", "freshmart"}, {"key_search_term", "milk"}});

    EXPECT_EQ(logged(), Texts(others.size(), "onAppControl: Service::onAppControl"));
    EXPECT_EQ(controller(), nullptr);
    EXPECT_EQ(merchant_.requests().size(), 0u);
    EXPECT_EQ(sent().size(), 0u);
    EXPECT_EQ(statusRecord(), std::nullopt);
    EXPECT_EQ(responseFlag(), std::nullopt);
}

TEST_F(ServiceTest, ANullHandleIsIgnored)
{
    app_control_h handle = nullptr;
    service_.onAppControl(handle);
    EXPECT_EQ(logged(), Texts{"onAppControl: Service::onAppControl"});
    EXPECT_EQ(controller(), nullptr);
}

TEST_F(ServiceTest, NoRequestIsEverRepliedTo)
{
    merchant_.answerSearch(500, "");
    request(SERVICE + "search", {{"key_merchant", "freshmart"}, {"key_search_term", "milk"}});
    request(SERVICE + "result");
    request(SERVICE + "show");
    settle();
    EXPECT_EQ(Calls::replies().size(), 0u);
}

TEST_F(ServiceTest, TerminateWithoutARequestDeletesOnlyTheClientOfVoiceControl)
{
    EXPECT_TRUE(service_.onCreate());
    Calls::reset();
    terminate();
    EXPECT_EQ(logged(), (Texts{"onTerminate: Service::onTerminate", "deinitVoiceControl: "}));
    EXPECT_EQ(Calls::count("system"), 0u);
}

TEST_F(ServiceTest, TerminateWithoutCreateDeletesNothing)
{
    terminate();
    EXPECT_EQ(logged(), Texts{"onTerminate: Service::onTerminate"});
}

TEST_F(ServiceTest, TerminateDeletesTheClientOfVoiceControlFirstAndLeavesItsPointer)
{
    EXPECT_TRUE(service_.onCreate());
    request(SERVICE + "result");
    VoiceControl* const before = voice();
    Calls::reset();
    service_.onTerminate();
    EXPECT_EQ(voice(), before);
    EXPECT_EQ(Calls::order({"vc_deinitialize", "system"}).front(), "vc_deinitialize");
    EXPECT_GT(Calls::count("system"), 0u);
    forgetControllers();
}

TEST_F(ServiceTest, TerminateDeletesTheControllerAndLeavesItsPointer)
{
    request(SERVICE + "result");
    SearchControl* const before = controller();
    writeFile(imageFile("1.png"), "picture");
    service_.onTerminate();
    EXPECT_EQ(controller(), before);
    EXPECT_FALSE(std::filesystem::exists(imageFile("")));
    forgetControllers();
}

TEST_F(ServiceTest, TerminateWhileAPictureIsOnItsWayWaitsForIt)
{
    const auto reached = newLatch();
    const auto release = newLatch();
    answerWithPictures(
        {addHeldPicture("/held.png", "held", reached, release), MerchantServer::url("/next.png")});
    request(SERVICE + "search", {{"key_merchant", "freshmart"}, {"key_search_term", "milk"}});
    ASSERT_TRUE(reached->wait());
    // The controller's end begins with wiping the pictures.
    Calls::before("system", [release] { release->open(); });
    terminate();
    Calls::before("system", [] {});
    EXPECT_EQ(Calls::count("fclose"), 1u);
    EXPECT_EQ(merchant_.countOf("/next.png"), 0);
    EXPECT_EQ(sent().size(), 0u);
}

TEST_F(ServiceTest, TerminateWithMessagesStillQueuedIsHarmless)
{
    answerWithPictures({addPicture("/0.png", "zero")});
    request(SERVICE + "search", {{"key_merchant", "freshmart"}, {"key_search_term", "milk"}});
    for (int i = 0; i < 5; ++i)
        request(SERVICE + "result");
    terminate();
    // What is queued holds copies.
    size_t results = 0;
    for (const SentMessage& message : sent())
        results += message.isResult();
    EXPECT_EQ(results, 5u);
}

}  // namespace Carvoy
