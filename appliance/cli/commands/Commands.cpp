#include "Commands.h"

namespace Tool {

namespace {

const char Footer[] = R"(Examples:
  appliance run                       one search for milk, everything started and ended for it
  appliance up                        start everything and keep it running, then elsewhere:
  appliance search --merchant greengrocer apple
  appliance log -f

Exit status:
    0  done
    1  it ran, but what was asked failed: nothing was found, a program broke, a reply said no
    2  wrong usage
    3  nothing runs there, or no app of that name
    4  it took longer than allowed
  130  interrupted
)";

}  // namespace

void buildCommandLine(CLI::App& app, Action& chosen)
{
    app.name("appliance");
    app.description("Runs the carvoy service on this PC with everything around it, and drives it by hand.");
    app.footer(Footer);
    app.require_subcommand(1);
    app.get_formatter()->column_width(34);
    addUpCommand(app, chosen);
    addRunCommand(app, chosen);
    addSearchCommand(app, chosen);
    addResultCommand(app, chosen);
    addStatusCommand(app, chosen);
    addLogCommand(app, chosen);
    addSendCommand(app, chosen);
    addEnvCommand(app, chosen);
    addCompletionCommand(app, chosen);
}

void addRootOption(CLI::App& command, std::string& root)
{
    command.add_option("--root", root, "The appliance's folder (else APPLIANCE_ROOT, else the build's own)")
        ->type_name("DIR");
}

CLI::Option* addTimeoutOption(CLI::App& command, double& seconds)
{
    const double longest = 3600;
    const double shortest = 0.001;
    return command.add_option("--timeout", seconds, "Seconds to wait for all of it")
        ->type_name("SECONDS")
        ->check(CLI::Range(shortest, longest).description(""))
        ->capture_default_str();
}

}  // namespace Tool
