#include "AppControlHandle.h"

#include <algorithm>

namespace HostPlatform {

namespace {

bool startsWith(const std::string& text, const char* prefix)
{
    return text.rfind(prefix, 0) == 0;
}

std::size_t valueSize(const ExtraData::Value& value)
{
    if (const auto* text = std::get_if<std::string>(&value))
        return text->size();
    std::size_t size = 0;
    for (const Text& element : std::get<TextList>(value))
        size += sizeOf(element);
    return size;
}

bool isValueUtf8(const ExtraData::Value& value)
{
    if (const auto* text = std::get_if<std::string>(&value))
        return isUtf8(*text);
    const TextList& list = std::get<TextList>(value);
    return std::all_of(list.begin(), list.end(), [](const Text& text) { return !text || isUtf8(*text); });
}

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

std::size_t sizeOf(const Text& text)
{
    return text ? text->size() : 0;
}

bool isFinalResult(int result)
{
    return result == APP_CONTROL_RESULT_SUCCEEDED || result == APP_CONTROL_RESULT_FAILED ||
           result == APP_CONTROL_RESULT_CANCELED;
}

void ExtraData::set(const std::string& key, Value value)
{
    const auto [entry, added] = entries_.try_emplace(key, Entry{{}, nextPlace_});
    entry->second.value = std::move(value);
    nextPlace_ += added ? 1 : 0;
}

bool ExtraData::remove(const std::string& key)
{
    return entries_.erase(key) > 0;
}

const ExtraData::Value* ExtraData::find(const std::string& key) const
{
    const auto entry = entries_.find(key);
    return entry == entries_.end() ? nullptr : &entry->second.value;
}

std::vector<std::string> ExtraData::keys() const
{
    std::vector<decltype(entries_)::const_pointer> entries;
    for (const auto& entry : entries_)
        entries.push_back(&entry);
    std::sort(entries.begin(), entries.end(),
              [](const auto* a, const auto* b) { return a->second.place < b->second.place; });
    std::vector<std::string> keys;
    for (const auto* entry : entries)
        keys.push_back(entry->first);
    return keys;
}

std::size_t ExtraData::size() const
{
    std::size_t size = 0;
    for (const auto& [key, entry] : entries_)
        size += key.size() + valueSize(entry.value);
    return size;
}

bool ExtraData::isUtf8() const
{
    return std::all_of(entries_.begin(), entries_.end(), [](const auto& entry) {
        return HostPlatform::isUtf8(entry.first) && isValueUtf8(entry.second.value);
    });
}

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

bool isReservedKey(const std::string& key)
{
    return startsWith(key, "__AUL_") || startsWith(key, "__APP_SVC_");
}

}  // namespace HostPlatform
