#include "Wire.h"

#include <systemd/sd-bus.h>

#include "BusCalls.h"

namespace HostPlatform::Wire {

namespace {

std::vector<std::string> plainTexts(const TextList& list)
{
    std::vector<std::string> texts;
    for (const Text& text : list)
        texts.push_back(text.value_or(""));
    return texts;
}

void writeValue(sdbus::Message& message, const ExtraData::Value& value)
{
    const auto* text = std::get_if<std::string>(&value);
    message.openVariant(text ? "s" : "as");
    if (text)
        message << *text;
    else
        message << plainTexts(std::get<TextList>(value));
    message.closeVariant();
}

ExtraData::Value readText(sdbus::Message& message)
{
    std::string text;
    message >> text;
    return text;
}

ExtraData::Value readList(sdbus::Message& message)
{
    std::vector<std::string> texts;
    message >> texts;
    return TextList(texts.begin(), texts.end());
}

ExtraData::Value readValue(sdbus::Message& message, const std::string& key)
{
    std::string type;
    std::string contents;
    message.peekType(type, contents);
    if (contents != "s" && contents != "as")
        throw sdbus::Error(BusCalls::InvalidArgs,
                           "extra \"" + key + "\" has type " + contents + "; s and as are allowed");
    message.enterVariant(contents);
    ExtraData::Value value = contents == "s" ? readText(message) : readList(message);
    message.exitVariant();
    return value;
}

}  // namespace

void writeExtraData(sdbus::Message& message, const ExtraData& extraData)
{
    message.openContainer("{sv}");
    for (const std::string& key : extraData.keys()) {
        message.openDictEntry("sv");
        message << key;
        writeValue(message, *extraData.find(key));
        message.closeDictEntry();
    }
    message.closeContainer();
}

ExtraData readExtraData(sdbus::Message& message)
{
    ExtraData extraData;
    message.enterContainer("{sv}");
    while (message.enterDictEntry("sv")) {
        std::string key;
        message >> key;
        extraData.set(key, readValue(message, key));
        message.exitDictEntry();
    }
    message.clearFlags();
    message.exitContainer();
    return extraData;
}

bool isAppName(const std::string& name)
{
    return name[0] != ':' && sd_bus_service_name_is_valid(name.c_str()) > 0;
}

}  // namespace HostPlatform::Wire
