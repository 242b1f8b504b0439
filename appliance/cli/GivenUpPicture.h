// Which pictures the service could not get, as its log tells.
#pragma once

#include <optional>

#include "Card.h"
#include "LogLine.h"

namespace Tool {

struct GivenUpPicture {
    Ui::Source source;
    std::size_t index;  // the product's position from 0
    Ui::PictureKind kind;
};

// The picture that this line of the service or the retailer's service gives up.
std::optional<GivenUpPicture> pictureGivenUp(const Appliance::LogLine& line);

}  // namespace Tool
