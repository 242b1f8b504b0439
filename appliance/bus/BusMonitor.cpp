#include "BusMonitor.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "BusReader.h"
#include "BusStart.h"
#include "FdWatch.h"
#include "Received.h"
#include "VoiceOnBus.h"

namespace Appliance {

namespace {

constexpr char BusName[] = "org.freedesktop.DBus";
constexpr char BusPath[] = "/org/freedesktop/DBus";
constexpr char MonitoringInterface[] = "org.freedesktop.DBus.Monitoring";
constexpr char AppControlInterface[] = "org.tizen.AppControl1";
constexpr char OwnerRule[] =
    "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',member='NameOwnerChanged'";
constexpr char ReturnRule[] = "type='method_return'";
constexpr char ErrorRule[] = "type='error'";

// Of the messages that wait, before something else has its turn on the main loop.
constexpr int MessagesAtATime = 100;

struct MessageFreer {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using MessageHandle = std::unique_ptr<sd_bus_message, MessageFreer>;

class Error {
  public:
    Error() = default;
    ~Error() { sd_bus_error_free(&error_); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;

    sd_bus_error* get() { return &error_; }
    bool isSet() const { return sd_bus_error_is_set(&error_) > 0; }
    std::string text() const { return error_.message != nullptr ? error_.message : error_.name; }

  private:
    sd_bus_error error_ = SD_BUS_ERROR_NULL;
};

std::string callRule(const char* interface)
{
    return std::string("type='method_call',interface='") + interface + "'";
}

int required(int code, const std::string& what)
{
    if (code < 0) {
        throw std::system_error(-code, std::generic_category(), what);
    }
    return code;
}

// Nothing where the bus answers with an error.
template <typename... Arguments>
MessageHandle asked(sd_bus* bus, Error& error, const char* member, const char* types, Arguments... arguments)
{
    sd_bus_message* answer = nullptr;
    const int code =
        sd_bus_call_method(bus, BusName, BusPath, BusName, member, error.get(), &answer, types, arguments...);
    if (code < 0 && !error.isSet()) {
        required(code, "the bus does not answer");
    }
    return MessageHandle(answer);
}

std::string textOf(const char* text)
{
    return text == nullptr ? "" : text;
}

std::string senderOf(sd_bus_message* message)
{
    return textOf(sd_bus_message_get_sender(message));
}

std::string destinationOf(sd_bus_message* message)
{
    return textOf(sd_bus_message_get_destination(message));
}

std::uint64_t cookieOf(sd_bus_message* message)
{
    std::uint64_t cookie = 0;
    sd_bus_message_get_cookie(message, &cookie);
    return cookie;
}

std::uint64_t answeredCookieOf(sd_bus_message* message)
{
    std::uint64_t cookie = 0;
    sd_bus_message_get_reply_cookie(message, &cookie);
    return cookie;
}

bool hasSignature(sd_bus_message* message, const char* signature)
{
    return sd_bus_message_has_signature(message, signature) > 0;
}

bool isWellKnown(const std::string& name)
{
    return !name.empty() && name[0] != ':' && name != BusName;
}

std::int64_t millisecondsNow()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string resultName(std::int32_t result)
{
    switch (result) {
        case APP_CONTROL_RESULT_SUCCEEDED:
            return "succeeded";
        case APP_CONTROL_RESULT_FAILED:
            return "failed";
        case APP_CONTROL_RESULT_CANCELED:
            return "canceled";
        default:
            return "";
    }
}

std::string errorText(sd_bus_message* answer)
{
    const sd_bus_error* error = sd_bus_message_get_error(answer);
    if (error == nullptr) {
        return {};
    }
    const std::string text = textOf(error->message);
    return shortened(textOf(error->name) + (text.empty() ? "" : ": " + text));
}

Extras voiceArguments(const std::string& method, sd_bus_message* call)
{
    BusReader reader(call);
    Extras extras;
    if (method == "Result" && hasSignature(call, "iasas")) {
        extras.texts["event"] = reader.signedText();
        extras.lists["text"] = reader.list();
        extras.lists["nlu"] = reader.list();
    } else if ((method == "ClientState" || method == "ServiceState") && hasSignature(call, "i")) {
        extras.texts["state"] = reader.signedText();
    } else if (method == "Error" && hasSignature(call, "i")) {
        extras.texts["reason"] = reader.signedText();
    } else if (method == "Language" && hasSignature(call, "s")) {
        extras.texts["language"] = reader.text();
    }
    return extras;
}

}  // namespace

const char* nameOf(BusMessage::Kind kind)
{
    switch (kind) {
        case BusMessage::Kind::Launch:
            return "launch";
        case BusMessage::Kind::Reply:
            return "reply";
        case BusMessage::Kind::Refusal:
            return "refusal";
        case BusMessage::Kind::Voice:
            break;
    }
    return "voice";
}

BusMonitor::BusMonitor(const std::string& address, MessageHandler onMessage, AppsHandler onApp,
                       std::function<void()> onLost)
    : onMessage_(std::move(onMessage)),
      onApp_(std::move(onApp)),
      onLost_(std::move(onLost)),
      bus_(startBus(address, BusRole::Monitor)),
      processes_(address)
{
    learnNames();
    watchAll();
    for (const auto& owner : owners_) {
        guarded([&] { onApp_(owner.first, true); });
    }
    poll_.emplace(
        sd_bus_get_fd(bus_.get()), [this] { return wish(); }, [this] { work(); });
}

BusMonitor::~BusMonitor() = default;

// The changes are asked for before the names, and wait in the connection until the main loop runs: whatever
// changes meanwhile is told once more, and nothing is missed.
void BusMonitor::learnNames()
{
    Error ruleError;
    Error listError;
    asked(bus_.get(), ruleError, "AddMatch", "s", OwnerRule);
    const MessageHandle list = asked(bus_.get(), listError, "ListNames", "");
    char** raw = nullptr;
    if (!list || ruleError.isSet()) {
        throw std::runtime_error("the bus does not tell who is on it");
    }
    required(sd_bus_message_read_strv(list.get(), &raw), "the bus's names cannot be read");
    std::vector<std::string> names;
    for (char** name = raw; raw != nullptr && *name != nullptr; std::free(*name++)) {
        names.emplace_back(*name);
    }
    std::free(raw);
    for (const std::string& name : names) {
        const char* owner = nullptr;
        Error gone;
        const MessageHandle answer =
            isWellKnown(name) ? asked(bus_.get(), gone, "GetNameOwner", "s", name.c_str()) : nullptr;
        if (answer && sd_bus_message_read_basic(answer.get(), SD_BUS_TYPE_STRING, &owner) > 0) {
            owners_[name] = owner;
            names_[owner].insert(name);
        }
    }
}

void BusMonitor::watchAll()
{
    Error error;
    sd_bus_message* answer = nullptr;
    const int code =
        sd_bus_call_method(bus_.get(), BusName, BusPath, MonitoringInterface, "BecomeMonitor", error.get(),
                           &answer, "asu", 5, callRule(AppControlInterface).c_str(),
                           callRule(VoiceInterface).c_str(), OwnerRule, ReturnRule, ErrorRule, 0);
    sd_bus_message_unref(answer);
    if (error.isSet()) {
        throw std::runtime_error("the bus does not let anybody watch: " + error.text());
    }
    required(code, "the bus does not answer");
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
    const MessageHandle message(raw);
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
    std::optional<std::uint32_t> requestId;
    if (hasSignature(call, "sussa{sv}")) {
        BusReader reader(call);
        message.from = appOf(senderOf(call), reader.text());
        const std::uint32_t id = reader.number();
        requestId = id == 0 ? std::nullopt : std::optional<std::uint32_t>(id);
        message.operation = reader.text();
        message.uri = reader.text();
        message.extras = reader.extras();
    }
    if (requestId) {
        launches_.put({senderOf(call), *requestId},
                      {message.number, message.operation, message.from, connectionOf(destinationOf(call))});
    }
    show(message, call, requestId);
}

void BusMonitor::takeReply(sd_bus_message* call)
{
    BusMessage message = begin(BusMessage::Kind::Reply, call);
    if (hasSignature(call, "uia{sv}")) {
        BusReader reader(call);
        const Launch* launch = launches_.find({connectionOf(destinationOf(call)), reader.number()});
        if (launch != nullptr && launch->receiver == senderOf(call)) {
            message.answers = launch->number;
            message.operation = launch->operation;
            message.to = launch->from;
        }
        message.result = resultName(reader.signedNumber());
        message.extras = reader.extras();
    }
    show(message, call);
}

void BusMonitor::takeVoice(sd_bus_message* call)
{
    BusMessage message = begin(BusMessage::Kind::Voice, call);
    message.operation = textOf(sd_bus_message_get_member(call));
    message.extras = voiceArguments(message.operation, call);
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
    message.error = errorText(answer);
    message.answers = call->number;
    if (launchOf(key.first, *call) != nullptr) {
        launches_.remove({key.first, *call->requestId});
    }
    calls_.remove(key);
    onMessage_(message);
}

void BusMonitor::takeSignal(sd_bus_message* signal)
{
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (sd_bus_message_is_signal(signal, BusName, "NameOwnerChanged") > 0 && senderOf(signal) == BusName &&
        sd_bus_message_read(signal, "sss", &name, &before, &now) > 0) {
        changeOwner(name, before, now);
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
    begun.from = appOf(senderOf(message));
    begun.to = appOf(destinationOf(message));
    return begun;
}

void BusMonitor::show(const BusMessage& message, sd_bus_message* call, std::optional<std::uint32_t> requestId)
{
    calls_.put({senderOf(call), cookieOf(call)},
               {message.number, message.operation, message.from, requestId});
    onMessage_(message);
}

void BusMonitor::changeOwner(const std::string& name, const std::string& before, const std::string& now)
{
    if (!isWellKnown(name)) {
        now.empty() ? forgetConnection(name) : void();
        return;
    }
    const bool wasThere = owners_.count(name) > 0;
    disown(name, before);
    if (!now.empty()) {
        owners_[name] = now;
        names_[now].insert(name);
    }
    if (wasThere == now.empty()) {
        onApp_(name, !now.empty());
    }
}

void BusMonitor::disown(const std::string& name, const std::string& owner)
{
    owners_.erase(name);
    const auto names = names_.find(owner);
    if (names != names_.end()) {
        names->second.erase(name);
        names->second.empty() ? (void)names_.erase(names) : void();
    }
}

// Nothing is sent to it any more.
void BusMonitor::forgetConnection(const std::string& connection)
{
    processes_.forget(connection);
    const auto isIts = [&connection](const auto& key) { return key.first == connection; };
    calls_.removeRange({connection, 0}, isIts);
    launches_.removeRange({connection, 0}, isIts);
}

std::string BusMonitor::appOf(const std::string& name, const std::string& claimed)
{
    const auto names = names_.find(name);
    if (names != names_.end()) {
        return names->second.count(claimed) > 0 ? claimed : *names->second.begin();
    }
    if (!claimed.empty()) {
        return claimed;
    }
    const std::string app = name.rfind(':', 0) == 0 ? appOfProcess(processes_.processOf(name)) : "";
    return app.empty() ? name : app;
}

// Empty where the process is none's, or that of several.
std::string BusMonitor::appOfProcess(std::optional<std::uint32_t> process)
{
    std::string app;
    for (const auto& [name, connection] : owners_) {
        if (process && processes_.processOf(connection) == process) {
            if (!app.empty()) {
                return {};
            }
            app = name;
        }
    }
    return app;
}

std::string BusMonitor::connectionOf(const std::string& name) const
{
    const auto owner = owners_.find(name);
    return owner == owners_.end() ? name : owner->second;
}

}  // namespace Appliance
