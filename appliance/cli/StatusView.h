// What the service leaves for others after a search, shown.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "StatusRecord.h"
#include "Terminal.h"

namespace Tool {

std::string statusText(const std::optional<Appliance::StatusRecord>& record, std::optional<int> flag,
                       const Style& style);
nlohmann::json statusJson(const std::optional<Appliance::StatusRecord>& record, std::optional<int> flag);

}  // namespace Tool
