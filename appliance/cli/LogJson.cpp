#include "LogJson.h"

#include "LogFilter.h"
#include "LogLine.h"
#include "PlainText.h"

namespace Tool {

nlohmann::json logJson(const std::string& line)
{
    nlohmann::json json;
    for (const char* part : {"level", "tag", "pid", "thread", "file", "function", "line"}) {
        json[part] = nullptr;
    }
    const auto parts = Appliance::parseLogLine(line);
    if (!parts) {
        json["message"] = Appliance::printable(Appliance::withoutColours(line));
        return json;
    }
    const auto place = Appliance::placeOf(*parts);
    json["level"] = nameOfLevel(parts->priority);
    json["tag"] = parts->tag;
    json["pid"] = parts->pid;
    json["message"] = place ? Appliance::messageOf(*parts) : parts->text;
    if (place) {
        json["thread"] = place->thread;
        json["file"] = place->file;
        json["function"] = place->function;
        json["line"] = place->line;
    }
    return json;
}

}  // namespace Tool
