#include "Terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>

namespace Tool {

namespace {

std::string coloured(bool colour, const char* code, const std::string& text)
{
    return colour ? "\x1B[" + std::string(code) + "m" + text + "\x1B[0m" : text;
}

bool isSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool isDumb()
{
    const char* terminal = std::getenv("TERM");
    return terminal != nullptr && std::string(terminal) == "dumb";
}

}  // namespace

std::string Style::bold(const std::string& text) const
{
    return coloured(colour, "1", text);
}

std::string Style::dim(const std::string& text) const
{
    return coloured(colour, "2", text);
}

std::string Style::red(const std::string& text) const
{
    return coloured(colour, "31", text);
}

std::string Style::green(const std::string& text) const
{
    return coloured(colour, "32", text);
}

void useUtf8()
{
    std::setlocale(LC_CTYPE, "");
    if (std::string(nl_langinfo(CODESET)) != "UTF-8") {
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
}

bool isTerminal(int fd)
{
    return isatty(fd) == 1;
}

Style styleOf(int fd)
{
    constexpr int usualWidth = 80;
    if (!isTerminal(fd)) {
        return {};
    }
    winsize size{};
    const bool known = ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return {!isSet("NO_COLOR") && !isDumb(), known ? size.ws_col : usualWidth};
}

}  // namespace Tool
