#include <unistd.h>

#include <cstdio>
#include <memory>

#include "Commands.h"
#include "IndentedJson.h"
#include "Session.h"
#include "StatusView.h"
#include "VoiceStatus.h"

namespace Tool {

namespace {

Exit status(const std::string& rootOption, bool json)
{
    const Session session = enterSession(rootOption);
    const auto record = Appliance::readStatusRecord(session.root.dataStore());
    const auto flag = Appliance::readSearchFlag();
    const auto voice = readVoice();
    nlohmann::json all = statusJson(record, flag);
    all["voice"] = voiceJson(voice);
    all["voiceTrouble"] = voice.trouble;
    const std::string text = json
                                 ? Appliance::indentedJson(all) + "\n"
                                 : statusText(record, flag, styleOf(STDOUT_FILENO)) + "\n" + voiceText(voice);
    std::fputs(text.c_str(), stdout);
    return Exit::Ok;
}

}  // namespace

void addStatusCommand(CLI::App& app, Action& chosen)
{
    const auto root = std::make_shared<std::string>();
    const auto json = std::make_shared<bool>(false);
    CLI::App* command =
        app.add_subcommand("status", "Show the status record, the search flag and voice control");
    addRootOption(*command, *root);
    command->add_flag("--json", *json, "As JSON; null where nothing was written yet");
    command->footer("Examples:\n  appliance status\n  appliance status --json\n");
    command->callback([root, json, &chosen] { chosen = [root, json] { return status(*root, *json); }; });
}

}  // namespace Tool
