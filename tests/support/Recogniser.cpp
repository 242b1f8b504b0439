#include "Recogniser.h"

#include <map>
#include <utility>

#include "Patience.h"

namespace TestSupport {

namespace {

const char* const Path = "/org/tizen/VoiceControl";
const char* const Properties = "org.freedesktop.DBus.Properties";

using Values = std::map<std::string, sdbus::Variant>;

std::string namesIn(const Values& values)
{
    std::string names;
    for (const auto& [name, value] : values)
        names += (names.empty() ? "" : " ") + name;
    return names;
}

}  // namespace

Recogniser::Recogniser(std::string client)
    : client_(std::move(client)),
      connection_(sdbus::createSessionBusConnection()),
      proxy_(sdbus::createProxy(*connection_, client_, Path))
{
    watch();
    connection_->enterEventLoopAsync();
}

Recogniser::~Recogniser()
{
    connection_->leaveEventLoop();
}

std::string Recogniser::result(std::int32_t event, const Texts& text, const Texts& nlu)
{
    return call("Result", event, text, nlu);
}

std::string Recogniser::clientState(std::int32_t state)
{
    return call("ClientState", state);
}

std::string Recogniser::serviceState(std::int32_t state)
{
    return call("ServiceState", state);
}

std::string Recogniser::error(std::int32_t reason)
{
    return call("Error", reason);
}

std::string Recogniser::language(const std::string& language)
{
    return call("Language", language);
}

void Recogniser::tell(const char* method, std::int32_t argument)
{
    proxy_->callMethod(method).onInterface(Interface).withArguments(argument).dontExpectReply();
}

std::int32_t Recogniser::state()
{
    return proxy_->getProperty("State").onInterface(Interface).get<std::int32_t>();
}

std::string Recogniser::invocationName()
{
    return proxy_->getProperty("InvocationName").onInterface(Interface).get<std::string>();
}

Texts Recogniser::commands()
{
    return proxy_->getProperty("Commands").onInterface(Interface).get<Texts>();
}

bool Recogniser::isOnBus()
{
    try {
        state();
        return true;
    } catch (const sdbus::Error&) {
        return false;
    }
}

Texts Recogniser::waitForChanges(std::size_t count)
{
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, Patience, [&] { return changes_.size() >= count; });
    return changes_;
}

void Recogniser::watch()
{
    proxy_->uponSignal("PropertiesChanged")
        .onInterface(Properties)
        .call([this](const std::string& interface, const Values& values, const Texts&) {
            if (interface != Interface)
                return;
            const std::lock_guard lock(mutex_);
            changes_.push_back(namesIn(values));
            changed_.notify_all();
        });
    proxy_->finishRegistration();
}

}  // namespace TestSupport
