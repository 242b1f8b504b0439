#include "PlatformLog.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <utility>

namespace ServiceTest {

namespace {

using Clock = std::chrono::steady_clock;

int remaining(Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

std::string levelOf(char priority, int colour)
{
    static const std::map<std::pair<char, int>, std::string> levels{
        {{'D', 32}, "debug"}, {{'I', 34}, "info"}, {{'E', 31}, "error"}};
    const auto level = levels.find({priority, colour});
    return level == levels.end() ? "" : level->second;
}

// PRIORITY/carvoy-service(PID): ESC[COLOURm[THREAD] FILE: FUNCTION(LINE) > MESSAGEESC[0m
LogLine lineOf(const std::string& text)
{
    char priority = 0;
    int colour = 0;
    LogLine line;
    char file[128];
    int end = 0;
    sscanf(text.c_str(), "%c/carvoy-service(%*d): \033[%dm[%d] %127[^:]: %n", &priority, &colour,
           &line.thread, file, &end);
    const std::size_t place = text.find(") > ");
    const std::size_t reset = text.rfind("\033[0m");
    if (end == 0 || place == std::string::npos || reset != text.size() - 4)
        return {"", 0, "", "", 0, text};
    const std::size_t number = text.rfind('(', place);
    line.level = levelOf(priority, colour);
    line.file = file;
    line.function = text.substr(static_cast<std::size_t>(end), number - static_cast<std::size_t>(end));
    line.line = std::stoi(text.substr(number + 1));
    line.message = text.substr(place + 4, reset - place - 4);
    return line;
}

std::vector<LogLine> parse(const std::string& content)
{
    std::vector<LogLine> lines;
    for (const std::string& text : linesOf(content))
        lines.push_back(lineOf(text));
    return lines;
}

std::size_t countIn(const std::vector<LogLine>& lines, const std::string& message)
{
    return static_cast<std::size_t>(std::count_if(
        lines.begin(), lines.end(), [&](const LogLine& line) { return line.message == message; }));
}

}  // namespace

bool waitForContent(const std::string& path, const std::function<bool(const std::string&)>& fits,
                    std::chrono::milliseconds limit)
{
    const auto deadline = Clock::now() + limit;
    const int notifier = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    const std::string folder = std::filesystem::path(path).parent_path();
    inotify_add_watch(notifier, folder.c_str(), IN_MODIFY | IN_MOVED_TO | IN_CREATE);
    pollfd watch{notifier, POLLIN, 0};
    bool found = fits(contentOf(path));
    while (!found && poll(&watch, 1, remaining(deadline)) > 0) {
        char events[4096];
        while (read(notifier, events, sizeof events) > 0) {
        }
        found = fits(contentOf(path));
    }
    close(notifier);
    return found;
}

std::string LogLine::text() const
{
    return file + ":" + std::to_string(line) + " " + function + " " + level + ": " + message;
}

std::string LogLine::plain() const
{
    return "[" + function + ":" + std::to_string(line) + "] " + message;
}

std::vector<LogLine> PlatformLog::lines() const
{
    return parse(contentOf(path_));
}

std::vector<std::string> PlatformLog::texts() const
{
    std::vector<std::string> texts;
    for (const LogLine& line : lines())
        texts.push_back(line.text());
    return texts;
}

std::size_t PlatformLog::count(const std::string& message) const
{
    return countIn(lines(), message);
}

bool PlatformLog::waitFor(const std::string& message, std::size_t count,
                          std::chrono::milliseconds limit) const
{
    const auto fits = [&](const std::string& content) { return countIn(parse(content), message) >= count; };
    return waitForContent(path_, fits, limit);
}

}  // namespace ServiceTest
