// Reading what a shop sells from a JSON file, strictly: a member missing or of a wrong type is an error.
#pragma once

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Appliance::StandIn {

// Throws for an empty list, and what `read` throws.
template <typename Item>
std::vector<Item> readList(const nlohmann::json& list, Item (*read)(const nlohmann::json&))
{
    std::vector<Item> items;
    for (const nlohmann::json& entry : list)
        items.push_back(read(entry));
    if (items.empty())
        throw std::runtime_error("an empty list");
    return items;
}

// The list that the root object has under `member`. std::runtime_error names the file and what is wrong.
template <typename Item>
std::vector<Item> readStock(const std::filesystem::path& file, const char* member,
                            Item (*read)(const nlohmann::json&))
{
    std::ifstream stream(file);
    if (!stream)
        throw std::runtime_error("cannot read the catalogue " + file.string());
    try {
        return readList(nlohmann::json::parse(stream).at(member), read);
    } catch (const std::exception& error) {
        throw std::runtime_error("the catalogue " + file.string() + " is wrong: " + error.what());
    }
}

}  // namespace Appliance::StandIn
