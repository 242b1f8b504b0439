#include "Grammar.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>
#include <vector>

namespace Assistant {

namespace {

using Words = std::vector<std::string>;

constexpr std::array<const char*, 10> Ordinals = {"first", "second",  "third",  "fourth", "fifth",
                                                  "sixth", "seventh", "eighth", "ninth",  "tenth"};
constexpr std::array<const char*, 10> Numbers = {"one", "two",   "three", "four", "five",
                                                 "six", "seven", "eight", "nine", "ten"};

void replaceAll(std::string& text, const std::string& what, const std::string& with)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
        text.replace(at, what.size(), with);
    }
}

Words wordsOf(std::string sentence)
{
    sentence.erase(sentence.find_last_not_of(".!? \t\r\n\v\f") + 1);
    replaceAll(sentence, "’", "'");
    for (char& letter : sentence) {
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    }
    std::istringstream in(sentence);
    Words words;
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

bool isNumber(std::string_view word)
{
    return !word.empty() && word.find_first_not_of("0123456789") == std::string_view::npos;
}

// The digits of "2nd" and the like; which ending goes with which number is not minded.
std::optional<std::string> digitsOfOrdinal(const std::string& word)
{
    const std::size_t end = word.find_first_not_of("0123456789");
    if (end == 0 || end == std::string::npos) {
        return std::nullopt;
    }
    const std::string ending = word.substr(end);
    const bool isOrdinal = ending == "st" || ending == "nd" || ending == "rd" || ending == "th";
    return isOrdinal ? std::optional<std::string>(word.substr(0, end)) : std::nullopt;
}

std::optional<std::string> placeIn(const std::array<const char*, 10>& names, const std::string& word)
{
    const auto found = std::find(names.begin(), names.end(), word);
    return found == names.end() ? std::nullopt
                                : std::optional<std::string>(std::to_string(found - names.begin() + 1));
}

// What a word says where the form wants an ordinal or a number.
std::optional<std::string> itemIn(const std::string& slot, const std::string& word)
{
    if (slot == "<nth>") {
        const auto place = placeIn(Ordinals, word);
        return place ? place : digitsOfOrdinal(word);
    }
    return isNumber(word) ? word : placeIn(Numbers, word);
}

bool isOneOf(const std::string& alternatives, const std::string& word)
{
    std::istringstream in(alternatives);
    for (std::string alternative; std::getline(in, alternative, '|');) {
        if (alternative == word) {
            return true;
        }
    }
    return false;
}

// No word that may be left out could stand for what follows it, so that the first fit is the only one.
std::optional<Meaning> match(const Form& form, const Words& words)
{
    Meaning meaning{form.action, ""};
    auto word = words.begin();
    std::istringstream in(form.words);
    for (std::string part; in >> part;) {
        const bool mayLack = part.front() == '[';
        const bool isSlot = part.front() == '<';
        const std::string wanted = mayLack ? part.substr(1, part.size() - 2) : part;
        const auto item = isSlot && word != words.end() ? itemIn(wanted, *word) : std::nullopt;
        if (item || (!isSlot && word != words.end() && isOneOf(wanted, *word))) {
            meaning.item = item.value_or(meaning.item);
            ++word;
        } else if (!mayLack) {
            return std::nullopt;
        }
    }
    return word == words.end() ? std::optional<Meaning>(meaning) : std::nullopt;
}

}  // namespace

std::optional<Meaning> understand(const std::string& sentence)
{
    const Words words = wordsOf(sentence);
    for (const Form& form : Forms) {
        if (auto meaning = match(form, words)) {
            return meaning;
        }
    }
    return std::nullopt;
}

std::string nluOf(const Meaning& meaning)
{
    nlohmann::json answer = {{"actionName", meaning.action}};
    if (meaning.action == SearchedItem) {
        answer["actionData"]["representativeCommerceData"]["id"] = meaning.item;
    }
    return answer.dump();
}

}  // namespace Assistant
