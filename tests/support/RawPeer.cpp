#include "RawPeer.h"

#include "Patience.h"

namespace TestSupport {

namespace {

// The bus library makes what its variants share with the first of them, in a way that ThreadSanitizer cannot
// see into. So the first one of a process is made before there is a second thread.
const sdbus::Variant firstVariant{0};

const char* const Path = "/org/tizen/AppControl";
const char* const Interface = "org.tizen.AppControl1";

template <typename... Arguments>
std::string call(sdbus::IConnection& connection, const std::string& to, const char* method,
                 const Arguments&... arguments)
{
    try {
        auto proxy = sdbus::createProxy(connection, to, Path);
        proxy->callMethod(method).onInterface(Interface).withArguments(arguments...);
        return "";
    } catch (const sdbus::Error& error) {
        return error.getName();
    }
}

}  // namespace

RawPeer::RawPeer(const std::string& name, LaunchHook hook)
    : hook_(std::move(hook)), connection_(sdbus::createSessionBusConnection())
{
    exportObject();
    if (!name.empty())
        connection_->requestName(name);
    connection_->enterEventLoopAsync();
}

RawPeer::~RawPeer()
{
    connection_->leaveEventLoop();
}

std::string RawPeer::launch(const std::string& app, const std::string& operation, std::uint32_t id,
                            const Extras& extras, const std::string& caller, const std::string& uri)
{
    return call(*connection_, app, "Launch", caller, id, operation, uri, extras);
}

std::string RawPeer::reply(const std::string& connection, std::uint32_t id, std::int32_t result,
                           const Extras& extras)
{
    return call(*connection_, connection, "Reply", id, result, extras);
}

void RawPeer::launchInABurst(const std::string& app, const std::string& operation, const Extras& extras)
{
    std::unique_ptr<sdbus::IProxy>& target = burstTargets_[app];
    if (!target)
        target = sdbus::createProxy(*connection_, app, Path);
    {
        const std::lock_guard lock(mutex_);
        ++unanswered_;
    }
    // Kept until the event loop has ended: here it would be released while the library releases it there, of
    // which ThreadSanitizer sees one side only.
    burstCalls_.push_back(
        target->callMethodAsync("Launch")
            .onInterface(Interface)
            .withTimeout(Patience)
            .withArguments("org.example.raw", std::uint32_t{0}, operation, std::string(), extras)
            .uponReplyInvoke([this](const sdbus::Error* error) { answered(error); }));
}

std::optional<std::vector<std::string>> RawPeer::answersToTheBurst()
{
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, Patience, [this] { return unanswered_ == 0; }))
        return {};
    return std::exchange(burstErrors_, {});
}

void RawPeer::answered(const sdbus::Error* error)
{
    const std::lock_guard lock(mutex_);
    if (error)
        burstErrors_.push_back(error->getName());
    --unanswered_;
    changed_.notify_all();
}

std::optional<RawMessage> RawPeer::nextLaunch()
{
    return next(launches_);
}

std::optional<RawMessage> RawPeer::nextReply()
{
    return next(replies_);
}

void RawPeer::exportObject()
{
    object_ = sdbus::createObject(*connection_, Path);
    object_->registerMethod(Interface, "Launch", "sussa{sv}", "", [this](sdbus::MethodCall message) {
        RawMessage launch;
        launch.sender = message.getSender();
        message >> launch.caller >> launch.id >> launch.operation >> launch.uri >> launch.extras;
        if (hook_)
            hook_(launch);
        message.createReply().send();
        arrived(launches_, std::move(launch));
    });
    object_->registerMethod(Interface, "Reply", "uia{sv}", "", [this](sdbus::MethodCall message) {
        RawMessage reply;
        reply.sender = message.getSender();
        message >> reply.id >> reply.result >> reply.extras;
        if (!message.doesntExpectReply())
            message.createReply().send();
        arrived(replies_, std::move(reply));
    });
    object_->finishRegistration();
}

void RawPeer::arrived(Queue& queue, RawMessage message)
{
    const std::lock_guard lock(mutex_);
    queue.push_back(std::move(message));
    changed_.notify_all();
}

std::optional<RawMessage> RawPeer::next(Queue& queue)
{
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, Patience, [&] { return !queue.empty(); }))
        return {};
    RawMessage message = std::move(queue.front());
    queue.pop_front();
    return message;
}

}  // namespace TestSupport
