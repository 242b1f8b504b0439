#include "MerchantStock.h"

#include <stdexcept>

#include "Installation.h"
#include "JsonFile.h"

namespace Tool {

std::vector<std::string> merchantIds()
{
    const std::filesystem::path file = Appliance::shareFolder("merchant-bridge") / "catalogue.json";
    const nlohmann::json catalogue = Appliance::readJsonFile(file).value_or(nlohmann::json());
    std::vector<std::string> ids;
    try {
        for (const nlohmann::json& merchant : catalogue.at("merchants")) {
            ids.push_back(merchant.at("id").get<std::string>());
        }
    } catch (const nlohmann::json::exception&) {
        throw std::runtime_error("there is no catalogue in " + file.string());
    }
    return ids;
}

}  // namespace Tool
