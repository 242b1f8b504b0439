// The folder that the services keep their pictures in: its files, each with a version.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace Screen {

// Files that lie in the folder itself, which is none if it is a link, and are files: no links, no folders, no
// names that begin with a dot. The services make, replace and remove them meanwhile. For any thread.
class PictureFolder {
  public:
    explicit PictureFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}

    const std::filesystem::path& path() const { return folder_; }

    // `name`, `size` and `version` of each, by number and name.
    nlohmann::json list() const;

    // NAME?v=VERSION for the path of a file in the folder; empty for any other path.
    std::string addressOf(const std::string& path) const;

    // The bytes, while the file still has that version.
    std::optional<std::string> read(const std::string& name, const std::string& version) const;

    static constexpr std::size_t FilesListed = 200;
    static constexpr std::size_t FilesRead = 2000;  // of which those are the first
    static constexpr std::size_t BytesRead = 32 * 1024 * 1024;

  private:
    std::filesystem::path folder_;
};

// By how the bytes begin; "application/octet-stream" for what is no picture that browsers are to show.
std::string pictureType(const std::string& bytes);

}  // namespace Screen
