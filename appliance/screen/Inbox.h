// Hands what other threads bring to the main loop.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

#include "Commands.h"
#include "FdWatch.h"

namespace Screen {

// Made and destroyed on the main loop's thread. What waits when it is destroyed is dropped.
class Inbox {
  public:
    static constexpr std::size_t Waiting = 64;

    // `onCommand` is called on the main loop, in the order of arrival. Throws std::system_error when the
    // system lacks resources.
    explicit Inbox(std::function<void(const Command& command)> onCommand);
    ~Inbox();
    Inbox(const Inbox&) = delete;
    Inbox& operator=(const Inbox&) = delete;

    // From any thread. False where too many wait: it is not taken.
    bool put(Command command);

  private:
    void handOut();

    std::function<void(const Command&)> onCommand_;
    int descriptor_;
    std::mutex mutex_;
    std::deque<Command> waiting_;
    std::optional<Appliance::FdWatch> watch_;
};

}  // namespace Screen
