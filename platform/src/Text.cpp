#include "Text.h"

#include <tizen.h>

#include <cstring>

namespace HostPlatform {

namespace {

// The number of bytes of a sequence that starts with this byte; 0 where none can.
int sequenceLength(unsigned char first)
{
    if (first < 0x80)
        return 1;
    if (first >= 0xc2 && first <= 0xdf)
        return 2;
    if (first >= 0xe0 && first <= 0xef)
        return 3;
    return first >= 0xf0 && first <= 0xf4 ? 4 : 0;
}

// A code point that was written with as few bytes as possible and may stand in a text of the bus.
bool isTextCodePoint(std::uint32_t point, int length)
{
    constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = point >= 0xd800 && point <= 0xdfff;
    const bool noncharacter = (point >= 0xfdd0 && point <= 0xfdef) || (point & 0xfffe) == 0xfffe;
    return point >= smallest[length] && point <= 0x10ffff && !surrogate && !noncharacter;
}

// The length of the valid sequence at the start of what is left of a text; 0 where there is none.
int validSequence(const unsigned char* bytes, std::size_t left)
{
    const int length = sequenceLength(bytes[0]);
    if (length <= 1)
        return length;
    if (static_cast<std::size_t>(length) > left)
        return 0;
    std::uint32_t point = bytes[0] & (0x7fU >> length);
    for (int i = 1; i < length; ++i) {
        if ((bytes[i] & 0xc0) != 0x80)
            return 0;
        point = point << 6 | (bytes[i] & 0x3fU);
    }
    return isTextCodePoint(point, length) ? length : 0;
}

}  // namespace

bool isUtf8(const std::string& text)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    for (std::size_t i = 0; i < text.size();) {
        const int length = validSequence(bytes + i, text.size() - i);
        if (length == 0)
            return false;
        i += static_cast<std::size_t>(length);
    }
    return true;
}

std::size_t sizeOf(const Text& text)
{
    return text ? text->size() : 0;
}

int handOut(const char* text, char** out)
{
    char* const copy = strdup(text);
    if (!copy)
        return TIZEN_ERROR_OUT_OF_MEMORY;
    *out = copy;
    return TIZEN_ERROR_NONE;
}

}  // namespace HostPlatform
