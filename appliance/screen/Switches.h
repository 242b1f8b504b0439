// The trouble that a person can switch on for the next searches.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Screen {

// Used by one thread at a time.
class Switches {
  public:
    // `untrustedFile`: while it exists the merchant shows a certificate that nobody trusts. Where it is empty
    // that cannot be switched.
    explicit Switches(std::filesystem::path untrustedFile);

    // Of one group at most one is on: the others are switched off. False where there is no such switch.
    // Throws std::runtime_error where it cannot be switched.
    bool turn(const std::string& id, bool on);

    // The words of what is on, each with a blank in front.
    std::string words() const;

    // Those that there are, in a fixed order.
    nlohmann::json toJson() const;

  private:
    struct Switch {
        const char* id;
        const char* label;
        const char* words;
        const char* reach;  // "both", or "merchant" where the retailer has no such trouble
        const char* group;  // empty: may be combined with all others
        bool on = false;
    };

    void turnUntrusted(bool on) const;

    std::filesystem::path untrustedFile_;
    std::vector<Switch> switches_;
};

}  // namespace Screen
