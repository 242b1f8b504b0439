#include "Terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <string_view>

namespace Tool {

namespace {

const char ReplacementCharacter[] = "\xEF\xBF\xBD";

// How long the SGR sequence (ESC [ digits and semicolons m) at this place is; 0 where there is none.
std::size_t colourLength(std::string_view text, std::size_t at)
{
    if (text.substr(at, 2) != "\x1B[") {
        return 0;
    }
    const std::size_t end = text.find_first_not_of("0123456789;", at + 2);
    return end != std::string_view::npos && text[end] == 'm' ? end + 1 - at : 0;
}

std::string coloured(bool colour, const char* code, const std::string& text)
{
    return colour ? "\x1B[" + std::string(code) + "m" + text + "\x1B[0m" : text;
}

bool isControl(unsigned char byte)
{
    constexpr unsigned char firstPrintable = 0x20;
    constexpr unsigned char del = 0x7F;
    return byte < firstPrintable || byte == del;
}

// U+0080 to U+009F, which terminals obey like their two-byte forms.
bool isC1(unsigned char lead, unsigned char second)
{
    return lead == 0xC2 && second < 0xA0;
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

std::string withoutColours(const std::string& text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = colourLength(text, i);
        if (length == 0) {
            plain += text[i];
        }
        i += length == 0 ? 1 : length;
    }
    return plain;
}

std::string printable(const std::string& text)
{
    std::string clean;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : '\xFF';
        if (isControl(byte)) {
            clean += ReplacementCharacter;
        } else if (isC1(byte, next)) {
            clean += ReplacementCharacter;
            ++i;
        } else {
            clean += text[i];
        }
    }
    return clean;
}

std::string printableWithColours(const std::string& text)
{
    std::string clean;
    std::size_t done = 0;
    for (std::size_t at = 0; (at = text.find('\x1B', at)) != std::string::npos;) {
        const std::size_t length = colourLength(text, at);
        if (length > 0) {
            clean += printable(text.substr(done, at - done)) + text.substr(at, length);
            done = at + length;
        }
        at += length == 0 ? 1 : length;
    }
    return clean + printable(text.substr(done));
}

}  // namespace Tool
