#include "BusOwners.h"

#include <cstdlib>
#include <stdexcept>

#include "BusQuestion.h"

namespace Appliance {

namespace {

std::vector<std::string> namesOn(sd_bus* bus)
{
    BusError error;
    const BusMessageHandle list = askBus(bus, error, BusName, "ListNames", "");
    if (!list) {
        throw std::runtime_error("the bus does not tell who is on it");
    }
    char** raw = nullptr;
    required(sd_bus_message_read_strv(list.get(), &raw), "the bus's names cannot be read");
    std::vector<std::string> names;
    for (char** name = raw; raw != nullptr && *name != nullptr; std::free(*name++)) {
        names.emplace_back(*name);
    }
    std::free(raw);
    return names;
}

}  // namespace

bool BusOwners::isApp(const std::string& name)
{
    return !name.empty() && name[0] != ':' && name != BusName;
}

void BusOwners::learn(sd_bus* bus)
{
    for (const std::string& name : namesOn(bus)) {
        const char* owner = nullptr;
        BusError gone;
        const BusMessageHandle answer =
            isApp(name) ? askBus(bus, gone, BusName, "GetNameOwner", "s", name.c_str()) : nullptr;
        if (answer && sd_bus_message_read_basic(answer.get(), SD_BUS_TYPE_STRING, &owner) > 0) {
            own(name, owner);
        }
    }
}

std::vector<std::string> BusOwners::apps() const
{
    std::vector<std::string> apps;
    for (const auto& owner : owners_) {
        apps.push_back(owner.first);
    }
    return apps;
}

std::optional<bool> BusOwners::change(const OwnerChange& change)
{
    const bool wasThere = owners_.count(change.name) > 0;
    const bool isThere = !change.now.empty();
    disown(change.name, change.before);
    if (isThere) {
        own(change.name, change.now);
    }
    return wasThere == isThere ? std::nullopt : std::optional<bool>(isThere);
}

void BusOwners::own(const std::string& name, const std::string& connection)
{
    owners_[name] = connection;
    names_[connection].insert(name);
}

void BusOwners::disown(const std::string& name, const std::string& connection)
{
    owners_.erase(name);
    const auto names = names_.find(connection);
    if (names != names_.end()) {
        names->second.erase(name);
        names->second.empty() ? (void)names_.erase(names) : void();
    }
}

std::string BusOwners::appOf(const std::string& name, const std::string& claimed)
{
    const auto names = names_.find(name);
    if (names != names_.end()) {
        return names->second.count(claimed) > 0 ? claimed : *names->second.begin();
    }
    if (!claimed.empty()) {
        return claimed;
    }
    const std::string app = name.rfind(':', 0) == 0 ? appOfProcess(processes_.processOf(name)) : "";
    return app.empty() ? name : app;
}

// Empty where the process is none's, or that of several.
std::string BusOwners::appOfProcess(std::optional<std::uint32_t> process)
{
    std::string app;
    for (const auto& [name, connection] : owners_) {
        if (process && processes_.processOf(connection) == process) {
            if (!app.empty()) {
                return {};
            }
            app = name;
        }
    }
    return app;
}

std::string BusOwners::connectionOf(const std::string& name) const
{
    const auto owner = owners_.find(name);
    return owner == owners_.end() ? name : owner->second;
}

}  // namespace Appliance
