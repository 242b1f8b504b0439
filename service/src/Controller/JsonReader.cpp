#include "JsonReader.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace Carvoy::JsonReader {

namespace {

constexpr int MAX_NESTING = 1024;

/** Whether a message can carry the text: it is UTF-8, and has none of the code points that stand for no
 * character. */
bool isCarried(const char* text)
{
    if (!g_utf8_validate(text, -1, nullptr))
        return false;
    for (const char* position = text; *position; position = g_utf8_next_char(position)) {
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

/**
 * Reads the four digits of an escape, and of fewer also what stands behind them, which json-glib 1.6 takes
 * with them. False where that is the text's closing quote, or begins the next escape.
 */
bool readDigits(const std::string& text, size_t& position, unsigned& value)
{
    value = 0;
    for (int shift = 12; shift >= 0; shift -= 4) {
        const char c = text[position];
        if (c == '"' || c == '\\' || c == '\0')
            return false;
        ++position;
        if (!g_ascii_isxdigit(c))
            return true;
        value |= static_cast<unsigned>(g_ascii_xdigit_value(c)) << shift;
    }
    return true;
}

/**
 * The position behind the escape at `begin`; npos for one in which json-glib loses its way. It takes what
 * stands behind half of a character with it, also the quote that closes the text, so that all that follows
 * would be something else to it than to us; and where a wrong half follows it refuses the text and never
 * releases it.
 */
size_t endOfEscape(const std::string& text, size_t begin)
{
    size_t end = begin + 2;
    if (end >= text.size() || text[begin + 1] != 'u' || !g_ascii_isxdigit(text[end]))
        return end;
    unsigned first = 0;
    unsigned second = 0;
    if (!readDigits(text, end, first))
        return std::string::npos;
    if (first < 0xD800 || first > 0xDFFF)
        return end;
    if (text[end] != '\\')
        return text[end] == '"' ? std::string::npos : end + 1;
    if (text[end + 1] != 'u')
        return end + 2;
    end += 2;
    const bool isPair =
        readDigits(text, end, second) && first < 0xDC00 && second >= 0xDC00 && second <= 0xDFFF;
    return isPair ? end : std::string::npos;
}

/** The position of the double quote that closes the text which `begin` is the first byte of; npos as above.
 */
size_t endOfString(const std::string& text, size_t begin)
{
    while (begin < text.size() && text[begin] != '"')
        begin = text[begin] == '\\' ? endOfEscape(text, begin) : begin + 1;
    return begin;
}

/**
 * True if json-glib would go deeper than MAX_NESTING in `text`, or that cannot be told. "var name =", which
 * it takes in front of a value, and in front of another one of these, is a level like a bracket's that is
 * never closed. Where a text leaves plain JSON (comments, single quotes: json-glib takes some of them), all
 * brackets behind that point count as opening ones, so that nothing can be hidden from the count.
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
                if (i == std::string::npos)
                    return true;
                break;
            case '/':
            case '\'':
                isPlain = false;
                break;
            case '[':
            case '{':
            case '=':
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

/**
 * The position of what closes the text or the comment that begins at `begin`; npos if nothing does, or as
 * above. json-glib takes single quotes, in which nothing is escaped, and comments from one slash to the next.
 */
size_t endOfHidden(const std::string& text, size_t begin)
{
    return text[begin] == '"' ? endOfString(text, begin + 1) : text.find(text[begin], begin + 1);
}

/**
 * True if an object or array stands behind another value: json-glib 1.6 takes that, and never releases it.
 * True also for a comment without its end. In front of a value there may be a byte order mark, and "var name
 * =".
 *
 * Behind that json-glib overlooks a mistake that a semicolon follows, and begins anew, whatever was open.
 * True therefore also for a bracket too many, a semicolon between brackets, and a name that cannot be one.
 */
bool hasSecondValue(const std::string& text)
{
    int depth = 0;
    bool hasValue = false;
    bool isName = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool isOpening = c == '[' || c == '{';
        const bool isClosing = c == ']' || c == '}';
        if (depth == 0 && (isClosing || (hasValue && isOpening)))
            return true;
        if ((depth > 0 && c == ';') || (isName && strchr("\"'[]{};", c)))
            return true;
        if (isName)
            isName = c != '=';
        else if (depth == 0 && !hasValue && text.compare(i, 3, "var") == 0)
            isName = true;
        else if (depth == 0 && !strchr(" \t\r\n/\xEF\xBB\xBF", c))
            hasValue = true;
        depth += isOpening ? 1 : 0;
        depth -= isClosing ? 1 : 0;
        if (c == '"' || c == '\'' || c == '/')
            i = endOfHidden(text, i);
        if (i == std::string::npos)
            return true;
    }
    return false;
}

}  // namespace

bool load(JsonParser* parser, const std::string& text)
{
    if (isTooDeep(text) || hasSecondValue(text))
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
