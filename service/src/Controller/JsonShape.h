// A look at a JSON text before json-glib sees it.
#pragma once

#include <string>

namespace Carvoy::JsonShape {

/**
 * False for a text that json-glib 1.6 must not see, though it would take some of them: it would overflow the
 * stack, or never release what it has read. That is
 *
 * - objects and arrays nested deeper than 1024, which it reads and releases recursively. "var name =", which
 *   it takes in front of a value, as often as it comes, counts as one level. Behind a comment or a single
 *   quote, which it may take and JSON does not have, each opening bracket and each "=" counts as one level
 *   more;
 * - an object or array behind another value;
 * - an escape that takes its text's end with it, or two halves that make no character;
 * - a bracket too many, a semicolon between brackets, or a comment or single quote without its end.
 *
 * True does not mean that the text is JSON. JSON is gone through once. Called by any thread.
 */
bool isFitForParser(const std::string& text);

}  // namespace Carvoy::JsonShape
