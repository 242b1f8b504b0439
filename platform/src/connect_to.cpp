#include "connect_to.h"

#include <cctype>
#include <charconv>
#include <sstream>

namespace HostPlatform {

namespace {

// The colons of an address in square brackets do not separate.
std::vector<std::string> fieldsOf(const std::string& entry)
{
    std::vector<std::string> fields{""};
    bool inBrackets = false;
    for (const char character : entry) {
        if (character == '[' || character == ']')
            inBrackets = character == '[';
        if (character == ':' && !inBrackets)
            fields.emplace_back();
        else
            fields.back() += character;
    }
    return fields;
}

bool isHost(const std::string& text)
{
    for (const char character : text) {
        const bool plain = std::isalnum(static_cast<unsigned char>(character)) != 0;
        if (!plain && std::string(".-_[]:%").find(character) == std::string::npos)
            return false;
    }
    const bool opens = !text.empty() && text.front() == '[';
    const bool closes = !text.empty() && text.back() == ']';
    return opens == closes && text.find('[', 1) == std::string::npos;
}

bool isPort(const std::string& text)
{
    int port = 1;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, port);
    return text.empty() || (error == std::errc() && stop == end && port >= 1 && port <= 65535);
}

bool isEntry(const std::string& text)
{
    const std::vector<std::string> fields = fieldsOf(text);
    return fields.size() == 4 && isHost(fields[0]) && isPort(fields[1]) && isHost(fields[2]) &&
           isPort(fields[3]);
}

}  // namespace

ConnectTo parseConnectTo(const std::string& setting)
{
    ConnectTo read;
    std::istringstream texts(setting);
    for (std::string text; std::getline(texts, text, ',');)
        if (!text.empty())
            (isEntry(text) ? read.entries : read.malformed).push_back(text);
    return read;
}

}  // namespace HostPlatform
