#include "Rig.h"

#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <system_error>

#include "Exit.h"
#include "Installation.h"
#include "LogFollower.h"
#include "MerchantStock.h"
#include "Names.h"
#include "PlainText.h"
#include "RandomText.h"
#include "SiteValues.h"

namespace Tool {

namespace {

using namespace std::chrono_literals;

constexpr auto StartLimit = 30s;
// The service ends at the latest when the running picture's 7 seconds are over.
constexpr auto StopLimit = 15s;
constexpr std::size_t TokenLength = 32;

void writeText(const std::filesystem::path& file, const std::string& text, mode_t mode)
{
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::remove(file);
    const mode_t before = umask(~mode & 0777);
    std::ofstream out(file);
    umask(before);
    out << text;
    out.close();
    if (!out) {
        throw Failure(Exit::Failed, "cannot write " + file.string());
    }
}

std::string program(const std::string& name)
{
    return Appliance::programFile(name).string();
}

std::filesystem::path tokensFile(const Root& root)
{
    return root.path / "apps_rw" / CARVOY_PARTNER_APP_ID / "shared" / "trusted" / "tokens.txt";
}

std::filesystem::path caFile(const Root& root)
{
    return root.path / "merchant-bridge-ca.pem";
}

std::optional<int> portIn(const std::string& line)
{
    const nlohmann::json json = nlohmann::json::parse(line, nullptr, false);
    const bool usable = json.is_object() && json.contains("port") && json["port"].is_number_integer();
    return usable ? std::optional<int>(json["port"].get<int>()) : std::nullopt;
}

std::string addressIn(const std::string& line)
{
    const nlohmann::json json = nlohmann::json::parse(line, nullptr, false);
    const bool usable = json.is_object() && json.contains("screen") && json["screen"].is_string();
    return usable ? json["screen"].get<std::string>() : "";
}

std::string printableLines(const std::string& text)
{
    std::string lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines += (lines.empty() ? "" : "\n") + Appliance::printable(line);
    }
    return lines;
}

std::string lastWords(const RunningProgram& child)
{
    const std::size_t linesShown = 8;
    const std::string words = Appliance::lastLines(child.program().output, linesShown);
    const std::string where = "see " + child.program().output.string();
    return words.empty() ? where : where + ", which ends:\n" + printableLines(words);
}

}  // namespace

Rig::Rig(EventLoop& loop, RootLock lock, RigOptions options)
    : loop_(loop), lock_(std::move(lock)), options_(std::move(options))
{
    session_.root = options_.root;
    std::filesystem::remove(options_.root.sessionFile());  // of one that was killed
}

Rig::~Rig()
{
    std::error_code ignored;
    std::filesystem::remove(options_.root.sessionFile(), ignored);
}

void Rig::start(const ReadyHandler& onReady)
{
    onReady_ = onReady;
    prepareFolders();
    startBus();
    startBridge();
    startRetailer();
    session_.enter();
    startApp("carvoy-partner", Appliance::PartnerAppId, {});
    startApp("carvoy-assistant", Appliance::AssistantAppId, {});
    startApp("carvoy-service", Appliance::ServiceAppId, {});
    startApp("carvoy-retailer", Appliance::RetailerServiceAppId, {});
    startUi();
    session_.write();
}

void Rig::prepareFolders()
{
    const Root& root = options_.root;
    std::filesystem::create_directories(root.logFolder());
    std::filesystem::create_directories(root.screenFolder());
    for (const auto& left : {root.cardFile(), root.partnerFile(), root.assistantFile()}) {
        std::filesystem::remove(left);  // by apps that are gone: nobody must take it for the new ones'
    }
    std::filesystem::remove(root.untrustedFile());
    writeText(tokensFile(root), randomHex(TokenLength) + "," + randomHex(TokenLength) + "\n", 0600);
    session_.environment = {{"APPLIANCE_ROOT", root.path.string()},
                            {"APPLIANCE_DLOG", root.platformLog().string()},
                            {"APPLIANCE_CA_FILE", caFile(root).string()},
                            {"no_proxy", "*"}};  // the stand-ins are on this machine
}

void Rig::startBus()
{
    const std::filesystem::path configuration = options_.root.path / "bus.conf";
    writeText(configuration, busConfiguration(freshBusAddress()), 0600);
    RunningProgram& bus = spawn("bus", {"dbus-daemon", "--config-file=" + configuration.string(), "--nofork",
                                        "--nopidfile", "--nosyslog", "--print-address=1"});
    std::string address;
    awaitLine(bus, [&address](const std::string& line) {
        const bool isAddress = line.rfind("unix:", 0) == 0;
        address = isAddress ? line : address;
        return isAddress;
    });
    session_.environment["DBUS_SESSION_BUS_ADDRESS"] = address;
    names_.emplace(address);
    onReady_("bus", address.substr(0, address.find(',')));
}

void Rig::startBridge()
{
    const Root& root = options_.root;
    const std::string place = startShop(
        "merchant-bridge", {"--host", CARVOY_MERCHANT_BRIDGE_HOST, "--ca-file", caFile(root).string(),
                            "--tokens-file", tokensFile(root).string(), "--log", bridgeLog().string(),
                            "--untrusted-while", root.untrustedFile().string()});
    session_.environment["APPLIANCE_CONNECT_TO"] = std::string(CARVOY_MERCHANT_BRIDGE_HOST) + ":443:" + place;
    onReady_("merchant-bridge", place);
}

void Rig::startRetailer()
{
    const std::string place =
        startShop("retailer", {"--host", CARVOY_RETAILER_API_HOST, "--icon-host", CARVOY_RETAILER_ICON_HOST,
                               "--log", (options_.root.logFolder() / "retailer.log").string()});
    session_.environment["APPLIANCE_CONNECT_TO"] += "," + std::string(CARVOY_RETAILER_API_HOST) +
                                                    ":80:" + place + "," + CARVOY_RETAILER_ICON_HOST +
                                                    ":80:" + place;
    onReady_("retailer", place);
}

// Returns where it listens.
std::string Rig::startShop(const std::string& name, const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {program(name)};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const RunningProgram& shop = spawn(name, command);
    int port = 0;
    awaitLine(shop, [&port](const std::string& line) {
        port = portIn(line).value_or(0);
        return port != 0;
    });
    return "127.0.0.1:" + std::to_string(port);
}

RunningProgram& Rig::startApp(const std::string& name, const std::string& appId,
                              const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {program(name)};
    command.insert(command.end(), arguments.begin(), arguments.end());
    RunningProgram& child = spawn(name, command);
    await(child, [this, &appId] { return names_->isOwned(appId); });
    onReady_(name, appId + ", process " + std::to_string(child.pid()));
    return child;
}

void Rig::startUi()
{
    std::vector<std::string> arguments = options_.uiArguments;
    if (options_.screenPort) {
        const std::vector<std::string> screen = {"--screen", std::to_string(*options_.screenPort),
                                                 "--untrusted-file", options_.root.untrustedFile().string()};
        arguments.insert(arguments.end(), screen.begin(), screen.end());
        for (const std::string& merchant : merchantIds()) {
            arguments.insert(arguments.end(), {"--merchant", merchant});
        }
    }
    const RunningProgram& ui = startApp("carvoy-ui", Appliance::UiAppId, arguments);
    if (options_.screenPort) {
        awaitLine(ui, [this](const std::string& line) {
            screenAddress_ = addressIn(line);
            return !screenAddress_.empty();
        });
        onReady_("screen", screenAddress_);
    }
}

RunningProgram& Rig::spawn(const std::string& name, std::vector<std::string> command)
{
    const std::filesystem::path output = outputOf(name);
    std::filesystem::remove(output);
    const Program started = {name, std::move(command), session_.environment, output};
    try {
        children_.push_back(
            std::make_unique<RunningProgram>(started, [this](RunningProgram& child) { onEnd(child); }));
    } catch (const std::system_error& error) {
        throw Failure(Exit::Failed, error.what());
    }
    session_.processes[name] = children_.back()->pid();
    return *children_.back();
}

std::filesystem::path Rig::outputOf(const std::string& name) const
{
    return options_.root.logFolder() / (name + ".out");
}

void Rig::await(const RunningProgram& child, const std::function<bool()>& ready)
{
    switch (loop_.runUntil(ready, StartLimit)) {
        case EventLoop::Outcome::Done:
            return;
        case EventLoop::Outcome::TimedOut:
            throw Failure(Exit::TimedOut, child.program().name + " does not come up; " + lastWords(child));
        case EventLoop::Outcome::Interrupted:
            throw Failure(Exit::Interrupted, "interrupted");
    }
}

void Rig::awaitLine(const RunningProgram& child, const LineTest& isWanted)
{
    bool found = false;
    Appliance::LogFollower follower(child.program().output, 0,
                                    [&](const std::string& line) { found = found || isWanted(line); });
    follower.readOn();
    await(child, [&found] { return found; });
}

void Rig::onEnd(RunningProgram& child)
{
    if (!stopping_) {
        throw Failure(Exit::Failed, child.program().name + " ended unexpectedly: " + child.endText() + "; " +
                                        lastWords(child));
    }
}

std::vector<std::string> Rig::stop()
{
    stopping_ = true;
    loop_.forgetInterrupt();
    std::vector<RunningProgram*> onTheBus;
    std::vector<RunningProgram*> theBus;
    for (const auto& child : children_) {
        (child->program().name == "bus" ? theBus : onTheBus).push_back(child.get());
    }
    std::vector<std::string> troubles;
    endAll(onTheBus, troubles);
    names_.reset();
    endAll(theBus, troubles);
    children_.clear();
    return troubles;
}

// A second Ctrl-C while this waits kills what is left.
void Rig::endAll(const std::vector<RunningProgram*>& children, std::vector<std::string>& troubles)
{
    const auto isRunning = [](const RunningProgram* child) { return child->running(); };
    for (const RunningProgram* child : children) {
        child->signal(SIGTERM);
    }
    const auto allEnded = [&] { return std::none_of(children.begin(), children.end(), isRunning); };
    loop_.runUntil(allEnded, StopLimit);
    for (const RunningProgram* child : children) {
        if (child->running()) {
            troubles.push_back(child->program().name + " had to be killed");
        } else if (!child->endedWell()) {
            troubles.push_back(child->program().name + ": " + child->endText() + "; " + lastWords(*child));
        }
    }
}

}  // namespace Tool
