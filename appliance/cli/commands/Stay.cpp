#include "Stay.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "Confirmation.h"
#include "LogFollower.h"
#include "LoginFile.h"
#include "PlainText.h"
#include "Rig.h"
#include "Terminal.h"

namespace Tool {

namespace {

using namespace std::chrono_literals;

// For searches at the retailer that others have begun to be over.
constexpr auto LoginLimit = 75s;

void printLine(const std::string& text)
{
    std::fputs((text + "\n").c_str(), stdout);
    std::fflush(stdout);
}

void printReady(const std::string& name, const std::string& detail)
{
    const Style style = styleOf(STDOUT_FILENO);
    const std::size_t nameWidth = 18;
    const std::string padding(name.size() < nameWidth ? nameWidth - name.size() : 1, ' ');
    printLine(style.green("✓ ") + style.bold(name) + padding + style.dim(detail));
}

void printHowToGoOn(const Root& root, const std::string& screen, bool untilStdinCloses)
{
    printLine("\nThe appliance is up in " + root.path.string() + "\n");
    if (!screen.empty()) {
        printLine("  " + screen + "    its screen, for a browser on this machine");
    }
    printLine(
        "  appliance search milk      a search, as a person would start it; --retailer 우유 at the retailer");
    printLine("  appliance say ...          a spoken choice; say --help lists the sentences");
    printLine("  appliance log -f           what the service says meanwhile");
    printLine("  eval \"$(appliance env)\"    this shell becomes part of it\n");
    printLine(untilStdinCloses ? "It ends when standard input closes." : "Ctrl-C ends it.");
}

// Ends the wait when a read tells that the other side closed; an input that has no other side is closed.
class StdinEnd {
  public:
    StdinEnd()
        : watch_(STDIN_FILENO, [this] {
              char buffer[256];
              closed_ = closed_ || read(STDIN_FILENO, buffer, sizeof buffer) <= 0;
          })
    {
    }
    bool closed() const { return closed_ || !watch_.watches(); }

  private:
    bool closed_ = false;
    Appliance::FdWatch watch_;
};

Exit stopped(Rig& rig)
{
    const std::vector<std::string> troubles = rig.stop();
    for (const std::string& trouble : troubles) {
        std::fprintf(stderr, "appliance: %s\n", trouble.c_str());
    }
    return troubles.empty() ? Exit::Ok : Exit::Failed;
}

void waitForEnd(EventLoop& loop, const Rig& rig, const StayArguments& arguments)
{
    std::unique_ptr<Appliance::LogFollower> bridge;
    if (arguments.bridgeLog) {
        bridge = std::make_unique<Appliance::LogFollower>(
            rig.bridgeLog(), Appliance::endOf(rig.bridgeLog()),
            [](const std::string& line) { printLine(Appliance::printable(line)); });
    }
    std::unique_ptr<StdinEnd> stdinEnd;
    if (arguments.untilStdinCloses) {
        stdinEnd = std::make_unique<StdinEnd>();
    }
    loop.runUntil([&stdinEnd] { return stdinEnd && stdinEnd->closed(); });
}

// At the retailer, where nobody has said otherwise: on a page a person searches there, not the tool.
void logIn(EventLoop& loop, const Root& root)
{
    try {
        const LoginHold hold(loop, loginFile(root), false, LoginLimit,
                             [] { printLine("waiting for a search at the retailer to be over"); });
    } catch (const Failure& failure) {
        if (failure.status() == Exit::Interrupted) {
            throw;
        }
        std::fprintf(stderr, "appliance: not logged in at the retailer: %s\n", failure.what());
    }
}

}  // namespace

Exit stay(const StayArguments& arguments)
{
    const Root root = chosenRoot(arguments.root);
    EventLoop loop;
    Rig rig(loop, RootLock::claim(root),
            {root,
             {"--confirm", arguments.confirm, "--confirm-after", std::to_string(arguments.confirmAfter)},
             arguments.screenPort});
    try {
        if (arguments.screenPort) {
            logIn(loop, root);
        }
        rig.start(printReady);
        printHowToGoOn(root, rig.screenAddress(), arguments.untilStdinCloses);
        waitForEnd(loop, rig, arguments);
    } catch (...) {
        stopped(rig);
        throw;
    }
    return stopped(rig);
}

void addStayArguments(CLI::App& command, StayArguments& arguments)
{
    addRootOption(command, arguments.root);
    command.add_option("--confirm", arguments.confirm, "How the UI app answers product lists")
        ->check(CLI::IsMember(Ui::Confirmation::Modes))
        ->capture_default_str();
    command.add_option("--confirm-after", arguments.confirmAfter, "Delay of a late answer")
        ->type_name("MS")
        ->check(CLI::Range(0, 3'600'000).description(""))
        ->capture_default_str();
    command.add_flag("--bridge-log", arguments.bridgeLog, "Print each request that the merchant gets");
    command.add_flag("--until-stdin-closes", arguments.untilStdinCloses, "End with standard input, too");
}

}  // namespace Tool
