#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>

#include "BusMonitor.h"
#include "Commands.h"
#include "EventLoop.h"
#include "IndentedJson.h"
#include "MessageJson.h"
#include "MessageView.h"
#include "Patterns.h"
#include "Session.h"
#include "Terminal.h"

namespace Tool {

namespace {

using Appliance::BusMessage;

struct MonitorArguments {
    std::string root;
    std::vector<std::string> apps;
    std::vector<std::string> kinds;
    std::size_t count = 0;  // 0: no end
    bool verbose = false;
    bool json = false;
};

bool isWanted(const BusMessage& message, const MonitorArguments& arguments)
{
    const auto& kinds = arguments.kinds;
    const bool isOfKind =
        kinds.empty() || std::find(kinds.begin(), kinds.end(), nameOf(message.kind)) != kinds.end();
    return isOfKind && (fitsOneOf(arguments.apps, message.from) || fitsOneOf(arguments.apps, message.to));
}

std::string jsonText(const BusMessage& message)
{
    nlohmann::json json = toJson(message);
    json["at"] = message.at;
    return Appliance::jsonLine(json) + "\n";
}

// Shows the messages of a bus until there is a reason to end.
class Monitoring {
  public:
    // Throws Failure where the bus cannot be watched. The arguments outlive it.
    Monitoring(const MonitorArguments& arguments, const std::string& address)
        : arguments_(arguments), style_(styleOf(STDOUT_FILENO))
    {
        try {
            monitor_ = std::make_unique<Appliance::BusMonitor>(
                address, [this](const BusMessage& message) { take(message); },
                [](const std::string&, bool) {}, [this] { isLost_ = true; });
        } catch (const std::system_error& error) {
            throw Failure(Exit::NotRunning, error.what());
        }
    }

    bool isLost() const { return isLost_; }
    bool isComplete() const { return arguments_.count > 0 && shown_ >= arguments_.count; }
    bool isOver() const { return isLost_ || isComplete() || ferror(stdout) != 0; }

  private:
    // More may come before the main loop ends.
    void take(const BusMessage& message)
    {
        if (!isOver() && isWanted(message, arguments_)) {
            std::fputs(text(message).c_str(), stdout);
            std::fflush(stdout);
            ++shown_;
        }
    }

    std::string text(const BusMessage& message) const
    {
        if (arguments_.json) {
            return jsonText(message);
        }
        return messageText(message, arguments_.verbose ? Detail::Whole : Detail::Brief, style_);
    }

    const MonitorArguments& arguments_;
    Style style_;
    std::size_t shown_ = 0;
    bool isLost_ = false;
    std::unique_ptr<Appliance::BusMonitor> monitor_;
};

Exit monitor(const MonitorArguments& arguments)
{
    const std::optional<Session> session = enterSessionOrBus(arguments.root);
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    const std::string what =
        session ? "the appliance in " + session->root.path.string() : "the bus of DBUS_SESSION_BUS_ADDRESS";
    EventLoop loop;
    const Monitoring monitoring(arguments, address == nullptr ? "" : address);
    std::fprintf(stderr, "watching %s; Ctrl-C ends it\n", what.c_str());
    const auto outcome = loop.runUntil([&monitoring] { return monitoring.isOver(); });
    if (outcome == EventLoop::Outcome::Interrupted) {
        return Exit::Interrupted;
    }
    if (ferror(stdout) != 0) {
        throw Failure(Exit::Failed, "standard output cannot be written");
    }
    if (!monitoring.isComplete()) {
        throw Failure(Exit::NotRunning, what + " has gone away");
    }
    return Exit::Ok;
}

}  // namespace

void addMonitorCommand(CLI::App& app, Action& chosen)
{
    const auto arguments = std::make_shared<MonitorArguments>();
    CLI::App* command = app.add_subcommand("monitor", "Show the messages between the apps as they pass");
    addTexts(*command, "--app", arguments->apps, "Only messages from or to this app")->type_name("APP_ID");
    addTexts(*command, "--kind", arguments->kinds, "Only messages of this kind")
        ->type_name("KIND:{launch,reply,refusal,voice}")
        ->check(CLI::Validator(
            [](const std::string& text) {
                const std::vector<std::string> kinds = {"launch", "reply", "refusal", "voice"};
                const bool isOne = std::find(kinds.begin(), kinds.end(), text) != kinds.end();
                return isOne ? "" : text + " is no kind of message";
            },
            ""));
    command->add_option("--count", arguments->count, "End after so many messages")
        ->type_name("N")
        ->check(CLI::Range(std::size_t{1}, std::size_t{1'000'000'000}).description(""));
    command->add_flag("-v,--verbose", arguments->verbose, "All of the extra data, each text on its own line");
    command->add_flag("--json", arguments->json, "Each message as a JSON object on a line");
    addRootOption(*command, arguments->root);
    command->footer(
        "--app and --kind may be given several times; an app's id may hold the shell's *, ? and [...].\n"
        "Where no appliance runs in the root, the bus of DBUS_SESSION_BUS_ADDRESS is watched.\n"
        "\nExamples:\n"
        "  appliance monitor\n"
        "  appliance monitor -v --app org.tizen.carvoy-service\n"
        "  appliance monitor --json --kind refusal --count 1\n");
    command->callback([arguments, &chosen] { chosen = [arguments] { return monitor(*arguments); }; });
}

}  // namespace Tool
