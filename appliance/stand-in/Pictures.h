// The product pictures, held in memory: a name that was not in the folder at start does not exist.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace Appliance::StandIn {

struct Picture {
    std::string bytes;
    std::string contentType;
};

// Reads every .png, .jpg and .gif of a folder once; std::runtime_error when it cannot.
// Immutable afterwards, so any thread may use it.
class Pictures {
  public:
    explicit Pictures(const std::filesystem::path& folder);

    // Null when there is no such picture.
    const Picture* find(std::string_view name) const;

    // std::runtime_error when there is no such picture.
    void require(const std::string& name) const;

  private:
    std::map<std::string, Picture, std::less<>> pictures;
};

}  // namespace Appliance::StandIn
