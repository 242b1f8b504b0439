#include "Terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <regex>

namespace Tool {

namespace {

const char ReplacementCharacter[] = "\xEF\xBF\xBD";

const std::regex& colourSequence()
{
    static const std::regex sequence("\x1B\\[[0-9;]*m");
    return sequence;
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
    return std::regex_replace(text, colourSequence(), "");
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
    for (std::sregex_iterator at(text.begin(), text.end(), colourSequence()), end; at != end; ++at) {
        const auto start = static_cast<std::size_t>(at->position());
        clean += printable(text.substr(done, start - done)) + at->str();
        done = start + static_cast<std::size_t>(at->length());
    }
    return clean + printable(text.substr(done));
}

}  // namespace Tool
