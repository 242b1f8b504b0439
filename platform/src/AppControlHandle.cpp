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

}  // namespace

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

bool isReservedKey(const std::string& key)
{
    return startsWith(key, "__AUL_") || startsWith(key, "__APP_SVC_");
}

}  // namespace HostPlatform
