#include <unistd.h>

#include <cstdio>
#include <memory>

#include "Commands.h"
#include "EventLoop.h"
#include "IndentedJson.h"
#include "LogFilter.h"
#include "LogFollower.h"
#include "LogJson.h"
#include "PlainText.h"
#include "Root.h"
#include "Terminal.h"
#include "WholeNumber.h"

namespace Tool {

namespace {

using Appliance::printable;

constexpr std::size_t MostLines = 1'000'000'000;

struct LogArguments {
    std::string root;
    bool follow = false;
    bool json = false;
    std::size_t lines = 50;
    std::vector<std::string> leastLevels;
    std::vector<std::string> onlyLevels;
    std::vector<std::string> processes;
    LogFilter filter;  // the rest of it
};

LogFilter filterOf(const LogArguments& arguments)
{
    LogFilter filter = arguments.filter;
    for (const std::string& level : arguments.leastLevels) {
        filter.levels.merge(levelsFrom(*levelFrom(level)));
    }
    for (const std::string& level : arguments.onlyLevels) {
        filter.levels.insert(*levelFrom(level));
    }
    for (const std::string& process : arguments.processes) {
        filter.processes.insert(*Appliance::numberFrom<int>(process));
    }
    return filter;
}

std::string lineText(const std::string& line, const LogArguments& arguments, bool colour)
{
    if (arguments.json) {
        return Appliance::jsonLine(logJson(line));
    }
    return colour ? Appliance::printableWithColours(line) : printable(Appliance::withoutColours(line));
}

Exit showLog(const LogArguments& arguments)
{
    const Root root = chosenRoot(arguments.root);
    if (!std::filesystem::exists(root.platformLog())) {
        throw Failure(Exit::NotRunning, "there is no log in " + root.path.string());
    }
    if (!std::filesystem::is_regular_file(root.platformLog()) ||
        access(root.platformLog().c_str(), R_OK) != 0) {
        throw Failure(Exit::Failed, "cannot read " + root.platformLog().string());
    }
    const bool colour = styleOf(STDOUT_FILENO).colour;
    const LogFilter filter = filterOf(arguments);
    const auto passes = [&filter](const std::string& line) { return filter.passes(line); };
    EventLoop loop;
    Appliance::LogFollower follower(
        root.platformLog(),
        Appliance::startOfLastLines(root.platformLog(), arguments.lines,
                                    filter.isEmpty() ? Appliance::LineJudge() : passes),
        [&](const std::string& line) {
            if (passes(line)) {
                std::fputs((lineText(line, arguments, colour) + "\n").c_str(), stdout);
                std::fflush(stdout);
            }
        });
    follower.readOn();
    if (arguments.follow) {
        loop.runUntil([] { return ferror(stdout) != 0; });
    } else {
        follower.finish();
    }
    if (ferror(stdout) != 0) {
        throw Failure(Exit::Failed, "standard output cannot be written");
    }
    return Exit::Ok;
}

std::string whyNoLevel(const std::string& text)
{
    return levelFrom(text) ? "" : text + " is no level";
}

std::string whyNoProcess(const std::string& text)
{
    return Appliance::numberFrom<int>(text) ? "" : text + " is no process id";
}

void addFilterOptions(CLI::App& command, LogArguments& arguments)
{
    const char* levels = "LEVEL:{verbose,debug,info,warning,error,fatal}";
    addTexts(command, "--level", arguments.leastLevels, "Lines of this level and above")
        ->type_name(levels)
        ->check(CLI::Validator(whyNoLevel, ""));
    addTexts(command, "--only", arguments.onlyLevels, "Lines of just this level")
        ->type_name(levels)
        ->check(CLI::Validator(whyNoLevel, ""));
    addTexts(command, "--tag", arguments.filter.tags, "Lines of this tag")->type_name("TAG");
    addTexts(command, "--file", arguments.filter.files, "Lines from this file of a service's source")
        ->type_name("NAME");
    addTexts(command, "--function", arguments.filter.functions, "Lines from this function of a service")
        ->type_name("NAME");
    addTexts(command, "--pid", arguments.processes, "Lines of this process")
        ->type_name("PID")
        ->check(CLI::Validator(whyNoProcess, ""));
}

}  // namespace

void addLogCommand(CLI::App& app, Action& chosen)
{
    const auto arguments = std::make_shared<LogArguments>();
    CLI::App* command = app.add_subcommand("log", "Show the platform log");
    addRootOption(*command, arguments->root);
    command->add_flag("-f,--follow", arguments->follow, "Go on with what is written, until Ctrl-C");
    command
        ->add_option("-n,--lines", arguments->lines,
                     "How many of the last lines to begin with, of those that are shown")
        ->type_name("N")
        ->check(CLI::Range(std::size_t{0}, MostLines).description(""))
        ->capture_default_str();
    addFilterOptions(*command, *arguments);
    command->add_flag("--json", arguments->json, "Each line as a JSON object on a line");
    command->footer(
        "Each filter may be given several times: a line has to fit one of its values. A level is a name or\n"
        "its first letter; names of tags, files and functions may hold the shell's *, ? and [...].\n"
        "\nExamples:\n"
        "  appliance log -n 20\n"
        "  appliance log -f --level error\n"
        "  appliance log --file SearchControl.cpp --file 'Image*' --function 'operator()'\n"
        "  appliance log --only debug --tag carvoy-service --json\n");
    command->callback([arguments, &chosen] { chosen = [arguments] { return showLog(*arguments); }; });
}

}  // namespace Tool
