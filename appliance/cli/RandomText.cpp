#include "RandomText.h"

#include <random>

namespace Tool {

std::string randomHex(std::size_t length)
{
    static const char digits[] = "0123456789abcdef";
    std::random_device source;
    std::uniform_int_distribution<std::size_t> digit(0, sizeof digits - 2);
    std::string text;
    while (text.size() < length) {
        text += digits[digit(source)];
    }
    return text;
}

}  // namespace Tool
