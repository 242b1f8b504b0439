#include "PrivateBus.h"

#include <poll.h>
#include <sdbus-c++/sdbus-c++.h>
#include <signal.h>
#include <stdlib.h>

#include <fstream>
#include <stdexcept>
#include <vector>

#include "ScratchRoot.h"

namespace TestSupport {

namespace {

using Clock = std::chrono::steady_clock;

std::string replyLimit(std::chrono::milliseconds limit)
{
    return limit.count() ? "<limit name=\"reply_timeout\">" + std::to_string(limit.count()) + "</limit>" : "";
}

std::string serviceFolder(const std::string& folder)
{
    return folder.empty() ? "" : "<servicedir>" + folder + "</servicedir>";
}

std::string configuration(const PrivateBus::Options& options)
{
    return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\""
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">"
           "<busconfig><type>session</type><keep_umask/>"
           "<listen>unix:tmpdir=" +
           ScratchRoot::path() + "</listen><auth>EXTERNAL</auth>" + serviceFolder(options.serviceFolder) +
           "<policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
           "<allow eavesdrop=\"true\"/><allow own=\"*\"/>" +
           options.policy + "</policy>" +
           // The session bus of a desktop lets its clients make as many calls at once.
           "<limit name=\"max_replies_per_connection\">50000</limit>" + replyLimit(options.replyLimit) +
           "</busconfig>";
}

std::string writeConfiguration(const PrivateBus::Options& options)
{
    std::string path = ScratchRoot::file("bus-XXXXXX");
    const int descriptor = mkstemp(path.data());
    if (descriptor < 0)
        throw std::runtime_error("no file for the bus configuration");
    close(descriptor);
    std::ofstream(path) << configuration(options);
    return path;
}

bool isOwned(sdbus::IConnection& connection, const std::string& name)
{
    auto bus = sdbus::createProxy(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus");
    bool owned = false;
    bus->callMethod("NameHasOwner")
        .onInterface("org.freedesktop.DBus")
        .withArguments(name)
        .storeResultsTo(owned);
    return owned;
}

// Waits for one more message; false when the time is over.
bool processUntil(sdbus::IConnection& connection, Clock::time_point deadline)
{
    if (connection.processPendingRequest())
        return true;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0)
        return false;
    const auto data = connection.getEventLoopPollData();
    pollfd watch{data.fd, data.events, 0};
    poll(&watch, 1, static_cast<int>(left));
    return true;
}

}  // namespace

PrivateBus::PrivateBus() : PrivateBus(Options{}) {}

PrivateBus::PrivateBus(const Options& options)
{
    const std::string file = "--config-file=" + writeConfiguration(options);
    daemon_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"dbus-daemon", "--nofork", "--nopidfile", "--print-address=1", file});
    if (!daemon_->waitForOutput("\n"))
        throw std::runtime_error("dbus-daemon did not start: " + daemon_->errors());
    address_ = daemon_->output();
    address_.erase(address_.find('\n'));
    use();
}

PrivateBus::~PrivateBus()
{
    kill();
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
}

void PrivateBus::use() const
{
    setenv("DBUS_SESSION_BUS_ADDRESS", address_.c_str(), 1);
}

void PrivateBus::kill()
{
    daemon_->signal(SIGKILL);
    daemon_->wait();
}

void PrivateBus::writeActivationFile(const std::string& folder, const std::string& name,
                                     const std::string& command)
{
    std::ofstream(folder + "/" + name + ".service")
        << "[D-BUS Service]\nName=" << name << "\nExec=" << command << "\n";
}

bool waitForName(const std::string& name, bool owned, std::chrono::milliseconds limit)
{
    const Clock::time_point deadline = Clock::now() + limit;
    auto connection = sdbus::createSessionBusConnection();
    bool changed = true;
    const auto slot = connection->addMatch(
        "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + name + "'",
        [&](sdbus::Message&) { changed = true; });
    do {
        if (std::exchange(changed, false) && isOwned(*connection, name) == owned)
            return true;
    } while (processUntil(*connection, deadline));
    return false;
}

}  // namespace TestSupport
