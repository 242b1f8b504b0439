// Writes and reads /images/redirect/status/503/stall/slow/3000/NAME, each part but the name optional.
#include "PicturePath.h"

#include "Numbers.h"

namespace Appliance::StandIn {
namespace {

constexpr std::string_view root = "/images/";

// Cuts `word` and the '/' behind it off the path's front.
bool takePart(std::string_view& path, std::string_view word)
{
    if (path.substr(0, word.size()) != word || path.substr(word.size(), 1) != "/")
        return false;
    path.remove_prefix(word.size() + 1);
    return true;
}

// The number in the path's first part; nothing where it is out of range or no number.
std::optional<int> takeNumber(std::string_view& path, int least, int most)
{
    const std::string_view digits = path.substr(0, path.find('/'));
    const auto number = parseNumber(digits, least, most);
    return number && takePart(path, digits) ? number : std::nullopt;
}

bool takeTrouble(std::string_view& path, PictureTrouble& trouble)
{
    trouble.redirect = takePart(path, "redirect");
    if (takePart(path, "status")) {
        trouble.status = takeNumber(path, leastStatus, mostStatus);
        if (!trouble.status)
            return false;
    }
    trouble.stall = takePart(path, "stall");
    if (takePart(path, "slow")) {
        const auto time = takeNumber(path, 0, static_cast<int>(longestTime.count()));
        if (!time)
            return false;
        trouble.slow = std::chrono::milliseconds(*time);
    }
    return true;
}

}  // namespace

std::string picturePath(const PictureTrouble& trouble, const std::string& name)
{
    std::string path(root);
    if (trouble.redirect)
        path += "redirect/";
    if (trouble.status)
        path += "status/" + std::to_string(*trouble.status) + "/";
    if (trouble.stall)
        path += "stall/";
    if (trouble.slow.count() > 0)
        path += "slow/" + std::to_string(trouble.slow.count()) + "/";
    return path + name;
}

std::optional<PictureRequest> parsePicturePath(std::string_view path)
{
    if (path.substr(0, root.size()) != root)
        return std::nullopt;
    path.remove_prefix(root.size());
    PictureRequest request;
    if (!takeTrouble(path, request.trouble) || path.empty() || path.find('/') != std::string_view::npos)
        return std::nullopt;
    request.name = path;
    return request;
}

}  // namespace Appliance::StandIn
