#include <cstdio>
#include <memory>

#include "Commands.h"
#include "Session.h"

namespace Tool {

namespace {

Exit env(const std::string& rootOption)
{
    for (const auto& [name, value] : enterSession(rootOption).environment) {
        std::printf("export %s=%s\n", name.c_str(), shellWord(value).c_str());
    }
    return Exit::Ok;
}

}  // namespace

void addEnvCommand(CLI::App& app, Action& chosen)
{
    const auto root = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand("env", "Print the environment that makes a shell part of it");
    addRootOption(*command, *root);
    command->footer(
        "Examples:\n"
        "  eval \"$(appliance env)\"\n"
        "  busctl --address=\"$DBUS_SESSION_BUS_ADDRESS\" list\n");
    command->callback([root, &chosen] { chosen = [root] { return env(*root); }; });
}

}  // namespace Tool
