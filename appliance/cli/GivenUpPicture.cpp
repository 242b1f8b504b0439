#include "GivenUpPicture.h"

#include <string_view>

#include "WholeNumber.h"

namespace Tool {

namespace {

using Appliance::numberFrom;

constexpr std::string_view GivenUp = "Failed to startDownload for index ";
constexpr std::string_view PictureType = ", type: 0";
constexpr std::string_view BadgeType = ", type: 2";

}  // namespace

// "INDEX" from the service, "INDEX, type: TYPE" from the retailer's.
std::optional<GivenUpPicture> pictureGivenUp(const Appliance::LogLine& line)
{
    const std::string message = messageOf(line);
    if (!isServiceError(line) || message.rfind(GivenUp, 0) != 0) {
        return std::nullopt;
    }
    const std::string_view rest = std::string_view(message).substr(GivenUp.size());
    const std::size_t comma = rest.find(',');
    const auto index = numberFrom<std::size_t>(rest.substr(0, comma));
    if (!index) {
        return std::nullopt;
    }
    if (comma == std::string_view::npos) {
        return GivenUpPicture{Ui::Source::Merchant, *index, Ui::PictureKind::Product};
    }
    const std::string_view type = rest.substr(comma);
    if (type != PictureType && type != BadgeType) {
        return std::nullopt;
    }
    const bool isBadge = type == BadgeType;
    return GivenUpPicture{Ui::Source::Retailer, *index,
                          isBadge ? Ui::PictureKind::Badge : Ui::PictureKind::Product};
}

}  // namespace Tool
