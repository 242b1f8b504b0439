// An input as a source of numbers and texts.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Text.h"

namespace Fuzz {

/** Takes values from the front of the input, which must outlive it; all are 0 and empty when it is used up.
 */
class Bytes {
  public:
    Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    bool empty() const { return size_ == 0; }

    /** One byte. */
    unsigned number() { return empty() ? 0 : take(1)[0]; }

    /** A text that can be on the bus; in the input a byte with its length stands before it. */
    std::string text()
    {
        const size_t length = std::min<size_t>(number(), size_);
        std::string text = std::string(reinterpret_cast<const char*>(take(length)), length).c_str();
        if (!HostPlatform::isUtf8(text))
            std::replace_if(
                text.begin(), text.end(), [](unsigned char c) { return c >= 0x80; }, '?');
        return text;
    }

  private:
    const uint8_t* take(size_t count)
    {
        const uint8_t* const front = data_;
        data_ += count;
        size_ -= count;
        return front;
    }

    const uint8_t* data_;
    size_t size_;
};

}  // namespace Fuzz
