// The tool's side of a spoken turn, with peers in the apps' places.
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>

#include "Conversation.h"
#include "ConversationJson.h"
#include "Grammar.h"
#include "JsonFile.h"
#include "Names.h"
#include "PrivateBus.h"
#include "RawPeer.h"
#include "Root.h"
#include "ScratchRoot.h"
#include "ScreenWatch.h"
#include "Session.h"
#include "Shop.h"
#include "ShopJson.h"
#include "ToolFixture.h"

namespace {

using namespace TestSupport;
using namespace Appliance;
using Texts = std::vector<std::string>;

const char NotComeText[] = "✗ partner app  click_check_out did not come ";

class ASpokenTurn : public testing::Test {
  protected:
    void SetUp() override
    {
        root_ = {ScratchRoot::file("spoken")};
        std::filesystem::remove_all(root_.path);
        lock_.emplace(Tool::RootLock::take(root_).value());
        Tool::Session{root_, {{"DBUS_SESSION_BUS_ADDRESS", bus_.address()}}, {}}.write();
        assistant_ = std::make_unique<RawPeer>(AssistantAppId);
        partner_ = std::make_unique<RawPeer>(PartnerAppId);
        service_ = std::make_unique<RawPeer>(ServiceAppId);
        writeFiles();
    }

    void writeFiles()
    {
        replaceJsonFile(root_.partnerFile(), Partner::toJson(shop_.content()));
        replaceJsonFile(root_.assistantFile(), Assistant::toJson(conversation_.content()));
    }

    void receiveCheckOut(const std::string& outcome = Taken)
    {
        shop_.noteReceived({0, "", OperationCheckOut, ServiceAppId, {}, outcome});
        writeFiles();
    }

    void beginTurn()
    {
        conversation_.begin("check out", "", {});
        writeFiles();
    }

    std::unique_ptr<ChildProcess> say(const std::string& limit, const Words& options = {}) const
    {
        Words command = {APPLIANCE_TOOL, "say", "--root",   root_.path.string(),
                         "--timeout",    limit, "check out"};
        command.insert(command.end(), options.begin(), options.end());
        return std::make_unique<ChildProcess>(command);
    }

    RawMessage asked()
    {
        const auto message = assistant_->nextLaunch();
        EXPECT_TRUE(message);
        return message.value_or(RawMessage());
    }

    void answer(const RawMessage& request, std::int32_t result = 0, TestSupport::Extras extras = {})
    {
        extras.emplace(KeyTurn, sdbus::Variant(std::to_string(conversation_.content().turn)));
        extras.emplace(KeyNlu, sdbus::Variant(Texts{Assistant::nluOf({Assistant::CheckOut, ""})}));
        EXPECT_EQ(assistant_->reply(request.sender, request.id, result, extras), "");
    }

    // Until the assistant's reply is there.
    std::unique_ptr<ChildProcess> delivered(const std::string& limit)
    {
        auto process = say(limit);
        const RawMessage request = asked();
        beginTurn();
        answer(request);
        return process;
    }

    static Ended endOf(ChildProcess& process)
    {
        const ProcessEnd end = process.wait();
        EXPECT_TRUE(end.inTime);
        return {end.status, process.output(), process.errors()};
    }

    PrivateBus bus_;
    Tool::Root root_;
    std::optional<Tool::RootLock> lock_;
    std::unique_ptr<RawPeer> assistant_;
    std::unique_ptr<RawPeer> partner_;
    std::unique_ptr<RawPeer> service_;
    Partner::Shop shop_;
    Assistant::Conversation conversation_;
};

const char Long[] = "600";

TEST_F(ASpokenTurn, EndsWithTheMessageThatItLeadsTo)
{
    const auto process = delivered(Long);
    receiveCheckOut();
    const Ended end = endOf(*process);
    EXPECT_EQ(end.status, 0) << end.errors;
    EXPECT_EQ(end.errors, "");
    EXPECT_TRUE(has(end.output, "✓ partner app  click_check_out")) << end.output;
}

TEST_F(ASpokenTurn, CountsWhatCameBeforeTheAssistantsReply)
{
    const auto process = say(Long);
    const RawMessage request = asked();
    beginTurn();
    receiveCheckOut();
    answer(request);
    EXPECT_EQ(endOf(*process).status, 0);
}

TEST_F(ASpokenTurn, DoesNotCountWhatCameBeforeIt)
{
    receiveCheckOut();
    const Ended end = endOf(*delivered("0.2"));
    EXPECT_EQ(end.status, 1);
    EXPECT_TRUE(has(end.errors, NotComeText + std::string("within 0.2 s"))) << end.errors;
}

TEST_F(ASpokenTurn, FailsWhereTheMessageWasIgnored)
{
    const auto process = delivered(Long);
    receiveCheckOut("ignored: closed on Sundays");
    const Ended end = endOf(*process);
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.errors, "✗ partner app  click_check_out ignored: closed on Sundays\n");
}

TEST_F(ASpokenTurn, SaysNothingWhereAFileCannotBeRead)
{
    receiveCheckOut();
    for (const char* damage : {"{", R"({"page": "check-out"})"}) {
        std::ofstream(root_.partnerFile()) << damage;
        const Ended end = endOf(*say("0.2"));
        EXPECT_EQ(end.status, 1);
        EXPECT_TRUE(has(end.errors, "partner.json")) << end.errors;
        EXPECT_TRUE(has(end.errors, "cannot be read")) << end.errors;
    }
    std::filesystem::remove(root_.assistantFile());
    EXPECT_EQ(endOf(*say("0.2")).status, 1);
}

TEST_F(ASpokenTurn, WaitsForAFileThatIsNotThereYet)
{
    receiveCheckOut();
    std::filesystem::remove(root_.partnerFile());
    const auto process = say(Long);
    writeFiles();
    const RawMessage request = asked();
    beginTurn();
    answer(request);
    receiveCheckOut();
    EXPECT_EQ(endOf(*process).status, 0);
}

TEST_F(ASpokenTurn, GoesOnWhereAFileIsDamagedMeanwhile)
{
    receiveCheckOut();
    const auto process = delivered(Long);
    std::ofstream(root_.partnerFile()) << "{";
    receiveCheckOut();
    EXPECT_EQ(endOf(*process).status, 0);
}

TEST_F(ASpokenTurn, WaitsForTheOneBeforeIt)
{
    const auto first = say(Long);
    const RawMessage request = asked();
    const auto second = say(Long);
    const Ended impatient = endOf(*say("0.2"));
    EXPECT_EQ(impatient.status, 1);
    EXPECT_TRUE(has(impatient.errors, "another sentence is under way")) << impatient.errors;
    beginTurn();
    receiveCheckOut();
    answer(request);
    EXPECT_EQ(endOf(*first).status, 0);
    const RawMessage next = asked();
    beginTurn();
    receiveCheckOut();
    answer(next);
    EXPECT_EQ(endOf(*second).status, 0);
}

TEST_F(ASpokenTurn, EndsWithASentenceThatSomebodyElseSays)
{
    const auto process = delivered(Long);
    beginTurn();
    const Ended end = endOf(*process);
    EXPECT_EQ(end.status, 1);
    EXPECT_TRUE(has(end.errors, NotComeText + std::string("before another sentence was said"))) << end.errors;
}

TEST_F(ASpokenTurn, IsFineWhereAllCameBeforeSomebodyElseSpoke)
{
    const auto process = say(Long);
    const RawMessage request = asked();
    beginTurn();
    receiveCheckOut();
    answer(request);
    beginTurn();
    const Ended end = endOf(*process);
    EXPECT_EQ(end.status, 0) << end.errors;
}

TEST_F(ASpokenTurn, TellsOfNothingDeliveredThatWasNot)
{
    const auto process = say(Long, {"--json"});
    const RawMessage request = asked();
    beginTurn();
    answer(request, -1, {{KeyReason, sdbus::Variant("not delivered to the service: no such event")}});
    const Ended end = endOf(*process);
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.errors, "");
    const nlohmann::json turn = nlohmann::json::parse(end.output, nullptr, false);
    ASSERT_TRUE(turn.is_object()) << end.output;
    EXPECT_EQ(turn["delivered"], nlohmann::json::array());
    EXPECT_EQ(turn["trouble"], "not delivered to the service: no such event");
}

TEST_F(ASpokenTurn, EndsWithTheServiceThatShouldAct)
{
    const auto process = delivered(Long);
    service_.reset();
    const Ended end = endOf(*process);
    EXPECT_EQ(end.status, 3);
    EXPECT_EQ(end.errors, "appliance: org.tizen.carvoy-service is not running any more\n");
}

TEST_F(ASpokenTurn, EndsWithTheAppThatShouldGetTheMessage)
{
    const auto process = delivered(Long);
    partner_.reset();
    const Ended end = endOf(*process);
    EXPECT_EQ(end.status, 3);
    EXPECT_EQ(end.errors, "appliance: " + std::string(PartnerAppId) + " is not running any more\n");
}

TEST_F(ASpokenTurn, EndsWithTheAssistantThatWasAsked)
{
    const auto process = say(Long);
    asked();
    assistant_.reset();
    const Ended end = endOf(*process);
    EXPECT_EQ(end.status, 3);
    EXPECT_EQ(end.errors, "appliance: org.tizen.nuvex-da is not running any more\n");
}

TEST_F(ASpokenTurn, CanBeInterrupted)
{
    const auto waiting = delivered(Long);
    waiting->signal(SIGINT);
    EXPECT_EQ(endOf(*waiting).status, 130);
}

TEST_F(ARunningAppliance, TakesASentenceThatIsUnderWayWithItsBus)
{
    up();
    const auto process = std::make_unique<ChildProcess>(
        Words{APPLIANCE_TOOL, "say", "--root", root_, "--timeout", Long, "show me the second one"});
    const auto delivered = ScreenWatch(root_).waitFor<Assistant::ConversationContent>(
        "assistant.json", Assistant::conversationFromJson,
        [](const auto& content) { return content.fate == Assistant::Fate::Delivered; });
    ASSERT_TRUE(delivered);
    kill(processes().at("bus"), SIGKILL);
    const ProcessEnd end = process->wait();
    EXPECT_EQ(end.status, 3) << process->errors();
    EXPECT_EQ(process->errors(), "appliance: the appliance's bus has gone away\n");
    EXPECT_EQ(up_->wait().status, 1);
}

}  // namespace
