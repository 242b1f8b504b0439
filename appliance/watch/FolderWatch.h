// Tells when a file in a folder is created, replaced, written to, written to the end or gone.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "FdWatch.h"

namespace Appliance {

// Main loop only. The folder must exist: throws std::system_error otherwise.
class FolderWatch {
  public:
    // `onChange` gets the file's name; several changes may come as one call. An empty name: more came at once
    // than the kernel keeps, so that any file may have changed.
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

}  // namespace Appliance
