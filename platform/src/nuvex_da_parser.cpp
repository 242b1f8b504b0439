#include <nuvex-da-parser.h>

#include <json-glib/json-glib.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "Text.h"

// Objects belong to the parser of their response.
struct ndp_commerce_data_s {
    JsonObject* object = nullptr;
};

struct ndp_action_data_s {
    JsonObject* object = nullptr;
    ndp_commerce_data_s representative;
};

struct ndp_response_data_s {
    JsonParser* parser = json_parser_new();
    JsonObject* object = nullptr;
    ndp_action_data_s actionData;

    ndp_response_data_s() = default;
    ~ndp_response_data_s() { g_object_unref(parser); }
    ndp_response_data_s(const ndp_response_data_s&) = delete;
    ndp_response_data_s& operator=(const ndp_response_data_s&) = delete;
};

namespace {

constexpr int MaxNesting = 1024;

// What JSON has outside its texts, brackets apart: spaces; and numbers, true, false, null, separators.
constexpr const char* Spaces = " \t\r\n";
constexpr const char* WordCharacters = ",:0123456789+-.eEtrufalsn";

// Reads the four digits of an escape, and of fewer also what stands behind them, which json-glib takes with
// them. False where that is the text's closing quote, or begins the next escape.
bool readDigits(const char*& position, unsigned& value)
{
    value = 0;
    for (int shift = 12; shift >= 0; shift -= 4) {
        if (*position == '"' || *position == '\\' || !*position)
            return false;
        const char digit = *position++;
        if (!g_ascii_isxdigit(digit))
            return true;
        value |= static_cast<unsigned>(g_ascii_xdigit_value(digit)) << shift;
    }
    return true;
}

// The end of an escape; null for one in which json-glib loses its way. It takes what stands behind half of a
// surrogate pair with it, also the quote that closes the text, so that all that follows would be something
// else to it than to us; and where a wrong half follows it refuses the text and never releases it.
const char* endOfEscape(const char* position)
{
    if (position[1] != 'u' || !g_ascii_isxdigit(position[2]))
        return position + (position[1] ? 2 : 1);
    position += 2;
    unsigned first = 0;
    unsigned second = 0;
    if (!readDigits(position, first))
        return nullptr;
    if (first < 0xd800 || first > 0xdfff)
        return position;
    if (*position != '\\')
        return *position == '"' || !*position ? nullptr : position + 1;
    if (position[1] != 'u')
        return position + (position[1] ? 2 : 1);
    position += 2;
    const bool pair = readDigits(position, second) && first < 0xdc00 && second >= 0xdc00 && second <= 0xdfff;
    return pair ? position : nullptr;
}

// The end of the text that begins behind a double quote; null as above.
const char* endOfText(const char* position)
{
    while (position && *position && *position != '"')
        position = *position == '\\' ? endOfEscape(position) : position + 1;
    return position;
}

// json-glib 1.6 takes more than JSON, such as comments and several values in a row, and goes down into nested
// ones by recursion. What this refuses is not shown to it. Of what is left it checks the grammar, but for
// numbers, escapes and control characters in texts, with which it is generous, as far as it finds back.
bool isFitForParsing(const char* json)
{
    int depth = 0;
    int values = 0;  // outermost ones
    for (const char* position = json; *position; ++position) {
        if (strchr(Spaces, *position))
            continue;
        values += depth == 0 ? 1 : 0;
        if (*position == '"')
            position = endOfText(position + 1);
        else if (*position == '{' || *position == '[')
            ++depth;
        else if (*position == '}' || *position == ']')
            --depth;
        else if (const std::size_t length = strspn(position, WordCharacters))
            position += length - 1;
        else
            return false;
        if (!position || !*position || depth < 0 || depth > MaxNesting || values > 1)
            return false;
    }
    return true;
}

int parse(const char* json, ndp_response_data_s& response)
{
    if (!isFitForParsing(json) || !json_parser_load_from_data(response.parser, json, -1, nullptr))
        return NDP_ERROR_PARSE_JSON_FAILED;
    JsonNode* const root = json_parser_get_root(response.parser);
    if (!root)
        return NDP_ERROR_PARSE_JSON_FAILED;
    if (!JSON_NODE_HOLDS_OBJECT(root))
        return NDP_ERROR_INVALID_TYPE;
    response.object = json_node_get_object(root);
    return NDP_ERROR_NONE;
}

JsonNode* findMember(JsonObject* object, const char* name)
{
    JsonNode* const node = json_object_get_member(object, name);
    return node && !JSON_NODE_HOLDS_NULL(node) ? node : nullptr;
}

// json-glib makes bytes that are no UTF-8 out of an escape that is half a surrogate pair.
bool isText(JsonNode* node)
{
    return JSON_NODE_HOLDS_VALUE(node) && json_node_get_value_type(node) == G_TYPE_STRING &&
           g_utf8_validate(json_node_get_string(node), -1, nullptr);
}

int getText(JsonObject* object, const char* name, char** text)
{
    JsonNode* const node = findMember(object, name);
    if (!node)
        return NDP_ERROR_NO_SUCH_VALUE;
    if (!isText(node))
        return NDP_ERROR_INVALID_TYPE;
    return HostPlatform::handOut(json_node_get_string(node), text);
}

// Hands out a part of a response: a member that is an object.
template <typename Part>
int getPart(JsonObject* object, const char* name, Part& part, Part** out)
{
    JsonNode* const node = findMember(object, name);
    if (!node)
        return NDP_ERROR_NO_SUCH_VALUE;
    if (!JSON_NODE_HOLDS_OBJECT(node))
        return NDP_ERROR_INVALID_TYPE;
    part.object = json_node_get_object(node);
    *out = &part;
    return NDP_ERROR_NONE;
}

}  // namespace

int ndp_response_data_parse(const char* json, ndp_response_data_h* response)
{
    if (!json || !response)
        return NDP_ERROR_INVALID_PARAMETER;
    std::unique_ptr<ndp_response_data_s> created(new (std::nothrow) ndp_response_data_s);
    if (!created)
        return NDP_ERROR_OUT_OF_MEMORY;
    const int result = parse(json, *created);
    if (result == NDP_ERROR_NONE)
        *response = created.release();
    return result;
}

int ndp_response_data_destroy(ndp_response_data_h response)
{
    if (!response)
        return NDP_ERROR_INVALID_PARAMETER;
    delete response;
    return NDP_ERROR_NONE;
}

int ndp_response_data_get_action_name(ndp_response_data_h response, char** name)
{
    if (!response || !name)
        return NDP_ERROR_INVALID_PARAMETER;
    return getText(response->object, "actionName", name);
}

int ndp_response_data_get_action_data(ndp_response_data_h response, ndp_action_data_h* action_data)
{
    if (!response || !action_data)
        return NDP_ERROR_INVALID_PARAMETER;
    return getPart(response->object, "actionData", response->actionData, action_data);
}

int ndp_commerce_action_data_get_representative_commerce_data(ndp_action_data_h action_data,
                                                              ndp_commerce_data_h* commerce_data)
{
    if (!action_data || !commerce_data)
        return NDP_ERROR_INVALID_PARAMETER;
    return getPart(action_data->object, "representativeCommerceData", action_data->representative,
                   commerce_data);
}

int ndp_commerce_data_get_id(ndp_commerce_data_h commerce_data, char** id)
{
    if (!commerce_data || !id)
        return NDP_ERROR_INVALID_PARAMETER;
    return getText(commerce_data->object, "id", id);
}
