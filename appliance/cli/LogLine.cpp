#include "LogLine.h"

#include <regex>

#include "Terminal.h"

namespace Tool {

std::optional<LogLine> parseLogLine(const std::string& line)
{
    static const std::regex form("([VDIWEF])/(.*?) *\\( *([0-9]{1,9})\\): ?");
    std::smatch match;
    if (!std::regex_search(line, match, form, std::regex_constants::match_continuous)) {
        return std::nullopt;
    }
    const std::string text = line.substr(static_cast<std::size_t>(match.length(0)));
    return LogLine{line[0], match[2], std::stoi(match[3]), printable(withoutColours(text))};
}

std::string messageOf(const LogLine& line)
{
    static const std::string arrow = ") > ";
    const std::size_t at = line.text.find(arrow);
    return at == std::string::npos ? line.text : line.text.substr(at + arrow.size());
}

bool isServiceError(const LogLine& line)
{
    return line.priority == 'E' && line.tag == "carvoy-service";
}

std::optional<std::size_t> pictureGivenUp(const LogLine& line)
{
    static const std::regex form("Failed to startDownload for index ([0-9]{1,9})");
    const std::string message = messageOf(line);
    std::smatch match;
    if (!isServiceError(line) || !std::regex_match(message, match, form)) {
        return std::nullopt;
    }
    return std::stoul(match[1]);
}

}  // namespace Tool
