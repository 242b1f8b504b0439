// appliance: runs and drives the service on a PC.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>

#include "Terminal.h"
#include "commands/Commands.h"

namespace {

using Tool::Exit;

Exit perform(const Tool::Action& action)
{
    try {
        return action();
    } catch (const Tool::Failure& failure) {
        std::fprintf(stderr, "appliance: %s\n", failure.what());
        return failure.status();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "appliance: %s\n", error.what());
        return Exit::Failed;
    }
}

}  // namespace

int main(int argc, char** argv)
{
    Tool::useUtf8();
    CLI::App app;
    Tool::Action chosen;
    Tool::buildCommandLine(app, chosen);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return static_cast<int>(app.exit(error) == 0 ? Exit::Ok : Exit::Usage);
    }
    return static_cast<int>(perform(chosen));
}
