// The UI app with a face: its page's commands lead to messages, and what happens comes back on the stream.
#include <gtest/gtest.h>
#include <nuvex-da-db.h>
#include <vconf.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "EventListener.h"
#include "HttpClient.h"
#include "Names.h"
#include "ScreenAppFixture.h"

namespace {

using namespace Appliance;
using ApplianceTest::EventListener;
using ApplianceTest::HttpClient;
using ApplianceTest::Reply;
using nlohmann::json;
using TestSupport::ChildProcess;
using TestSupport::RawPeer;
using TestSupport::ScratchRoot;
using Texts = std::vector<std::string>;

namespace fs = std::filesystem;

TestSupport::Extras resultExtras(const std::string& term, const std::string& total)
{
    return {{KeyMerchant, sdbus::Variant(std::string("freshmart"))},
            {KeySearchTerm, sdbus::Variant(term)},
            {KeyTotal, sdbus::Variant(total)},
            {KeyNames, sdbus::Variant(Texts{"Whole Milk", "<img src=x onerror=alert(1)>"})},
            {KeyPrices, sdbus::Variant(Texts{"$4.49", "$2.69"})}};
}

// What the service, with the process id 77, logs of a search and of the lists that it then sends.
std::string logOf(const std::string& error)
{
    const std::string request =
        "I/carvoy-service(   77): [77] Service.cpp: onAppControl(34) > Service::onAppControl\n";
    return request + "E/carvoy-service(   77): [77] SearchControl.cpp: searchProduct(233) > " + error + "\n" +
           request + "D/carvoy-service(   77): [77] SearchControl.cpp: sendResultToUI(88) > \n";
}

class TheUiAppsFace : public TestSupport::ScreenAppFixture {
  protected:
    void SetUp() override
    {
        fs::remove_all(ScratchRoot::file("media"));
        std::ofstream(logFile_) << "I/carvoy-service(   77): before\n";
    }

    void start(const Texts& options = {})
    {
        Texts command = {CARVOY_UI, "--screen", "0", "--merchant", "freshmart", "--merchant", "corner-store"};
        command.insert(command.end(), options.begin(), options.end());
        startApp(command, UiAppId);
        ASSERT_TRUE(app_->waitForOutput("}\n")) << app_->errors();
        const std::string address = json::parse(app_->output()).at("screen");
        ASSERT_EQ(address.rfind("http://127.0.0.1:", 0), 0U) << address;
        port_ = std::stoi(address.substr(address.rfind(':') + 1));
        events_ = std::make_unique<EventListener>(client());
    }

    // The stream ends with the app, and the listener with the stream.
    void TearDown() override
    {
        ScreenAppFixture::TearDown();
        events_.reset();
    }

    HttpClient client() const
    {
        HttpClient client("127.0.0.1", port_);
        client.headers = {"Host: 127.0.0.1:" + std::to_string(port_), "Content-Type: application/json"};
        return client;
    }

    void command(const std::string& path, const json& body) const
    {
        EXPECT_EQ(client().post("/api/" + path, body.dump()).status, 202) << path;
    }

    void search(const std::string& term) const
    {
        command("search", {{"source", "merchant"}, {"merchant", "freshmart"}, {"term", term}});
    }

    std::string fromService(const char* operation, std::uint32_t id, const TestSupport::Extras& extras) const
    {
        return service_->launch(UiAppId, operation, id, extras, ServiceAppId);
    }

    // A search of which the service has got both requests.
    void searchAt(RawPeer& service, const std::string& term) const
    {
        search(term);
        ASSERT_TRUE(service.nextLaunch());
        ASSERT_TRUE(service.nextLaunch());
    }

    std::optional<json> cardWith(const std::string& member, const json& value) const
    {
        return events_->waitForEvent(
            "card", [&](const json& card) { return card.is_object() && card.at(member) == value; });
    }

    std::optional<json> event(const std::string& name, const json& data) const
    {
        return events_->waitForEvent(name, [&data](const json& seen) { return seen == data; });
    }

    const std::string logFile_ = ScratchRoot::file("platform.log");
    int port_ = 0;
    std::unique_ptr<EventListener> events_;
    std::unique_ptr<RawPeer> service_ = std::make_unique<RawPeer>(ServiceAppId);
};

TEST_F(TheUiAppsFace, IsAPage)
{
    start();
    const Reply page = client().get("/");
    EXPECT_EQ(page.status, 200);
    EXPECT_NE(page.body.find("<!doctype html>"), std::string::npos);
}

TEST_F(TheUiAppsFace, TellsItsSettings)
{
    start({"--confirm", "late", "--confirm-after", "700"});
    const auto settings =
        events_->waitForEvent("settings", [](const json& seen) { return seen.is_object(); });
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->at("confirm"), "late");
    EXPECT_EQ(settings->at("delay"), 700);
    EXPECT_EQ(settings->at("merchants"), (json{"freshmart", "corner-store"}));
    EXPECT_EQ(settings->at("partner"), PartnerAppId);
    EXPECT_EQ(settings->at("switches").size(), 6U);
}

TEST_F(TheUiAppsFace, SearchesWithTheTroubleThatIsOn)
{
    start();
    command("switch", {{"id", "503"}, {"on", true}});
    search("oat milk");
    const auto search = service_->nextLaunch();
    ASSERT_TRUE(search);
    EXPECT_EQ(search->operation, OperationSearch);
    EXPECT_EQ(search->caller, UiAppId);
    EXPECT_EQ(textIn(*search, KeyMerchant), "freshmart");
    EXPECT_EQ(textIn(*search, KeySearchTerm), "oat milk ~status=503");
    const auto result = service_->nextLaunch();
    ASSERT_TRUE(result);
    EXPECT_EQ(result->operation, OperationResult);
    const auto card = cardWith("state", "searching");
    ASSERT_TRUE(card);
    EXPECT_EQ(card->at("term"), "oat milk");
    EXPECT_EQ(card->at("troubles"), json{"~status=503"});
}

TEST_F(TheUiAppsFace, ShowsWhatTheServiceFindsAndItsPictures)
{
    start();
    searchAt(*service_, "milk");
    ASSERT_EQ(fromService(OperationResult, 9, resultExtras("milk", "2")), "");
    const auto card = cardWith("outcome", "found");
    ASSERT_TRUE(card);
    EXPECT_EQ(card->at("products")[1].at("name"), "<img src=x onerror=alert(1)>");
    EXPECT_EQ(card->at("products")[0].at("picture"), "");
    const auto confirmed = service_->nextReply();
    ASSERT_TRUE(confirmed);
    EXPECT_EQ(confirmed->result, 0);

    const fs::path picture = fs::path(ScratchRoot::file("media")) / "tmp" / "1.png";
    fs::create_directories(picture.parent_path());
    std::ofstream(picture) << "\x89PNG\r\n\x1A\n";
    ASSERT_EQ(fromService(OperationProductImage, 0,
                          {{KeyImageNumber, sdbus::Variant(std::string("0"))},
                           {KeyImagePath, sdbus::Variant(picture.string())}}),
              "");
    const auto shown = events_->waitForEvent("card", [](const json& seen) {
        return seen.is_object() && !seen.at("products").empty() && seen.at("products")[0].at("picture") != "";
    });
    ASSERT_TRUE(shown);
    const Reply reply =
        client().get("/pictures/" + shown->at("products")[0].at("picture").get<std::string>());
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.contentType, "image/png");
}

TEST_F(TheUiAppsFace, TellsAFailedSearchFromOneThatFoundNothing)
{
    start();
    searchAt(*service_, "milk");
    std::ofstream(logFile_, std::ios::app) << logOf("curl perform failed: 503");
    ASSERT_EQ(fromService(OperationResult, 0, resultExtras("milk", "0")), "");
    const auto failed = cardWith("outcome", "failed");
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->at("reasons"), json{"curl perform failed: 503"});

    searchAt(*service_, "zzqq");
    std::ofstream(logFile_, std::ios::app) << logOf("empty json array");
    ASSERT_EQ(fromService(OperationResult, 0, resultExtras("zzqq", "0")), "");
    EXPECT_TRUE(cardWith("outcome", "nothing"));
}

TEST_F(TheUiAppsFace, TellsTwoSearchesThatCameAtOnceApart)
{
    start();
    searchAt(*service_, "milk");
    searchAt(*service_, "zzqq");
    std::ofstream(logFile_, std::ios::app) << logOf("curl perform failed: 503") << logOf("empty json array");
    ASSERT_EQ(fromService(OperationResult, 0, resultExtras("milk", "0")), "");
    ASSERT_EQ(fromService(OperationResult, 0, resultExtras("zzqq", "0")), "");
    const auto card = cardWith("state", "shown");
    ASSERT_TRUE(card);
    EXPECT_EQ(card->at("term"), "zzqq");
    EXPECT_EQ(card->at("outcome"), "nothing");
}

TEST_F(TheUiAppsFace, ShowsFoldersThatWereRemovedAndMadeAnew)
{
    start();
    fs::remove_all(ScratchRoot::file("media"));
    fs::remove_all(ScratchRoot::file("vconf"));
    ASSERT_EQ(vconf_set_int("db/nuvex/e-commerce/response", 5), 0);
    EXPECT_TRUE(event("flag", 5));
    fs::create_directories(ScratchRoot::file("media/tmp"));
    std::ofstream(ScratchRoot::file("media/tmp/7.png")) << "seven";
    EXPECT_TRUE(events_->waitForEvent(
        "images", [](const json& images) { return images.size() == 1 && images[0].at("name") == "7.png"; }));
}

TEST_F(TheUiAppsFace, SaysThatTheServiceIsNotThere)
{
    service_.reset();
    start();
    search("milk");
    const auto failed = cardWith("outcome", "failed");
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->at("state"), "shown");
    EXPECT_EQ(failed->at("reasons"), json{"no such app is running, and the bus cannot start it"});
}

TEST_F(TheUiAppsFace, ShowsSearchesThatAToolAskedFor)
{
    start();
    ASSERT_EQ(tool_->launch(UiAppId, OperationSearch, 0,
                            {{KeyMerchant, sdbus::Variant(std::string("freshmart"))},
                             {KeySearchTerm, sdbus::Variant(std::string("bread"))}}),
              "");
    EXPECT_TRUE(cardWith("term", "bread"));
}

TEST_F(TheUiAppsFace, SearchesAtTheRetailer)
{
    RawPeer retailer(RetailerServiceAppId);
    start();
    command("search", {{"source", "retailer"}, {"term", "우유"}});
    const auto search = retailer.nextLaunch();
    ASSERT_TRUE(search);
    EXPECT_EQ(textIn(*search, KeySearchTerm), "우유");
    EXPECT_TRUE(cardWith("source", "retailer"));
}

TEST_F(TheUiAppsFace, AnswersListsAsItIsTold)
{
    start();
    command("confirm", {{"mode", "fail"}});
    searchAt(*service_, "milk");
    ASSERT_EQ(fromService(OperationResult, 9, resultExtras("milk", "2")), "");
    const auto answer = service_->nextReply();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->result, -1);
    EXPECT_TRUE(events_->waitForEvent(
        "settings", [](const json& seen) { return seen.is_object() && seen.at("confirm") == "fail"; }));
}

TEST_F(TheUiAppsFace, PassesASentenceOnAndTellsWhyItFailed)
{
    RawPeer assistant(AssistantAppId);
    start();
    command("say", {{"sentence", "add to cart"}});
    const auto say = assistant.nextLaunch();
    ASSERT_TRUE(say);
    EXPECT_EQ(say->operation, OperationSay);
    EXPECT_EQ(textIn(*say, KeyUtterance), "add to cart");
    ASSERT_EQ(
        assistant.reply(say->sender, say->id, -1, {{KeyReason, sdbus::Variant(std::string("too loud"))}}),
        "");
    EXPECT_TRUE(event("notice", {{"level", "error"}, {"text", "The assistant: too loud"}}));
    command("say", {{"sentence", "show cart"}});
    EXPECT_TRUE(assistant.nextLaunch()) << "and is not asked again about the notice";
}

TEST_F(TheUiAppsFace, SaysThatTheAssistantIsNotThere)
{
    start();
    command("say", {{"sentence", "add to cart"}});
    EXPECT_TRUE(event("notice", {{"level", "error"},
                                 {"text",
                                  "The assistant was not reached: no such app is running, and the bus "
                                  "cannot start it"}}));
}

TEST_F(TheUiAppsFace, SaysThatThereIsNoSuchSwitch)
{
    start();
    command("switch", {{"id", "502"}, {"on", true}});
    EXPECT_TRUE(event("notice", {{"level", "error"}, {"text", "There is no switch \"502\""}}));
}

TEST_F(TheUiAppsFace, SwitchesTheUntrustedCertificateWhereThereIsAFileForIt)
{
    const std::string file = ScratchRoot::file("untrusted-certificate");
    start({"--untrusted-file", file});
    command("switch", {{"id", "untrusted-certificate"}, {"on", true}});
    EXPECT_TRUE(events_->waitForEvent("settings", [](const json& seen) {
        return seen.is_object() && seen.at("switches").back().at("on") == true;
    }));
    EXPECT_TRUE(fs::exists(file));
}

TEST_F(TheUiAppsFace, ShowsTheMessagesBetweenTheApps)
{
    start();
    searchAt(*service_, "milk");
    const auto message = events_->waitForEvent(
        "message", [](const json& seen) { return seen.at("operation") == OperationSearch; });
    ASSERT_TRUE(message);
    EXPECT_EQ(message->at("kind"), "launch");
    EXPECT_EQ(message->at("from"), UiAppId);
    EXPECT_EQ(message->at("to"), ServiceAppId);
    EXPECT_EQ(message->at("extras"), (json{{KeyMerchant, "freshmart"}, {KeySearchTerm, "milk"}}));
    EXPECT_TRUE(events_->waitForEvent("apps", [](const json& apps) {
        return apps.is_object() && apps.value(ServiceAppId, false) && apps.value(UiAppId, false);
    }));
    service_.reset();
    EXPECT_TRUE(events_->waitForEvent(
        "apps", [](const json& apps) { return apps.is_object() && !apps.value(ServiceAppId, true); }));
}

TEST_F(TheUiAppsFace, ShowsTheLog)
{
    start();
    EXPECT_TRUE(event("log", {{"line", "I/carvoy-service(   77): before"}}));
    std::ofstream(logFile_, std::ios::app) << "E/other   (    1): \x1B[31mred\x1B[0m\n";
    EXPECT_TRUE(event("log", {{"line", "E/other   (    1): \x1B[31mred\x1B[0m"}}));
    std::ofstream(logFile_, std::ios::app) << std::string(5000, 'x') << "\n";
    EXPECT_TRUE(event("log", {{"line", std::string(4000, 'x') + "…"}}));
}

TEST_F(TheUiAppsFace, ShowsTheStatusRecordAndTheFlag)
{
    start();
    ASSERT_EQ(vconf_set_int("db/nuvex/e-commerce/response", 1), 0);
    EXPECT_TRUE(event("flag", 1));
    ndd_manager_h manager = nullptr;
    ndd_bundle_h bundle = nullptr;
    ASSERT_EQ(ndd_manager_create("Commerce", &manager), 0);
    ASSERT_EQ(ndd_bundle_create(&bundle), 0);
    ndd_bundle_add_int(bundle, "id", 0);
    ndd_bundle_add_int(bundle, "totalCount", 6);
    ASSERT_EQ(ndd_manager_insert(manager, bundle), 0);
    ndd_bundle_destroy(bundle);
    ndd_manager_destroy(manager);
    EXPECT_TRUE(event("record", {{"isLoggedIn", nullptr},
                                 {"isLinked", nullptr},
                                 {"totalCount", 6},
                                 {"productCountInCart", nullptr},
                                 {"currentViewType", nullptr}}));
}

TEST_F(TheUiAppsFace, ShowsTheImageDirectoryAlsoOnceItIsMadeAnew)
{
    const fs::path folder = fs::path(ScratchRoot::file("media")) / "tmp";
    const auto names = [](const json& images) {
        std::string all;
        for (const json& image : images) {
            all += image.at("name").get<std::string>() + " ";
        }
        return all;
    };
    start();
    for (const std::string name : {"1.png", "2.png"}) {
        fs::create_directories(folder);
        std::ofstream(folder / name) << name;
        EXPECT_TRUE(events_->waitForEvent("images", [&](const json& images) {
            return names(images) == name + " ";
        })) << name;
        fs::remove_all(folder);
    }
}

TEST_F(TheUiAppsFace, ShowsWhatTheOtherAppsKeep)
{
    start();
    json messages = json::array();
    for (int i = 1; i <= 30; ++i) {
        messages.push_back({{"number", i}});
    }
    const fs::path file = ScratchRoot::file("screen/partner.json");
    std::ofstream(file.string() + ".new") << json{{"page", "cart"}, {"messages", messages}};
    fs::rename(file.string() + ".new", file);
    const auto partner = events_->waitForEvent("partner", [](const json& seen) { return seen.is_object(); });
    ASSERT_TRUE(partner);
    EXPECT_EQ(partner->at("page"), "cart");
    EXPECT_EQ(partner->at("messages").size(), 20U);
    EXPECT_EQ(partner->at("messages").front().at("number"), 11);
}

TEST_F(TheUiAppsFace, TakesABurstOfCommandsOrSaysThatItIsTooMuch)
{
    start();
    int taken = 0;
    for (int i = 0; i < 200; ++i) {
        const Reply reply = client().post("/api/switch", json{{"id", "503"}, {"on", i % 2 == 0}}.dump());
        EXPECT_TRUE(reply.status == 202 || reply.status == 503) << reply.status;
        taken += reply.status == 202 ? 1 : 0;
    }
    EXPECT_GT(taken, 0);
    searchAt(*service_, "milk");
}

TEST_F(TheUiAppsFace, NeedsAPortThatIsFree)
{
    start();
    TestSupport::PrivateBus otherBus;
    ChildProcess second({CARVOY_UI, "--screen", std::to_string(port_)});
    EXPECT_NE(second.wait().status, 0);
    EXPECT_NE(second.errors().find("cannot listen on 127.0.0.1 port " + std::to_string(port_)),
              std::string::npos)
        << second.errors();
}

}  // namespace
