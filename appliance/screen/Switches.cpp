#include "Switches.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace Screen {

namespace {

const char Untrusted[] = "untrusted-certificate";

}  // namespace

Switches::Switches(std::filesystem::path untrustedFile) : untrustedFile_(std::move(untrustedFile))
{
    switches_ = {
        {"slow-answer", "Slow answer", "~delay=3s", "both", ""},
        {"slow-pictures", "Slow pictures", "~slow-images=2s", "both", ""},
        {"401", "Answer 401", "~status=401", "both", "answer"},
        {"503", "Answer 503", "~status=503", "both", "answer"},
        {"garbage", "Garbage", "~garbage", "both", "answer"},
        {"missing-picture", "Second picture missing", "~image-404=2", "both", ""},
    };
    if (!untrustedFile_.empty()) {
        const bool isThere = std::filesystem::exists(untrustedFile_);
        switches_.push_back({Untrusted, "Untrusted certificate", "", "merchant", "", isThere});
    }
}

bool Switches::turn(const std::string& id, bool on)
{
    const auto found = std::find_if(switches_.begin(), switches_.end(),
                                    [&id](const Switch& known) { return id == known.id; });
    if (found == switches_.end()) {
        return false;
    }
    if (id == Untrusted) {
        turnUntrusted(on);
    }
    const std::string group = found->group;
    for (Switch& other : switches_) {
        other.on = other.on && (group.empty() || group != other.group);
    }
    found->on = on;
    return true;
}

void Switches::turnUntrusted(bool on) const
{
    std::error_code error;
    if (on && !std::ofstream(untrustedFile_)) {
        throw std::runtime_error("cannot write " + untrustedFile_.string());
    }
    if (!on && !std::filesystem::remove(untrustedFile_, error) && error) {
        throw std::runtime_error("cannot remove " + untrustedFile_.string() + ": " + error.message());
    }
}

std::string Switches::words() const
{
    std::string all;
    for (const Switch& known : switches_) {
        if (known.on && *known.words != '\0') {
            all += " " + std::string(known.words);
        }
    }
    return all;
}

nlohmann::json Switches::toJson() const
{
    nlohmann::json all = nlohmann::json::array();
    for (const Switch& known : switches_) {
        all.push_back({{"id", known.id},
                       {"label", known.label},
                       {"words", known.words},
                       {"for", known.reach},
                       {"group", known.group},
                       {"on", known.on}});
    }
    return all;
}

}  // namespace Screen
