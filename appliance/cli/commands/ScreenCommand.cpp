#include <memory>

#include "Commands.h"
#include "Stay.h"

namespace Tool {

void addScreenCommand(CLI::App& app, Action& chosen)
{
    const auto arguments = std::make_shared<StayArguments>();
    arguments->screenPort = 0;
    CLI::App* command =
        app.add_subcommand("screen", "The same, with the appliance's screen as a page for a browser");
    addStayArguments(*command, *arguments);
    command
        ->add_option("--port", *arguments->screenPort,
                     "Port of the page on 127.0.0.1; 0 takes any that is free")
        ->check(CLI::Range(0, 65535).description(""))
        ->capture_default_str();
    command->footer(
        "Examples:\n"
        "  appliance screen\n"
        "  appliance screen --port 8080 --confirm late\n");
    command->callback([arguments, &chosen] { chosen = [arguments] { return stay(*arguments); }; });
}

}  // namespace Tool
