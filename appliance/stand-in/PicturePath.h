// The path of a picture's URL, with the trouble that its answer is to make.
// Trouble stands in front of the name, not behind a '?', because a client may take everything after
// the last dot as the file's type: /images/status/404/whole-milk.png
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace Appliance::StandIn {

// The first that is set decides, in this order; none of them: the picture, at once.
struct PictureTrouble {
    bool redirect = false;              // once, to the same path without this
    std::optional<int> status;          // an answer of this status instead of the picture
    bool stall = false;                 // half the picture, then nothing for ever
    std::chrono::milliseconds slow{0};  // the picture in drops, over this time
};

struct PictureRequest {
    PictureTrouble trouble;
    std::string name;
};

std::string picturePath(const PictureTrouble& trouble, const std::string& name);

// The inverse; nothing for a path that picturePath does not make. The name may be anything without '/'.
std::optional<PictureRequest> parsePicturePath(std::string_view path);

}  // namespace Appliance::StandIn
