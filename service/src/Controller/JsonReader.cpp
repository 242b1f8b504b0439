#include "JsonReader.h"

#include <cmath>
#include <cstdint>

namespace Carvoy::JsonReader {

namespace {

constexpr int MAX_NESTING = 1024;

/** The value of the member if it is of a plain type (text, number, truth value), else null. */
JsonNode* valueMember(JsonObject* object, const char* name)
{
    JsonNode* node = json_object_get_member(object, name);
    return node && JSON_NODE_HOLDS_VALUE(node) ? node : nullptr;
}

/** The position of the double quote that closes the text which `begin` is the first byte of. */
size_t endOfString(const std::string& text, size_t begin)
{
    while (begin < text.size() && text[begin] != '"')
        begin += text[begin] == '\\' ? 2 : 1;
    return begin;
}

/**
 * True if json-glib would go deeper than MAX_NESTING in `text`. Where a text leaves plain JSON (comments,
 * single quotes: json-glib takes some of them), all brackets behind that point count as opening ones, so that
 * nothing can be hidden from the count.
 */
bool isTooDeep(const std::string& text)
{
    int depth = 0;
    bool isPlain = true;
    for (size_t i = 0; i < text.size(); ++i) {
        switch (text[i]) {
            case '"':
                if (isPlain)
                    i = endOfString(text, i + 1);
                break;
            case '/':
            case '\'':
                isPlain = false;
                break;
            case '[':
            case '{':
                if (++depth > MAX_NESTING)
                    return true;
                break;
            case ']':
            case '}':
                if (isPlain && depth > 0)
                    --depth;
                break;
            default:
                break;
        }
    }
    return false;
}

}  // namespace

bool load(JsonParser* parser, const std::string& text)
{
    if (isTooDeep(text))
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
    return text && g_utf8_validate(text, -1, nullptr) ? text : nullptr;
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
