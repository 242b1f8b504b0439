#include "VoiceTurn.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>

#include "Asking.h"
#include "BusNames.h"
#include "ConversationJson.h"
#include "Exit.h"
#include "FolderWatch.h"
#include "Grammar.h"
#include "JsonFile.h"
#include "LockWait.h"
#include "Names.h"
#include "ShopJson.h"

namespace Tool {

namespace {

using namespace Appliance;
using namespace std::chrono_literals;

// The assistant itself gives up earlier, and says why.
constexpr auto DeliveryLimit = 40s;
constexpr auto GoneLimit = 2s;  // for the bus to tell that an app has gone

const std::map<std::string, std::vector<AwaitedMessage>>& messagesByAction()
{
    static const std::map<std::string, std::vector<AwaitedMessage>> messages = {
        {Assistant::AddToCart, {{PartnerAppId, OperationAddToCart}}},
        {Assistant::CheckOut, {{PartnerAppId, OperationCheckOut}}},
        {Assistant::ShowCart, {{PartnerAppId, OperationShowCart}}},
        {Assistant::SearchedItem,
         {{PartnerAppId, OperationShowProduct}, {AssistantAppId, OperationCloseApp}}},
    };
    return messages;
}

// Without the blanks around it, as the service compares it; empty where there is none.
std::string actionIn(const std::string& nlu)
{
    const nlohmann::json json = nlohmann::json::parse(nlu, nullptr, false);
    const bool hasAction = json.is_object() && json.contains("actionName") && json["actionName"].is_string();
    const std::string action = hasAction ? json["actionName"].get<std::string>() : "";
    const char blanks[] = " \t\r\n\v";
    const std::size_t start = action.find_first_not_of(blanks);
    return start == std::string::npos ? ""
                                      : action.substr(start, action.find_last_not_of(blanks) - start + 1);
}

ReceivedMessages since(int number, const ReceivedMessages& all)
{
    ReceivedMessages fresh;
    std::copy_if(all.begin(), all.end(), std::back_inserter(fresh), [number](const Received& message) {
        return message.number > number && message.from == ServiceAppId;
    });
    return fresh;
}

bool isEachTaken(const ReceivedMessages& messages)
{
    return std::all_of(messages.begin(), messages.end(),
                       [](const Received& message) { return message.isTaken(); });
}

// Throws Failure where this does not come true.
void await(EventLoop& loop, const std::function<bool()>& done, std::chrono::milliseconds limit,
           const std::string& failure)
{
    switch (loop.runUntil(done, limit)) {
        case EventLoop::Outcome::Done:
            return;
        case EventLoop::Outcome::TimedOut:
            throw Failure(Exit::Failed, failure);
        case EventLoop::Outcome::Interrupted:
            throw Failure(Exit::Interrupted, "interrupted");
    }
}

BusNames namesOnBus()
{
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    try {
        return BusNames(address == nullptr ? "" : address);
    } catch (const sdbus::Error& error) {
        throw Failure(Exit::NotRunning, "the appliance's bus cannot be reached: " + error.getMessage());
    }
}

class Turn {
  public:
    Turn(EventLoop& loop, const Root& root, const SayOptions& options);

    VoiceTurn run();

  private:
    void noteBefore();
    void ask();
    void awaitMessages();
    void requireAssistant() const;
    std::string whatIsGone(std::initializer_list<const char*> appIds) const;
    bool isOver() const { return turn_.missing.empty() || turn_.isOvertaken; }
    void look();
    bool readFiles();
    void findMissing();

    EventLoop& loop_;
    const Root& root_;
    const SayOptions& options_;
    const FileLock lock_;  // two sentences at a time could not be told apart by the messages that come
    const BusNames names_;
    int partnerBefore_ = 0;
    int assistantBefore_ = 0;
    bool isDelivered_ = false;
    VoiceTurn turn_;
    FolderWatch screen_;
};

Turn::Turn(EventLoop& loop, const Root& root, const SayOptions& options)
    : loop_(loop),
      root_(root),
      options_(options),
      lock_(waitForLock(loop, root.sayLockFile(), options.limit,
                        Failure(Exit::Failed, "another sentence is under way"))),
      names_(namesOnBus()),
      screen_(root.screenFolder(), [this](const std::string&) { look(); })
{
    turn_.sentence = options.sentence;
    turn_.limit = options.limit;
}

VoiceTurn Turn::run()
{
    noteBefore();
    ask();
    isDelivered_ = turn_.trouble.empty();
    look();
    awaitMessages();
    return turn_;
}

// Without it all that the apps ever received would seem to be this turn's.
void Turn::noteBefore()
{
    await(
        loop_, [this] { return readFiles(); }, options_.limit,
        root_.partnerFile().string() + " or " + root_.assistantFile().string() + " cannot be read");
    partnerBefore_ = lastNumber(turn_.shop.messages);
    assistantBefore_ = lastNumber(turn_.conversation.messages);
}

void Turn::ask()
{
    Extras extras;
    extras.texts[KeyUtterance] = options_.sentence;
    extras.lists[KeyNlu] = options_.nlu;
    const Answer answer = Tool::ask(loop_, {AssistantAppId, OperationSay, "", extras}, DeliveryLimit,
                                    [this] { requireAssistant(); });
    turn_.number = std::atoi(answer.extras.text(KeyTurn).c_str());
    turn_.trouble = answer.extras.text(KeyReason);
    turn_.isUnderstood = answer.extras.text(KeyUnderstood) != NotUnderstood;
    if (answer.result == APP_CONTROL_RESULT_SUCCEEDED) {
        turn_.nlu = answer.extras.list(KeyNlu);
    } else if (turn_.trouble.empty()) {
        // The platform answers like this for an app that has gone, maybe before the bus tells of it.
        const auto isGone = [this] {
            requireAssistant();
            return false;
        };
        await(loop_, isGone, GoneLimit, "the assistant refused the sentence without a reason");
    }
}

void Turn::awaitMessages()
{
    const auto isOverOrHopeless = [this] {
        const std::string gone = isOver() ? "" : whatIsGone({ServiceAppId, PartnerAppId, AssistantAppId});
        if (!gone.empty()) {
            look();  // an app may have written before it went
        }
        if (!gone.empty() && !isOver()) {
            throw Failure(Exit::NotRunning, gone);
        }
        return isOver();
    };
    if (loop_.runUntil(isOverOrHopeless, options_.limit) == EventLoop::Outcome::Interrupted) {
        throw Failure(Exit::Interrupted, "interrupted");
    }
}

void Turn::requireAssistant() const
{
    const std::string gone = whatIsGone({AssistantAppId});
    if (!gone.empty()) {
        throw Failure(Exit::NotRunning, gone);
    }
}

// In words; empty where all are there.
std::string Turn::whatIsGone(std::initializer_list<const char*> appIds) const
{
    if (!names_.isConnected()) {
        return "the appliance's bus has gone away";
    }
    for (const char* appId : appIds) {
        if (!names_.isOwned(appId)) {
            return std::string(appId) + " is not running any more";
        }
    }
    return "";
}

// What comes before the assistant's reply is looked at after it.
void Turn::look()
{
    readFiles();
    if (!isDelivered_) {
        return;
    }
    turn_.isOvertaken = turn_.conversation.turn > turn_.number;
    turn_.toPartner = since(partnerBefore_, turn_.shop.messages);
    turn_.toAssistant = since(assistantBefore_, turn_.conversation.messages);
    findMissing();
}

// Whether both could be read; else they stay as they were.
bool Turn::readFiles()
{
    const auto shop = readJsonFile(root_.partnerFile(), Partner::shopFromJson);
    const auto conversation = readJsonFile(root_.assistantFile(), Assistant::conversationFromJson);
    turn_.shop = shop.value_or(turn_.shop);
    turn_.conversation = conversation.value_or(turn_.conversation);
    return shop && conversation;
}

// Each message stands for one that is awaited.
void Turn::findMissing()
{
    std::multiset<std::pair<std::string, std::string>> came;  // apps and operations
    for (const Received& message : turn_.toPartner) {
        came.emplace(PartnerAppId, message.operation);
    }
    for (const Received& message : turn_.toAssistant) {
        came.emplace(AssistantAppId, message.operation);
    }
    turn_.missing.clear();
    for (const AwaitedMessage& awaited : messagesFor(turn_.nlu)) {
        const auto found = came.find({awaited.appId, awaited.operation});
        found == came.end() ? turn_.missing.push_back(awaited) : (void)came.erase(found);
    }
}

}  // namespace

bool VoiceTurn::isFine() const
{
    return trouble.empty() && missing.empty() && isEachTaken(toPartner) && isEachTaken(toAssistant);
}

std::vector<AwaitedMessage> messagesFor(const std::vector<std::string>& nlu)
{
    std::vector<AwaitedMessage> all;
    for (const std::string& answer : nlu) {
        const auto found = messagesByAction().find(actionIn(answer));
        if (found != messagesByAction().end()) {
            all.insert(all.end(), found->second.begin(), found->second.end());
        }
    }
    return all;
}

VoiceTurn say(EventLoop& loop, const Root& root, const SayOptions& options)
{
    return Turn(loop, root, options).run();
}

}  // namespace Tool
