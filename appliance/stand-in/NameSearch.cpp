// Every word is compared with every word: a shop on a PC sells a hundred things.
#include "NameSearch.h"

#include "SearchText.h"

#include <algorithm>

namespace Appliance::StandIn {
namespace {

struct Hit {
    std::size_t position;
    int score;
    std::size_t nameWords;
};

// The sum over the wanted words, 0 when one of them does not occur at all.
int score(const std::vector<std::string>& wanted, const std::vector<std::string>& name)
{
    int sum = 0;
    for (const std::string& word : wanted) {
        WordMatch best = WordMatch::None;
        for (const std::string& candidate : name)
            best = std::max(best, matchWord(word, candidate));
        if (best == WordMatch::None)
            return 0;
        sum += static_cast<int>(best);
    }
    return sum;
}

bool isBetter(const Hit& left, const Hit& right)
{
    if (left.score != right.score)
        return left.score > right.score;
    return left.nameWords < right.nameWords;
}

}  // namespace

std::vector<std::size_t> searchNames(const std::vector<std::string>& names, std::string_view term)
{
    const auto wanted = foldedWords(term);
    std::vector<Hit> hits;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto name = foldedWords(names[i]);
        const int points = score(wanted, name);
        if (wanted.empty() || points > 0)
            hits.push_back({i, points, wanted.empty() ? 0 : name.size()});
    }
    std::stable_sort(hits.begin(), hits.end(), isBetter);

    std::vector<std::size_t> positions;
    for (const Hit& hit : hits)
        positions.push_back(hit.position);
    return positions;
}

}  // namespace Appliance::StandIn
