// A message between apps, in the form that docs/screen.md describes.
#pragma once

#include <nlohmann/json.hpp>

#include "BusMessage.h"

namespace Appliance {

nlohmann::json toJson(const BusMessage& message);

}  // namespace Appliance
