// A message between apps as text.
#pragma once

#include <string>

#include "BusMessage.h"
#include "Terminal.h"

namespace Tool {

enum class Detail {
    Brief,  // one line: long texts are cut, lists told by their length, operations as `send` takes them
    Whole,  // a line of its own for each text of the extra data, each as it was sent
};

// With a newline at its end, and no control character else but the style's own. The time is the local one.
std::string messageText(const Appliance::BusMessage& message, Detail detail, const Style& style);

}  // namespace Tool
