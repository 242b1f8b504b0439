// Where the appliance keeps what the screen shows of it.
#pragma once

#include <filesystem>
#include <string>

namespace Screen {

struct Places {
    std::filesystem::path root;
    std::filesystem::path log;  // empty where there is no file for it
    std::string bus;            // address; empty where there is none

    std::filesystem::path screenFolder() const { return root / "screen"; }
    std::filesystem::path dataStore() const { return root / "data-store.sqlite"; }
    std::filesystem::path media() const { return root / "media"; }
    std::filesystem::path pictures() const { return media() / "tmp"; }
    std::filesystem::path settings() const { return root / "vconf"; }
    std::filesystem::path flagFolder() const { return settings() / "db" / "nuvex" / "e-commerce"; }
};

// Of the appliance that this process is part of.
Places placesHere();

}  // namespace Screen
