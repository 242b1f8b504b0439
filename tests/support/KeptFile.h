// A file that a test changes and a developer may need.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

namespace TestSupport {

/** Puts the file back as it was, or away where there was none. */
class KeptFile {
  public:
    explicit KeptFile(std::filesystem::path path) : path_(std::move(path))
    {
        if (std::filesystem::is_regular_file(path_)) {
            std::ifstream file(path_, std::ios::binary);
            content_.emplace(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        }
    }
    ~KeptFile()
    {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
        if (content_)
            std::ofstream(path_, std::ios::binary) << *content_;
    }
    KeptFile(const KeptFile&) = delete;
    KeptFile& operator=(const KeptFile&) = delete;

  private:
    std::filesystem::path path_;
    std::optional<std::string> content_;
};

}  // namespace TestSupport
