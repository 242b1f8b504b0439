// How the words of a query are compared with the words of a product name.
// Pure functions on UTF-8 text, for any thread; bytes that are not UTF-8 stay as they are.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Appliance::StandIn {

// Lower case without accents, so that "CRÈME" and "creme" are the same; letters up to U+00FF.
std::string fold(std::string_view text);

// The words of a text, folded: what stands between blanks and commas.
std::vector<std::string> foldedWords(std::string_view text);

enum class WordMatch { None, Inside, Beginning, Whole };

// Both folded. A plural counts as its singular: "berry" is the whole of "berries".
WordMatch matchWord(const std::string& wanted, const std::string& word);

}  // namespace Appliance::StandIn
