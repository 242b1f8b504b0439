#include "JsonReader.h"

#include <cmath>
#include <cstdint>

#include "JsonShape.h"

namespace Carvoy::JsonReader {

namespace {

/** The smallest byte that a code point begins with which stands for no character. */
constexpr unsigned char FIRST_OF_NONCHARACTERS = 0xEF;

/** Whether a message can carry the text: it is UTF-8, and has none of the code points that stand for no
 * character. */
bool isCarried(const char* text)
{
    if (!g_utf8_validate(text, -1, nullptr))
        return false;
    for (const char* position = text; *position; position = g_utf8_next_char(position)) {
        if (static_cast<unsigned char>(*position) < FIRST_OF_NONCHARACTERS)
            continue;
        const gunichar point = g_utf8_get_char(position);
        if ((point >= 0xFDD0 && point <= 0xFDEF) || (point & 0xFFFE) == 0xFFFE)
            return false;
    }
    return true;
}

/** The value of the member if it is of a plain type (text, number, truth value), else null. */
JsonNode* valueMember(JsonObject* object, const char* name)
{
    JsonNode* node = json_object_get_member(object, name);
    return node && JSON_NODE_HOLDS_VALUE(node) ? node : nullptr;
}

}  // namespace

bool load(JsonParser* parser, const std::string& text)
{
    if (!JsonShape::isFitForParser(text))
        return false;
    return json_parser_load_from_data(parser, text.c_str(), static_cast<gssize>(text.size()), nullptr);
}

const char* loadObject(JsonParserPtr& parser, const std::string& text, JsonObject*& root)
{
    parser.reset(json_parser_new());
    if (!parser)
        return "Couldn't create json parser";
    if (!load(parser.get(), text))
        return "json_parser_load_from_data() failed";
    JsonNode* node = json_parser_get_root(parser.get());
    if (!node)
        return "json_parser_get_root() failed";
    if (json_node_get_node_type(node) != JSON_NODE_OBJECT)
        return "Invalid json type";
    JsonObject* object = json_node_get_object(node);
    if (!object)
        return "json_node_get_object() failed";
    root = object;
    return nullptr;
}

JsonObject* objectMember(JsonObject* object, const char* name)
{
    JsonNode* node = json_object_get_member(object, name);
    return node && JSON_NODE_HOLDS_OBJECT(node) ? json_object_get_object_member(object, name) : nullptr;
}

JsonArray* arrayMember(JsonObject* object, const char* name)
{
    JsonNode* node = json_object_get_member(object, name);
    return node && JSON_NODE_HOLDS_ARRAY(node) ? json_object_get_array_member(object, name) : nullptr;
}

JsonObject* objectElement(JsonArray* array, unsigned index)
{
    if (index >= json_array_get_length(array))
        return nullptr;
    JsonNode* node = json_array_get_element(array, index);
    return JSON_NODE_HOLDS_OBJECT(node) ? json_array_get_object_element(array, index) : nullptr;
}

JsonObject* firstObjectOf(JsonObject* object, const char* arrayName)
{
    JsonArray* array = arrayMember(object, arrayName);
    return array ? objectElement(array, 0) : nullptr;
}

const char* stringMember(JsonObject* object, const char* name)
{
    JsonNode* node = valueMember(object, name);
    bool isString = node && json_node_get_value_type(node) == G_TYPE_STRING;
    const char* text = isString ? json_object_get_string_member(object, name) : nullptr;
    return text && isCarried(text) ? text : nullptr;
}

void assignString(std::string& slot, JsonObject* object, const char* name)
{
    if (const char* text = stringMember(object, name))
        slot = text;
}

std::optional<int> intMember(JsonObject* object, const char* name)
{
    JsonNode* node = valueMember(object, name);
    if (!node)
        return std::nullopt;
    GType type = json_node_get_value_type(node);
    bool isFraction = type == G_TYPE_DOUBLE && std::abs(json_node_get_double(node)) < 0x1p63;
    if (type != G_TYPE_INT64 && !isFraction)
        return std::nullopt;
    return static_cast<int32_t>(json_object_get_int_member(object, name));
}

}  // namespace Carvoy::JsonReader
