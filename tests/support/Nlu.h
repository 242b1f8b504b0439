// The voice assistant's answers, as a test puts them together.
#pragma once

#include <string>

namespace Nlu {

/** An action without data. */
inline std::string action(const std::string& name)
{
    return "{\"actionName\": \"" + name + "\"}";
}

/** The choice of a product; `id` is a JSON value. */
inline std::string item(const std::string& id)
{
    return "{\"actionName\": \"Commerce Searched Item\","
           " \"actionData\": {\"representativeCommerceData\": {\"id\": " +
           id + "}}}";
}

}  // namespace Nlu
