#include "LogLine.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "Terminal.h"

namespace Tool {

namespace {

constexpr std::string_view Priorities = "VDIWEF";
constexpr std::string_view GivenUp = "Failed to startDownload for index ";
constexpr std::string_view PictureType = ", type: 0";
constexpr std::string_view BadgeType = ", type: 2";

// The whole text as a number without a sign.
template <typename Number>
std::optional<Number> numberFrom(std::string_view text)
{
    Number value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    const bool whole = error == std::errc() && stop == end && text[0] != '-';
    return whole ? std::optional<Number>(value) : std::nullopt;
}

std::string_view withoutBlanksInFront(std::string_view text)
{
    return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

std::string_view withoutBlanksBehind(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace

std::optional<LogLine> parseLogLine(const std::string& line)
{
    const std::string_view text = line;
    const std::size_t open = text.find('(');
    const std::size_t close = text.find("):", open);
    const bool hasForm = text.size() > 2 && Priorities.find(text[0]) != std::string_view::npos &&
                         text[1] == '/' && close != std::string_view::npos;
    if (!hasForm) {
        return std::nullopt;
    }
    const auto pid = numberFrom<int>(withoutBlanksInFront(text.substr(open + 1, close - open - 1)));
    if (!pid) {
        return std::nullopt;
    }
    const std::string_view tag = withoutBlanksBehind(text.substr(2, open - 2));
    std::string message(text.substr(close + 2));
    if (!message.empty() && message[0] == ' ') {
        message.erase(0, 1);
    }
    return LogLine{line[0], std::string(tag), *pid, printable(withoutColours(message))};
}

std::string messageOf(const LogLine& line)
{
    static const std::string arrow = ") > ";
    const std::size_t at = line.text.find(arrow);
    return at == std::string::npos ? line.text : line.text.substr(at + arrow.size());
}

std::optional<int> threadOf(const LogLine& line)
{
    const std::size_t close = line.text.find("] ");
    const bool hasForm = !line.text.empty() && line.text[0] == '[' && close != std::string::npos && close > 1;
    return hasForm ? numberFrom<int>(std::string_view(line.text).substr(1, close - 1)) : std::nullopt;
}

bool isServiceError(const LogLine& line)
{
    return line.priority == 'E' && line.tag == "carvoy-service";
}

// "INDEX" from the service, "INDEX, type: TYPE" from the retailer's.
std::optional<GivenUpPicture> pictureGivenUp(const LogLine& line)
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
