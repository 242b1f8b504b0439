#include "JsonFile.h"

#include <fstream>
#include <stdexcept>

#include "IndentedJson.h"

namespace Appliance {

namespace {

void writeWhole(const std::filesystem::path& file, const std::string& text)
{
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << text << '\n';
    out.close();
    if (!out) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

}  // namespace

void replaceJsonFile(const std::filesystem::path& file, const nlohmann::json& json)
{
    std::filesystem::create_directories(file.parent_path());
    const std::filesystem::path fresh = file.string() + ".new";
    writeWhole(fresh, indentedJson(json));
    std::filesystem::rename(fresh, file);
}

std::optional<nlohmann::json> readJsonFile(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    nlohmann::json json = nlohmann::json::parse(in, nullptr, false);
    return json.is_discarded() ? std::nullopt : std::optional<nlohmann::json>(std::move(json));
}

void requireWritten(const nlohmann::json& json, const nlohmann::json& written)
{
    if (json != written) {
        throw std::runtime_error("a member is not as it is written");
    }
}

}  // namespace Appliance
