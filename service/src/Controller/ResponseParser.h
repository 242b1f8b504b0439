// The response parser's objects as values: nothing of the library is left behind.
#pragma once

#include <cstdlib>
#include <memory>
#include <string>

#include <nuvex-da-parser.h>

namespace Carvoy::ResponseParser {

struct ResponseCloser {
    void operator()(ndp_response_data_h response) const { ndp_response_data_destroy(response); }
};

/** Owns a response, and with it the data that are read from it. */
using Response = std::unique_ptr<ndp_response_data_s, ResponseCloser>;

/** `text` without the blanks, tabs, carriage returns, line feeds and vertical tabs around it. */
inline std::string trim(std::string text)
{
    const char* const blanks = " \t\r\n\v";
    text.erase(text.find_last_not_of(blanks) + 1);
    text.erase(0, text.find_first_not_of(blanks));
    return text;
}

/** The trimmed text that `get`, a function of the library, hands out for `data`; empty where it has none. */
template <typename Data>
std::string trimmedText(int (*get)(Data, char**), Data data)
{
    char* text = nullptr;
    if (get(data, &text) != NDP_ERROR_NONE || !text)
        return "";
    std::string copy = text;
    free(text);
    return trim(std::move(copy));
}

}  // namespace Carvoy::ResponseParser
