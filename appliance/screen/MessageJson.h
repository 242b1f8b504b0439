// A message between apps, in the form that docs/screen.md describes.
#pragma once

#include <nlohmann/json.hpp>

#include "BusMonitor.h"

namespace Screen {

nlohmann::json toJson(const Appliance::BusMessage& message);

}  // namespace Screen
