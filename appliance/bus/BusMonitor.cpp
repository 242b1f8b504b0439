#include "BusMonitor.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "BusDecoding.h"
#include "BusQuestion.h"
#include "BusStart.h"
#include "FdWatch.h"
#include "VoiceOnBus.h"

namespace Appliance {

namespace {

constexpr char MonitoringInterface[] = "org.freedesktop.DBus.Monitoring";
constexpr char AppControlInterface[] = "org.tizen.AppControl1";
constexpr char OwnerRule[] =
    "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',member='NameOwnerChanged'";
constexpr char ReturnRule[] = "type='method_return'";
constexpr char ErrorRule[] = "type='error'";

// Of the messages that wait, before something else has its turn on the main loop.
constexpr int MessagesAtATime = 100;

std::string callRule(const char* interface)
{
    return std::string("type='method_call',interface='") + interface + "'";
}

std::int64_t millisecondsNow()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

}  // namespace

BusMonitor::BusMonitor(const std::string& address, MessageHandler onMessage, AppsHandler onApp,
                       std::function<void()> onLost)
    : onMessage_(std::move(onMessage)),
      onApp_(std::move(onApp)),
      onLost_(std::move(onLost)),
      bus_(startBus(address, BusRole::Monitor)),
      owners_(address)
{
    listenToOwners();
    owners_.learn(bus_.get());
    watchAll();
    for (const std::string& app : owners_.apps()) {
        guarded([&] { onApp_(app, true); });
    }
    poll_.emplace(
        sd_bus_get_fd(bus_.get()), [this] { return wish(); }, [this] { work(); });
}

BusMonitor::~BusMonitor() = default;

// The changes are asked for before the names, and wait in the connection until the main loop runs: whatever
// changes meanwhile is told once more, and nothing is missed.
void BusMonitor::listenToOwners()
{
    BusError error;
    askBus(bus_.get(), error, BusName, "AddMatch", "s", OwnerRule);
    if (error.isSet()) {
        throw std::runtime_error("the bus does not tell who is on it");
    }
}

void BusMonitor::watchAll()
{
    BusError error;
    askBus(bus_.get(), error, MonitoringInterface, "BecomeMonitor", "asu", 5,
           callRule(AppControlInterface).c_str(), callRule(VoiceInterface).c_str(), OwnerRule, ReturnRule,
           ErrorRule, 0);
    if (error.isSet()) {
        throw std::runtime_error("the bus does not let anybody watch: " + error.text());
    }
}

BusPoll::Wish BusMonitor::wish() const
{
    using namespace std::chrono;
    BusPoll::Wish wish;
    wish.events = static_cast<short>(std::max(0, sd_bus_get_events(bus_.get())));
    std::uint64_t until = UINT64_MAX;
    if (sd_bus_get_timeout(bus_.get(), &until) >= 0 && until != UINT64_MAX) {
        const auto now = duration_cast<microseconds>(steady_clock::now().time_since_epoch());
        wish.limit = std::max(microseconds(0), microseconds(static_cast<std::int64_t>(until)) - now);
    }
    return wish;
}

void BusMonitor::work()
{
    int worked = 1;
    for (int i = 0; worked > 0 && i < MessagesAtATime; ++i) {
        worked = workOnce();
    }
    worked < 0 ? lose() : poll_->update();
}

// What sd_bus_process() says. A message that it hands out is one that it does not answer itself.
int BusMonitor::workOnce()
{
    sd_bus_message* raw = nullptr;
    const int code = sd_bus_process(bus_.get(), &raw);
    const BusMessageHandle message(raw);
    if (message) {
        guarded([&] { take(message.get()); });
    }
    return code;
}

void BusMonitor::lose()
{
    poll_->stop();
    guarded(onLost_);
}

void BusMonitor::take(sd_bus_message* message)
{
    std::uint8_t type = 0;
    sd_bus_message_get_type(message, &type);
    switch (type) {
        case SD_BUS_MESSAGE_METHOD_CALL:
            takeCall(message);
            break;
        case SD_BUS_MESSAGE_METHOD_RETURN:
            takeReturn(message);
            break;
        case SD_BUS_MESSAGE_METHOD_ERROR:
            takeError(message);
            break;
        default:
            takeSignal(message);
    }
}

void BusMonitor::takeCall(sd_bus_message* call)
{
    if (sd_bus_message_is_method_call(call, AppControlInterface, "Launch") > 0) {
        takeLaunch(call);
    } else if (sd_bus_message_is_method_call(call, AppControlInterface, "Reply") > 0) {
        takeReply(call);
    } else if (sd_bus_message_is_method_call(call, VoiceInterface, nullptr) > 0) {
        takeVoice(call);
    }
}

void BusMonitor::takeLaunch(sd_bus_message* call)
{
    BusMessage message = begin(BusMessage::Kind::Launch, call);
    LaunchArguments launch = launchArguments(call).value_or(LaunchArguments());
    message.from = owners_.appOf(senderOf(call), launch.claimed);
    message.operation = std::move(launch.operation);
    message.uri = std::move(launch.uri);
    message.extras = std::move(launch.extras);
    if (launch.requestId) {
        launches_.put({senderOf(call), *launch.requestId}, {message.number, message.operation, message.from,
                                                            owners_.connectionOf(destinationOf(call))});
    }
    show(message, call, launch.requestId);
}

void BusMonitor::takeReply(sd_bus_message* call)
{
    BusMessage message = begin(BusMessage::Kind::Reply, call);
    if (auto reply = replyArguments(call)) {
        const Launch* launch = launches_.find({owners_.connectionOf(destinationOf(call)), reply->requestId});
        if (launch != nullptr && launch->receiver == senderOf(call)) {
            message.answers = launch->number;
            message.operation = launch->operation;
            message.to = launch->from;
        }
        message.result = std::move(reply->result);
        message.extras = std::move(reply->extras);
    }
    show(message, call);
}

void BusMonitor::takeVoice(sd_bus_message* call)
{
    BusMessage message = begin(BusMessage::Kind::Voice, call);
    message.operation = memberOf(call);
    message.extras = voiceArguments(call);
    show(message, call);
}

// Whoever says that it has a launch is its receiver: the bus may have started it for that.
void BusMonitor::takeReturn(sd_bus_message* answer)
{
    const CallKey key(destinationOf(answer), answeredCookieOf(answer));
    const Call* call = calls_.find(key);
    if (call == nullptr) {
        return;
    }
    if (Launch* launch = launchOf(key.first, *call)) {
        launch->receiver = senderOf(answer);
    }
    calls_.remove(key);
}

void BusMonitor::takeError(sd_bus_message* answer)
{
    const CallKey key(destinationOf(answer), answeredCookieOf(answer));
    const Call* call = calls_.find(key);
    if (call == nullptr) {
        return;
    }
    BusMessage message = begin(BusMessage::Kind::Refusal, answer);
    message.to = call->from;
    message.operation = call->operation;
    message.error = errorOf(answer);
    message.answers = call->number;
    if (launchOf(key.first, *call) != nullptr) {
        launches_.remove({key.first, *call->requestId});
    }
    calls_.remove(key);
    onMessage_(message);
}

void BusMonitor::takeSignal(sd_bus_message* signal)
{
    const auto change = ownerChangeOf(signal);
    if (!change) {
        return;
    }
    if (!BusOwners::isApp(change->name)) {
        change->now.empty() ? forgetConnection(change->name) : void();
    } else if (const auto isThere = owners_.change(*change)) {
        onApp_(change->name, *isThere);
    }
}

// The launch that this call was, unless another one has its request id by now.
BusMonitor::Launch* BusMonitor::launchOf(const std::string& connection, const Call& call)
{
    Launch* launch = call.requestId ? launches_.find({connection, *call.requestId}) : nullptr;
    return launch != nullptr && launch->number == call.number ? launch : nullptr;
}

BusMessage BusMonitor::begin(BusMessage::Kind kind, sd_bus_message* message)
{
    BusMessage begun;
    begun.number = ++lastNumber_;
    begun.at = millisecondsNow();
    begun.kind = kind;
    begun.from = owners_.appOf(senderOf(message));
    begun.to = owners_.appOf(destinationOf(message));
    return begun;
}

void BusMonitor::show(const BusMessage& message, sd_bus_message* call, std::optional<std::uint32_t> requestId)
{
    calls_.put({senderOf(call), cookieOf(call)},
               {message.number, message.operation, message.from, requestId});
    onMessage_(message);
}

// Nothing is sent to it any more.
void BusMonitor::forgetConnection(const std::string& connection)
{
    owners_.forget(connection);
    const auto isIts = [&connection](const auto& key) { return key.first == connection; };
    calls_.removeRange({connection, 0}, isIts);
    launches_.removeRange({connection, 0}, isIts);
}

}  // namespace Appliance
