#include "LogLine.h"

#include <algorithm>
#include <string_view>

#include "PlainText.h"
#include "WholeNumber.h"

namespace Appliance {

namespace {

constexpr std::string_view Priorities = "VDIWEF";

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

}  // namespace Appliance
