#include "VoicePort.h"

#include <type_traits>
#include <utility>

#include "BusCalls.h"

namespace HostPlatform {

namespace {

const char* const Path = "/org/tizen/VoiceControl";
const char* const Interface = "org.tizen.VoiceControl1";

// Commands of one result. They are handled in one go, in which the app sees neither signals nor other calls.
constexpr std::size_t MaxCommands = 256;

VoiceResult readResult(sdbus::MethodCall& call)
{
    std::int32_t event = 0;
    std::vector<std::string> text;
    VoiceResult result{};
    call >> event >> text >> result.nlu;
    if (text.size() > 1)
        throw sdbus::Error(BusCalls::InvalidArgs, "text holds one element, or none");
    result.event = event;
    if (!text.empty())
        result.text = std::move(text.front());
    return result;
}

void checkLimits(const VoiceResult& result)
{
    std::size_t size = result.text ? result.text->size() : 0;
    for (const std::string& nlu : result.nlu)
        size += nlu.size();
    if (result.nlu.size() > MaxCommands)
        throw sdbus::Error(BusCalls::LimitsExceeded, "a result has too many commands");
    if (size > BusCalls::MaxTextBytes)
        throw sdbus::Error(BusCalls::LimitsExceeded, "a result has too much text");
}

std::vector<std::string> differences(const VoiceProperties& before, const VoiceProperties& after)
{
    std::vector<std::string> names;
    if (before.state != after.state)
        names.emplace_back("State");
    if (before.invocationName != after.invocationName)
        names.emplace_back("InvocationName");
    if (before.commands != after.commands)
        names.emplace_back("Commands");
    return names;
}

}  // namespace

VoicePort::VoicePort(sdbus::IConnection& connection, MainLoop& mainLoop)
    : connection_(connection), mainLoop_(mainLoop)
{
}

void VoicePort::open(std::weak_ptr<VoiceListener> listener, VoiceProperties properties)
{
    listener_ = std::move(listener);
    properties_ = std::move(properties);
    exportObject();
}

void VoicePort::show(VoiceProperties properties)
{
    const std::vector<std::string> changed = differences(properties_, properties);
    properties_ = std::move(properties);
    if (object_ && !changed.empty())
        object_->emitPropertiesChangedSignal(Interface, changed);
}

void VoicePort::close()
{
    object_.reset();
    listener_.reset();
}

void VoicePort::exportObject()
{
    object_ = sdbus::createObject(connection_, Path);
    addProperties();
    object_->registerMethod(Interface, "Result", "iasas", {"event", "text", "nlu"}, "", {},
                            [this](sdbus::MethodCall call) { onResult(std::move(call)); });
    addMethod("ClientState", "state", &VoiceListener::onClientState);
    addMethod("ServiceState", "state", &VoiceListener::onServiceState);
    addMethod("Error", "reason", &VoiceListener::onError);
    addMethod("Language", "language", &VoiceListener::onLanguage);
    object_->finishRegistration();
}

void VoicePort::addProperties()
{
    object_->registerProperty(Interface, "State", "i",
                              [this](sdbus::PropertyGetReply& reply) { reply << properties_.state; });
    object_->registerProperty(Interface, "InvocationName", "s", [this](sdbus::PropertyGetReply& reply) {
        reply << properties_.invocationName;
    });
    object_->registerProperty(Interface, "Commands", "as",
                              [this](sdbus::PropertyGetReply& reply) { reply << properties_.commands; });
}

template <typename Argument>
void VoicePort::addMethod(const char* name, const char* parameter, void (VoiceListener::*handler)(Argument))
{
    using Value = std::decay_t<Argument>;
    const char* const signature = std::is_same_v<Value, std::string> ? "s" : "i";
    object_->registerMethod(Interface, name, signature, {parameter}, "", {},
                            [this, handler](sdbus::MethodCall call) {
                                Value value{};
                                BusCalls::readArguments([&] { call >> value; });
                                deliver(call, [handler, value = std::move(value)](VoiceListener& listener) {
                                    (listener.*handler)(value);
                                });
                            });
}

void VoicePort::onResult(sdbus::MethodCall call) const
{
    VoiceResult result = BusCalls::readArguments([&] { return readResult(call); });
    checkLimits(result);
    deliver(call, [result = std::move(result)](VoiceListener& listener) { listener.onResult(result); });
}

// Whoever has the answer knows that what it said waits, ahead of everything that comes later.
void VoicePort::deliver(const sdbus::MethodCall& call, Event event) const
{
    if (mainLoop_.waiting() >= BusCalls::MaxWaiting)
        throw sdbus::Error(BusCalls::LimitsExceeded, "too much waits for this client");
    mainLoop_.post([listener = listener_, event = std::move(event)] {
        if (const std::shared_ptr<VoiceListener> present = listener.lock())
            event(*present);
    });
    BusCalls::acknowledge(call);
}

}  // namespace HostPlatform
