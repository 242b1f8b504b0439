#include "AppPort.h"

#include <new>
#include <utility>

#include "BusCalls.h"

namespace HostPlatform {

namespace {

constexpr const char* AccessDenied = "org.freedesktop.DBus.Error.AccessDenied";
constexpr const char* NotSupported = "org.freedesktop.DBus.Error.NotSupported";

// What sd-bus itself answers in place of the bus has this sender.
constexpr const char* LocalSender = "org.freedesktop.DBus.Local";

// An empty text on the wire stands for a value that is not set.
Text valueOf(std::string text)
{
    return text.empty() ? Text() : Text(std::move(text));
}

struct ErrorCode {
    const char* name;
    int code;
};

constexpr ErrorCode ErrorCodes[] = {
    {"org.freedesktop.DBus.Error.ServiceUnknown", APP_CONTROL_ERROR_APP_NOT_FOUND},
    {"org.freedesktop.DBus.Error.NameHasNoOwner", APP_CONTROL_ERROR_APP_NOT_FOUND},
    {"org.freedesktop.DBus.Error.Spawn.ServiceNotFound", APP_CONTROL_ERROR_APP_NOT_FOUND},
    {BusCalls::InvalidArgs, APP_CONTROL_ERROR_INVALID_PARAMETER},
    {AccessDenied, APP_CONTROL_ERROR_PERMISSION_DENIED},
    {"org.freedesktop.DBus.Error.NoReply", APP_CONTROL_ERROR_TIMED_OUT},
    {"org.freedesktop.DBus.Error.Timeout", APP_CONTROL_ERROR_TIMED_OUT},
    {"org.freedesktop.DBus.Error.TimedOut", APP_CONTROL_ERROR_TIMED_OUT},
};

int codeOf(const std::string& errorName)
{
    for (const ErrorCode& error : ErrorCodes) {
        if (errorName == error.name)
            return error.code;
    }
    return APP_CONTROL_ERROR_LAUNCH_FAILED;
}

AppPort::Handle readRequest(sdbus::MethodCall& call)
{
    Origin origin{{}, call.getSender(), 0};
    std::string operation;
    std::string uri;
    call >> origin.caller >> origin.requestId >> operation >> uri;
    auto request = std::make_shared<app_control_s>();
    request->operation = operation.empty() ? APP_CONTROL_OPERATION_DEFAULT : std::move(operation);
    request->uri = valueOf(std::move(uri));
    request->appId = valueOf(origin.caller);
    request->origin = std::move(origin);
    request->extraData = Wire::readExtraData(call);
    return request;
}

}  // namespace

AppPort::AppPort(sdbus::IConnection& connection, MainLoop& mainLoop)
    : connection_(connection), mainLoop_(mainLoop), object_(sdbus::createObject(connection, Wire::Path))
{
    object_->registerMethod(Wire::Interface, "Launch", "sussa{sv}",
                            {"caller", "request_id", "operation", "uri", "extras"}, "", {},
                            [this](sdbus::MethodCall call) { onLaunch(std::move(call)); });
    object_->registerMethod(Wire::Interface, "Reply", "uia{sv}", {"request_id", "result", "extras"}, "", {},
                            [this](sdbus::MethodCall call) { onReply(std::move(call)); });
    object_->finishRegistration();
}

int AppPort::takeName(const std::string& appId, RequestHandler handler)
{
    try {
        connection_.requestName(appId);
    } catch (const sdbus::Error& error) {
        const bool taken = error.getName() == "org.freedesktop.DBus.Error.FileExists";
        return taken ? TIZEN_ERROR_RESOURCE_BUSY : TIZEN_ERROR_IO_ERROR;
    }
    handler_ = std::move(handler);
    return TIZEN_ERROR_NONE;
}

void AppPort::launch(const Handle& request, const std::string& caller, const ReplyTarget& target,
                     const Answer::Giver& answer)
{
    std::uint32_t id = 0;
    try {
        id = target.callback ? expectReply(request, target) : 0;
        call(*request, caller, id, answer);
    } catch (const sdbus::Error&) {
        // What was checked before can only fail with its connection.
        pending_.erase(id);
        answer->give(APP_CONTROL_ERROR_IO_ERROR);
    } catch (const std::bad_alloc&) {
        pending_.erase(id);
        answer->give(APP_CONTROL_ERROR_OUT_OF_MEMORY);
    }
}

int AppPort::reply(const Origin& origin, int result, const ExtraData& extraData)
{
    try {
        auto proxy = sdbus::createProxy(connection_, origin.connection, Wire::Path);
        auto message = proxy->createMethodCall(Wire::Interface, "Reply");
        message << origin.requestId << static_cast<std::int32_t>(result);
        Wire::writeExtraData(message, extraData);
        message.dontExpectReply();
        proxy->callMethod(message);
    } catch (const sdbus::Error&) {
        return APP_CONTROL_ERROR_IO_ERROR;
    } catch (const std::bad_alloc&) {
        return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    }
    return APP_CONTROL_ERROR_NONE;
}

void AppPort::tidy()
{
    calls_.remove_if([](const Call& call) { return call.finished; });
    if (pending_.empty())
        leaverWatch_.reset();
}

void AppPort::failAll()
{
    for (auto& [id, pending] : pending_) {
        if (!pending.receiver.empty())
            finish(pending, std::make_shared<app_control_s>(), APP_CONTROL_RESULT_FAILED);
    }
    pending_.clear();
}

// The sender gets its answer before the request can be seen: a reply never overtakes it.
void AppPort::onLaunch(sdbus::MethodCall call)
{
    if (!handler_)
        throw sdbus::Error(NotSupported, "no app runs here");
    if (mainLoop_.waiting() >= BusCalls::MaxWaiting)
        throw sdbus::Error(BusCalls::LimitsExceeded, "too many requests wait for this app");
    const Handle request = BusCalls::readArguments([&] { return readRequest(call); });
    BusCalls::acknowledge(call);
    mainLoop_.post([handler = handler_, request] { handler(request.get()); });
}

void AppPort::onReply(sdbus::MethodCall call)
{
    std::uint32_t id = 0;
    std::int32_t result = 0;
    call >> id >> result;
    const auto pending = pending_.find(id);
    if (pending == pending_.end() || pending->second.receiver != call.getSender())
        throw sdbus::Error(AccessDenied, "no request that waits for a reply of this connection");
    if (!isFinalResult(result))
        throw sdbus::Error(BusCalls::InvalidArgs, "result must be 0, -1 or -2");
    auto reply = std::make_shared<app_control_s>();
    reply->extraData = BusCalls::readArguments([&] { return Wire::readExtraData(call); });
    BusCalls::acknowledge(call);
    finish(pending->second, reply, static_cast<app_control_result_e>(result));
    pending_.erase(pending);
}

void AppPort::onNameGone(const std::string& name)
{
    for (auto it = pending_.begin(); it != pending_.end();) {
        if (it->second.receiver != name) {
            ++it;
            continue;
        }
        finish(it->second, std::make_shared<app_control_s>(), APP_CONTROL_RESULT_FAILED);
        it = pending_.erase(it);
    }
}

void AppPort::onLaunched(std::uint32_t id, const Answer::Giver& answer, const sdbus::MethodReply& reply,
                         const sdbus::Error* error, Clock::time_point deadline)
{
    const auto pending = pending_.find(id);
    if (!error) {
        if (pending != pending_.end())
            pending->second.receiver = reply.getSender();
        answer->give(APP_CONTROL_ERROR_NONE);
        return;
    }
    if (pending != pending_.end())
        pending_.erase(pending);
    // A connection that ends answers its calls with the error of a time-out, only too early: in its own name,
    // or in the bus's with words that the bus does not use.
    const bool isLocal = reply.getSender() == LocalSender && Clock::now() < deadline;
    const bool cutOff = isLocal || error->getMessage() == "Connection terminated";
    answer->give(cutOff ? APP_CONTROL_ERROR_IO_ERROR : codeOf(error->getName()));
}

// The watch is there before the request is on its way, so that no receiver leaves unseen.
std::uint32_t AppPort::expectReply(const Handle& request, const ReplyTarget& target)
{
    if (!leaverWatch_) {
        leaverWatch_ = connection_.addMatch(
            "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
            "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg2=''",
            [this](sdbus::Message& message) {
                std::string name;
                message >> name;
                onNameGone(name);
            });
    }
    do {
        ++lastId_;
    } while (lastId_ == 0 || pending_.count(lastId_) > 0);
    pending_[lastId_] = {request, target, {}};
    return lastId_;
}

void AppPort::call(const app_control_s& request, const std::string& caller, std::uint32_t id,
                   const Answer::Giver& answer)
{
    auto proxy = sdbus::createProxy(connection_, *request.appId, Wire::Path);
    auto message = proxy->createMethodCall(Wire::Interface, "Launch");
    message << caller << id << request.operation.value_or("") << request.uri.value_or("");
    Wire::writeExtraData(message, request.extraData);
    const auto entry = calls_.insert(calls_.end(), {std::move(proxy), true});
    const auto deadline = Clock::now() + Wire::LaunchLimit;
    entry->proxy->callMethod(
        message,
        [this, entry, id, answer, deadline](sdbus::MethodReply& reply, const sdbus::Error* error) {
            entry->finished = true;
            onLaunched(id, answer, reply, error, deadline);
        },
        Wire::LaunchLimit);
    entry->finished = false;
}

void AppPort::finish(Pending& pending, const Handle& reply, app_control_result_e result)
{
    mainLoop_.post([request = std::move(pending.request), reply, result, target = pending.target] {
        target.callback(request.get(), reply.get(), result, target.userData);
    });
}

}  // namespace HostPlatform
