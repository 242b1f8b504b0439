#include "PlainText.h"

#include <string_view>

namespace Appliance {

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

}  // namespace

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

}  // namespace Appliance
