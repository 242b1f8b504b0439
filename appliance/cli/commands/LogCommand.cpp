#include <unistd.h>

#include <cstdio>
#include <memory>

#include "Commands.h"
#include "EventLoop.h"
#include "LogFollower.h"
#include "PlainText.h"
#include "Root.h"
#include "Terminal.h"

namespace Tool {

namespace {

using Appliance::printable;

struct LogArguments {
    std::string root;
    bool follow = false;
    std::size_t lines = 50;
};

Exit showLog(const LogArguments& arguments)
{
    const Root root = chosenRoot(arguments.root);
    if (!std::filesystem::exists(root.platformLog())) {
        throw Failure(Exit::NotRunning, "there is no log in " + root.path.string());
    }
    const bool colour = styleOf(STDOUT_FILENO).colour;
    EventLoop loop;
    Appliance::LogFollower follower(
        root.platformLog(), Appliance::startOfLastLines(root.platformLog(), arguments.lines),
        [colour](const std::string& line) {
            const std::string text =
                colour ? Appliance::printableWithColours(line) : printable(Appliance::withoutColours(line));
            std::fputs((text + "\n").c_str(), stdout);
            std::fflush(stdout);
        });
    follower.readOn();
    if (arguments.follow) {
        loop.runUntil([] { return ferror(stdout) != 0; });
    }
    return Exit::Ok;
}

}  // namespace

void addLogCommand(CLI::App& app, Action& chosen)
{
    const auto arguments = std::make_shared<LogArguments>();
    CLI::App* command = app.add_subcommand("log", "Show the platform log");
    addRootOption(*command, arguments->root);
    command->add_flag("-f,--follow", arguments->follow, "Go on with what is written, until Ctrl-C");
    command->add_option("-n,--lines", arguments->lines, "How many of the last lines to begin with")
        ->type_name("N")
        ->capture_default_str();
    command->footer("Examples:\n  appliance log -n 20\n  appliance log -f\n");
    command->callback([arguments, &chosen] { chosen = [arguments] { return showLog(*arguments); }; });
}

}  // namespace Tool
