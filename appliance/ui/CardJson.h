// The card as JSON, in the form that docs/ui-app.md describes.
#pragma once

#include <nlohmann/json.hpp>

#include "Card.h"

namespace Ui {

nlohmann::json toJson(const CardContent& content);

// Throws nlohmann::json::exception or std::runtime_error for anything that toJson() cannot have written.
CardContent cardFromJson(const nlohmann::json& json);

}  // namespace Ui
