// Waits for what the apps on the screen write.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "JsonFile.h"
#include "Patience.h"

namespace TestSupport {

/** Makes the screen's folder of a root and watches the files in it. One thread. */
class ScreenWatch {
  public:
    explicit ScreenWatch(const std::string& root);
    ~ScreenWatch();
    ScreenWatch(const ScreenWatch&) = delete;
    ScreenWatch& operator=(const ScreenWatch&) = delete;

    /** The first content of a file that is as wanted; nothing when none came in time. */
    template <typename Content>
    std::optional<Content> waitFor(const std::string& file, Content (*fromJson)(const nlohmann::json&),
                                   const std::function<bool(const Content&)>& wanted)
    {
        const Clock::time_point deadline = Clock::now() + Patience;
        do {
            const auto content = Appliance::readJsonFile(folder_ + "/" + file, fromJson);
            if (content && wanted(*content)) {
                return content;
            }
        } while (waitForChange(deadline));
        return std::nullopt;
    }

  private:
    using Clock = std::chrono::steady_clock;

    bool waitForChange(Clock::time_point deadline) const;

    std::string folder_;
    int notifier_;
};

}  // namespace TestSupport
