#include "StatusRecord.h"

#include <unistd.h>

#include <cstdio>
#include <memory>

#include "Commands.h"
#include "IndentedJson.h"
#include "Session.h"

namespace Tool {

namespace {

Exit status(const std::string& rootOption, bool json)
{
    const Session session = enterSession(rootOption);
    const auto record = readStatusRecord(session.root.dataStore());
    const auto flag = readSearchFlag();
    const std::string text = json ? indentedJson(statusJson(record, flag)) + "\n"
                                  : statusText(record, flag, styleOf(STDOUT_FILENO));
    std::fputs(text.c_str(), stdout);
    return Exit::Ok;
}

}  // namespace

void addStatusCommand(CLI::App& app, Action& chosen)
{
    const auto root = std::make_shared<std::string>();
    const auto json = std::make_shared<bool>(false);
    CLI::App* command = app.add_subcommand("status", "Show the status record and the search flag");
    addRootOption(*command, *root);
    command->add_flag("--json", *json, "As JSON; null where nothing was written yet");
    command->footer("Examples:\n  appliance status\n  appliance status --json\n");
    command->callback([root, json, &chosen] { chosen = [root, json] { return status(*root, *json); }; });
}

}  // namespace Tool
