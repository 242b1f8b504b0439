#include "BusReader.h"

#include <cstdint>
#include <cstring>
#include <utility>

#include "Received.h"

namespace Appliance {

namespace {

constexpr char More[] = "…";

template <typename Number>
Number basic(sd_bus_message* message, char type)
{
    Number value = 0;
    return sd_bus_message_read_basic(message, type, &value) > 0 ? value : Number{0};
}

}  // namespace

// One byte more than fits tells shortened() that there is more.
std::string BusReader::text()
{
    const char* raw = nullptr;
    if (sd_bus_message_read_basic(message_, SD_BUS_TYPE_STRING, &raw) <= 0) {
        return {};
    }
    return charged(shortened(std::string(raw, strnlen(raw, BytesKept + 1))));
}

std::string BusReader::charged(std::string text)
{
    if (text.size() > left_) {
        left_ = 0;
        return More;
    }
    left_ -= text.size();
    return text;
}

TextList BusReader::list()
{
    TextList texts;
    if (sd_bus_message_enter_container(message_, SD_BUS_TYPE_ARRAY, "s") <= 0) {
        return texts;
    }
    while (sd_bus_message_at_end(message_, 0) == 0) {
        if (texts.size() == MostElements || left_ == 0) {
            texts.emplace_back(More);
            break;
        }
        texts.push_back(text());
    }
    while (sd_bus_message_skip(message_, "s") > 0) {
    }
    sd_bus_message_exit_container(message_);
    return texts;
}

std::string BusReader::signedText()
{
    return std::to_string(signedNumber());
}

std::uint32_t BusReader::number()
{
    return basic<std::uint32_t>(message_, SD_BUS_TYPE_UINT32);
}

std::int32_t BusReader::signedNumber()
{
    return basic<std::int32_t>(message_, SD_BUS_TYPE_INT32);
}

Extras BusReader::extras()
{
    Extras extras;
    if (sd_bus_message_enter_container(message_, SD_BUS_TYPE_ARRAY, "{sv}") <= 0) {
        return extras;
    }
    while (sd_bus_message_enter_container(message_, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        if (left_ == 0 || extras.texts.size() + extras.lists.size() == MostExtras) {
            extras.texts[More] = More;
            break;
        }
        readEntry(extras);
        sd_bus_message_exit_container(message_);
    }
    return extras;
}

// Of a key that comes twice the last value counts.
void BusReader::readEntry(Extras& extras)
{
    const std::string key = text();
    const char* contents = nullptr;
    if (sd_bus_message_peek_type(message_, nullptr, &contents) <= 0) {
        return;
    }
    const std::string type = contents;
    extras.texts.erase(key);
    extras.lists.erase(key);
    if (type != "s" && type != "as") {
        sd_bus_message_skip(message_, "v");
        extras.texts[key] = charged(shortened("(of type " + type + ")"));
        return;
    }
    sd_bus_message_enter_container(message_, SD_BUS_TYPE_VARIANT, contents);
    if (type == "s") {
        extras.texts[key] = text();
    } else {
        extras.lists[key] = list();
    }
    sd_bus_message_exit_container(message_);
}

}  // namespace Appliance
