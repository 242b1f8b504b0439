// The files of the page: those that lay in its folder at the start, and no others.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace Screen {

// For any thread.
class PageFiles {
  public:
    // Throws std::runtime_error where there is no page.
    explicit PageFiles(const std::filesystem::path& folder);

    bool has(const std::string& path) const;

    struct File {
        std::string bytes;
        std::string type;
    };
    // By the path of a request; "/" is the page itself. Read anew each time, so that a change is seen.
    std::optional<File> find(const std::string& path) const;

  private:
    std::map<std::string, std::filesystem::path> files_;
};

}  // namespace Screen
