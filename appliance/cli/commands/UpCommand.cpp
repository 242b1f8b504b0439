#include <memory>

#include "Commands.h"
#include "Stay.h"

namespace Tool {

void addUpCommand(CLI::App& app, Action& chosen)
{
    const auto arguments = std::make_shared<StayArguments>();
    CLI::App* command = app.add_subcommand("up", "Start everything and keep it running until Ctrl-C");
    addStayArguments(*command, *arguments);
    command->footer(
        "Examples:\n"
        "  appliance up\n"
        "  appliance up --confirm late --confirm-after 5000     pictures are held back for five seconds\n");
    command->callback([arguments, &chosen] { chosen = [arguments] { return stay(*arguments); }; });
}

}  // namespace Tool
