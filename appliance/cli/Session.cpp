#include "Session.h"

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

#include "Exit.h"
#include "IndentedJson.h"

namespace Tool {

void Session::write() const
{
    const nlohmann::json json = {{"environment", environment}, {"processes", processes}};
    const std::filesystem::path fresh = root.sessionFile().string() + ".new";
    std::ofstream out(fresh);
    out << indentedJson(json) << '\n';
    out.close();
    if (!out) {
        throw std::runtime_error("cannot write " + fresh.string());
    }
    std::filesystem::rename(fresh, root.sessionFile());
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
    std::ifstream in(root.sessionFile());
    const nlohmann::json json = nlohmann::json::parse(in, nullptr, false);
    try {
        return Session{root, json.at("environment"), json.at("processes")};
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

std::string shellWord(const std::string& text)
{
    std::string word = "'";
    for (const char byte : text) {
        word += byte == '\'' ? "'\\''" : std::string(1, byte);
    }
    return word + "'";
}

}  // namespace Tool
