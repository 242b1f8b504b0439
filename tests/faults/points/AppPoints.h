// What tells that the sender has nothing left to send.
#pragma once

#include <atomic>

namespace Faults {

/** A message was begun since the worker's last pause. */
inline std::atomic<bool> hasSent{false};

}  // namespace Faults
