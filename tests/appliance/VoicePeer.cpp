#include "VoicePeer.h"

#include "Patience.h"

namespace TestSupport {

namespace {

const char* const Path = "/org/tizen/VoiceControl";
const char* const Interface = "org.tizen.VoiceControl1";
const char* const ServiceName = "org.tizen.carvoy-service";

}  // namespace

VoicePeer::VoicePeer(int state, std::vector<std::string> commands, Manner manner)
    : state_(state),
      commands_(std::move(commands)),
      manner_(manner),
      connection_(sdbus::createSessionBusConnection())
{
    exportObject();
    connection_->requestName(ServiceName);
    connection_->enterEventLoopAsync();
}

VoicePeer::VoicePeer(Lack lack) : connection_(sdbus::createSessionBusConnection(ServiceName))
{
    if (lack == Lack::Object)
        connection_->enterEventLoopAsync();
}

VoicePeer::~VoicePeer()
{
    connection_->leaveEventLoop();
}

void VoicePeer::become(int state, std::vector<std::string> commands)
{
    {
        const std::lock_guard lock(mutex_);
        state_ = state;
        commands_ = std::move(commands);
    }
    object_->emitPropertiesChangedSignal(Interface, {"State", "Commands"});
}

bool VoicePeer::waitForLook()
{
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, Patience, [this] { return looked_; });
}

std::optional<VoiceCall> VoicePeer::next()
{
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, Patience, [this] { return !calls_.empty(); }))
        return {};
    VoiceCall call = std::move(calls_.front());
    calls_.pop_front();
    return call;
}

void VoicePeer::exportObject()
{
    object_ = sdbus::createObject(*connection_, Path);
    object_->registerProperty("State").onInterface(Interface).withGetter([this]() -> std::int32_t {
        const std::lock_guard lock(mutex_);
        looked_ = true;
        changed_.notify_all();
        return state_;
    });
    object_->registerProperty("Commands").onInterface(Interface).withGetter([this] {
        const std::lock_guard lock(mutex_);
        return commands_;
    });
    object_->registerMethod("ServiceState").onInterface(Interface).implementedAs([this](std::int32_t state) {
        arrived({"ServiceState", state, {}, {}});
    });
    object_->registerMethod(Interface, "Result", "iasas", "", [this](sdbus::MethodCall message) {
        std::int32_t event = 0;
        VoiceCall call;
        message >> event >> call.text >> call.nlu;
        call.method = "Result";
        call.number = event;
        arrived(std::move(call));
        if (manner_ == Manner::Refusing)
            throw sdbus::Error("org.freedesktop.DBus.Error.InvalidArgs", "no such event");
        if (manner_ == Manner::Polite)
            message.createReply().send();
    });
    object_->finishRegistration();
}

void VoicePeer::arrived(VoiceCall call)
{
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
    changed_.notify_all();
}

}  // namespace TestSupport
