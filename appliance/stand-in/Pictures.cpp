// Names are looked up in a map and never joined to a path: nothing outside the folder can be asked for.
#include "Pictures.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Appliance::StandIn {
namespace {

// Empty for a file that is not a picture.
std::string contentTypeOf(const std::filesystem::path& file)
{
    static const std::map<std::string, std::string> types{
        {".png", "image/png"}, {".jpg", "image/jpeg"}, {".gif", "image/gif"}};
    const auto type = types.find(file.extension().string());
    return type == types.end() ? std::string() : type->second;
}

std::string readFile(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read the picture " + file.string());
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

Pictures::Pictures(const std::filesystem::path& folder)
{
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string type = contentTypeOf(entry.path());
        if (!type.empty() && entry.is_regular_file())
            pictures[entry.path().filename().string()] = {readFile(entry.path()), type};
    }
}

const Picture* Pictures::find(std::string_view name) const
{
    const auto found = pictures.find(name);
    return found == pictures.end() ? nullptr : &found->second;
}

void Pictures::require(const std::string& name) const
{
    if (find(name) == nullptr)
        throw std::runtime_error("the picture " + name + " is missing");
}

}  // namespace Appliance::StandIn
