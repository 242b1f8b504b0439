// How long a test waits for an event that must come; long enough for a sanitizer build on a busy machine.
#pragma once

#include <chrono>

namespace TestSupport {

constexpr std::chrono::seconds Patience{60};

}  // namespace TestSupport
