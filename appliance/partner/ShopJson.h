// The shop as JSON, in the form that docs/partner-app.md describes.
#pragma once

#include <nlohmann/json.hpp>

#include "Shop.h"

namespace Partner {

nlohmann::json toJson(const ShopContent& content);

// Throws nlohmann::json::exception or std::runtime_error for anything that toJson() cannot have written.
ShopContent shopFromJson(const nlohmann::json& json);

}  // namespace Partner
