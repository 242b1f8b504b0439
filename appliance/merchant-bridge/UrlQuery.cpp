// The HTTP library's own parameters lose a value's text up to its last unescaped '='.
#include "UrlQuery.h"

#include <algorithm>
#include <charconv>

namespace Appliance::MerchantBridge {
namespace {

// Whether two hexadecimal digits stand at `text`'s front, and what they say.
bool readEscape(std::string_view text, unsigned char& byte)
{
    if (text.size() < 2)
        return false;
    const auto [end, error] = std::from_chars(text.data(), text.data() + 2, byte, 16);
    return error == std::errc() && end == text.data() + 2;
}

std::string unescape(std::string_view text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        if (text[i] == '%' && readEscape(text.substr(i + 1), byte)) {
            plain += static_cast<char>(byte);
            i += 2;
        } else {
            plain += text[i] == '+' ? ' ' : text[i];
        }
    }
    return plain;
}

}  // namespace

std::map<std::string, std::string> parseUrlQuery(std::string_view target)
{
    std::map<std::string, std::string> parameters;
    std::size_t begin = target.find('?');
    while (begin != std::string_view::npos) {
        const std::size_t end = target.find('&', begin + 1);
        const std::string_view part =
            target.substr(begin + 1, end == std::string_view::npos ? end : end - begin - 1);
        const std::size_t equals = std::min(part.find('='), part.size());
        parameters.emplace(unescape(part.substr(0, equals)),
                           unescape(part.substr(std::min(equals + 1, part.size()))));
        begin = end;
    }
    return parameters;
}

}  // namespace Appliance::MerchantBridge
