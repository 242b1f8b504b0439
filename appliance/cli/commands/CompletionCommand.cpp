#include <cstdio>
#include <memory>

#include "Commands.h"
#include "Completion.h"

namespace Tool {

void addCompletionCommand(CLI::App& app, Action& chosen)
{
    const auto shell = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand("completion", "Print a completion script for a shell");
    command->add_option("SHELL", *shell, "The shell")->required()->check(CLI::IsMember({"bash", "zsh"}));
    command->footer("Examples:\n  source <(appliance completion bash)\n");
    command->callback([&app, shell, &chosen] {
        chosen = [&app, shell] {
            std::fputs(completionScript(app, *shell).c_str(), stdout);
            return Exit::Ok;
        };
    });
}

}  // namespace Tool
