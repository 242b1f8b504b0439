// JSON in files: what the apps on the screen and the tool leave for one another.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>

namespace Appliance {

// Makes the folder where needed. Readers see the whole old file or the whole new one: it is replaced by a
// rename. Throws std::runtime_error when the file cannot be written.
void replaceJsonFile(const std::filesystem::path& file, const nlohmann::json& json);

// Nothing where there is no such file, or none that holds JSON.
std::optional<nlohmann::json> readJsonFile(const std::filesystem::path& file);

// For a `fromJson`: `written` is what the content that was read is written as. Throws std::runtime_error
// where that is something else, as with a name that no enumeration has or a number that does not fit.
void requireWritten(const nlohmann::json& json, const nlohmann::json& written);

// What `fromJson` makes of a file; nothing also where that throws an nlohmann::json::exception or a
// std::runtime_error.
template <typename Content>
std::optional<Content> readJsonFile(const std::filesystem::path& file,
                                    Content (*fromJson)(const nlohmann::json&))
{
    try {
        const auto json = readJsonFile(file);
        return json ? std::optional<Content>(fromJson(*json)) : std::nullopt;
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

}  // namespace Appliance
