#include "BusNames.h"

#include "RandomText.h"

namespace Tool {

namespace {

const char BusInterface[] = "org.freedesktop.DBus";

}  // namespace

std::string busConfiguration(const std::string& address)
{
    return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig>\n"
           "  <type>session</type>\n"
           "  <listen>" +
           address +
           "</listen>\n"
           "  <auth>EXTERNAL</auth>\n"
           "  <policy context=\"default\">\n"
           "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
           "    <allow eavesdrop=\"true\"/>\n"
           "    <allow own=\"*\"/>\n"
           "  </policy>\n"
           // As many calls at once as a desktop's session bus lets its clients make.
           "  <limit name=\"max_replies_per_connection\">50000</limit>\n"
           "</busconfig>\n";
}

std::string freshBusAddress()
{
    const std::size_t length = 16;
    return "unix:abstract=carvoy-appliance-" + randomHex(length);
}

BusNames::BusNames(const std::string& address)
    : connection_(sdbus::createSessionBusConnectionWithAddress(address)),
      bus_(sdbus::createProxy(*connection_, BusInterface, "/org/freedesktop/DBus"))
{
    bus_->uponSignal("NameOwnerChanged")
        .onInterface(BusInterface)
        .call([this](const std::string& name, const std::string&, const std::string& owner) {
            owner.empty() ? (void)owned_.erase(name) : (void)owned_.insert(name);
        });
    bus_->finishRegistration();
    readNames();
    watch_.emplace(*connection_, [this] {
        owned_.clear();
        connected_ = false;
    });
}

void BusNames::readNames()
{
    std::vector<std::string> names;
    bus_->callMethod("ListNames").onInterface(BusInterface).storeResultsTo(names);
    owned_.insert(names.begin(), names.end());
}

}  // namespace Tool
