// Tells what happens in a folder at the moment at which it does.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Patience.h"

namespace TestSupport {

/** Sees what happens from its construction on. One thread. */
class FolderWatch {
  public:
    /** @p events are those of inotify. Throws std::system_error where there is no such folder. */
    FolderWatch(const std::string& folder, std::uint32_t events);
    ~FolderWatch();
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    /** Waits until it has happened to a file whose name begins so; false when the time is over. */
    bool waitFor(const std::string& beginning, std::chrono::milliseconds limit = Patience);

  private:
    std::vector<std::string> read();

    int notifier_;
};

}  // namespace TestSupport
