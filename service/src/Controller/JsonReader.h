// Reading answers of servers that nobody here controls: every member may be missing or of any type.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <json-glib/json-glib.h>

namespace Carvoy {

struct JsonParserDeleter {
    void operator()(JsonParser* parser) const { g_object_unref(parser); }
};
using JsonParserPtr = std::unique_ptr<JsonParser, JsonParserDeleter>;

/**
 * Functions on json-glib's objects that never reach one of its assertions, whatever the text held. What they
 * return belongs to the parser. Used by one thread at a time.
 */
namespace JsonReader {

/** Loads `text`. False if it is not JSON, and if JsonShape finds that json-glib must not see it. */
bool load(JsonParser* parser, const std::string& text);

/**
 * Loads `text` and gives its root in `root`, which must be an object, and which a new parser in `parser`
 * owns. Returns null, or what is wrong, in words for the log; `root` is then as it was.
 */
const char* loadObject(JsonParserPtr& parser, const std::string& text, JsonObject*& root);

/** The member as an object; null if there is none or it is something else. */
JsonObject* objectMember(JsonObject* object, const char* name);

/** The member as an array; null if there is none or it is something else. */
JsonArray* arrayMember(JsonObject* object, const char* name);

/** The element as an object; null if there is none or it is something else. */
JsonObject* objectElement(JsonArray* array, unsigned index);

/** The first element of the array member, as an object; null where any link of that is missing. */
JsonObject* firstObjectOf(JsonObject* object, const char* arrayName);

/**
 * The member's text; null if there is none or it is something else, also if it is not UTF-8, which an escaped
 * half of a character makes it, or has a code point that Unicode keeps free of characters, such as U+FFFF: no
 * message can carry that.
 */
const char* stringMember(JsonObject* object, const char* name);

/** Copies the member's text into `slot`, which stays as it is if there is none. */
void assignString(std::string& slot, JsonObject* object, const char* name);

/**
 * The member as a 32-bit number: a larger one keeps its low 32 bits, a fraction is cut off. Nothing if there
 * is none, it is no number, or a fraction too large for 64 bits.
 */
std::optional<int> intMember(JsonObject* object, const char* name);

}  // namespace JsonReader

}  // namespace Carvoy
