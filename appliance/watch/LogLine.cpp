#include "LogLine.h"

#include <algorithm>
#include <string_view>

#include "PlainText.h"
#include "WholeNumber.h"

namespace Appliance {

namespace {

constexpr std::string_view Priorities = "VDIWEF";
constexpr std::string_view Arrow = ") > ";

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

std::optional<LogPlace> placeOf(const LogLine& line)
{
    const std::optional<int> thread = threadOf(line);
    const std::size_t arrow = line.text.find(Arrow);
    if (!thread || arrow == std::string::npos) {
        return std::nullopt;
    }
    std::string_view place = std::string_view(line.text).substr(0, arrow);
    place.remove_prefix(std::min(place.find("] ") + 2, place.size()));
    const std::size_t colon = place.find(": ");
    const std::size_t open = place.rfind('(');
    const bool hasForm =
        colon != std::string_view::npos && colon > 0 && open != std::string_view::npos && open > colon + 2;
    const auto number = hasForm ? numberFrom<int>(place.substr(open + 1)) : std::nullopt;
    if (!number) {
        return std::nullopt;
    }
    return LogPlace{*thread, std::string(place.substr(0, colon)),
                    std::string(place.substr(colon + 2, open - colon - 2)), *number};
}

std::string messageOf(const LogLine& line)
{
    const std::size_t at = line.text.find(Arrow);
    return at == std::string::npos ? line.text : line.text.substr(at + Arrow.size());
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

}  // namespace Appliance
