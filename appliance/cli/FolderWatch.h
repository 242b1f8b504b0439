// Tells when a file in a folder is created, replaced or written to.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "EventLoop.h"

namespace Tool {

// Main loop only. The folder must exist: throws std::system_error otherwise.
class FolderWatch {
  public:
    // `onChange` gets the file's name; several changes may come as one call.
    FolderWatch(const std::filesystem::path& folder, std::function<void(const std::string& name)> onChange);
    ~FolderWatch();
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

  private:
    void readEvents();

    std::function<void(const std::string&)> onChange_;
    int fd_;
    std::optional<FdWatch> watch_;
};

}  // namespace Tool
