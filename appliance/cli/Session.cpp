#include "Session.h"

#include <cstdlib>

#include "Exit.h"
#include "JsonFile.h"

namespace Tool {

void Session::write() const
{
    Appliance::replaceJsonFile(root.sessionFile(), {{"environment", environment}, {"processes", processes}});
}

void Session::enter() const
{
    for (const auto& [name, value] : environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
}

std::optional<Session> findSession(const Root& root)
{
    if (!RootLock::isTaken(root)) {
        return std::nullopt;
    }
    const auto json = Appliance::readJsonFile(root.sessionFile());
    if (!json) {
        return std::nullopt;
    }
    try {
        return Session{root, json->at("environment"), json->at("processes")};
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;  // not a file of ours
    }
}

Session enterSession(const std::string& rootOption)
{
    const Root root = chosenRoot(rootOption);
    std::optional<Session> session = findSession(root);
    if (!session) {
        throw Failure(Exit::NotRunning,
                      "nothing runs in " + root.path.string() + "; start it with: appliance up");
    }
    session->enter();
    return *session;
}

std::optional<Session> enterSessionOrBus(const std::string& rootOption)
{
    std::optional<Session> session = findSession(chosenRoot(rootOption));
    const bool hasBus = std::getenv("DBUS_SESSION_BUS_ADDRESS") != nullptr;
    if (session) {
        session->enter();
    } else if (!rootOption.empty() || !hasBus) {
        session = enterSession(rootOption);
    }
    return session;
}

std::string shellWord(const std::string& text)
{
    std::string word = "'";
    for (const char byte : text) {
        word += byte == '\'' ? "'\\''" : std::string(1, byte);
    }
    return word + "'";
}

}  // namespace Tool
