// Folding drops accents so that a shopper without them on the keyboard finds the crème fraîche.
#include "SearchText.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace Appliance::StandIn {
namespace {

// U+00C0 to U+00FF, which UTF-8 writes as the byte C3 and a byte from 80 to BF.
constexpr std::array<const char*, 64> latinLetters = {
    "a", "a", "a", "a", "a", "a", "ae", "c", "e", "e", "e", "e", "i", "i", "i",  "i",
    "d", "n", "o", "o", "o", "o", "o",  "x", "o", "u", "u", "u", "u", "y", "th", "ss",
    "a", "a", "a", "a", "a", "a", "ae", "c", "e", "e", "e", "e", "i", "i", "i",  "i",
    "d", "n", "o", "o", "o", "o", "o",  "/", "o", "u", "u", "u", "u", "y", "th", "y"};

bool isContinuation(unsigned char byte)
{
    return byte >= 0x80 && byte <= 0xBF;
}

// U+0300 to U+036F: an accent that follows its letter.
bool isCombiningMark(unsigned char lead, unsigned char next)
{
    return (lead == 0xCC && isContinuation(next)) || (lead == 0xCD && next >= 0x80 && next <= 0xAF);
}

char foldAscii(unsigned char byte)
{
    if (byte <= 0x20 || byte == 0x7F || byte == ',')
        return ' ';
    return byte < 0x80 ? static_cast<char>(std::tolower(byte)) : static_cast<char>(byte);
}

bool endsWith(const std::string& word, std::string_view ending)
{
    return word.size() > ending.size() + 1 &&
           word.compare(word.size() - ending.size(), ending.size(), ending) == 0;
}

// A word with what it may be the plural of.
std::vector<std::string> numbers(const std::string& word)
{
    std::vector<std::string> forms{word};
    if (!endsWith(word, "s") || endsWith(word, "ss"))
        return forms;
    forms.push_back(word.substr(0, word.size() - 1));
    if (endsWith(word, "es"))
        forms.push_back(word.substr(0, word.size() - 2));
    if (endsWith(word, "ies"))
        forms.push_back(word.substr(0, word.size() - 3) + "y");
    return forms;
}

bool haveCommonNumber(const std::string& first, const std::string& second)
{
    const auto left = numbers(first);
    const auto right = numbers(second);
    return std::find_first_of(left.begin(), left.end(), right.begin(), right.end()) != left.end();
}

}  // namespace

std::string fold(std::string_view text)
{
    std::string folded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0U;
        if (byte == 0xC3 && isContinuation(next)) {
            folded += latinLetters[next - 0x80U];
            ++i;
        } else if (isCombiningMark(byte, next)) {
            ++i;
        } else {
            folded += foldAscii(byte);
        }
    }
    return folded;
}

std::vector<std::string> foldedWords(std::string_view text)
{
    const std::string folded = fold(text);
    std::vector<std::string> words;
    for (std::size_t begin = folded.find_first_not_of(' '); begin != std::string::npos;) {
        const std::size_t end = std::min(folded.find(' ', begin), folded.size());
        words.push_back(folded.substr(begin, end - begin));
        begin = folded.find_first_not_of(' ', end);
    }
    return words;
}

WordMatch matchWord(const std::string& wanted, const std::string& word)
{
    if (haveCommonNumber(wanted, word))
        return WordMatch::Whole;
    const std::size_t where = word.find(wanted);
    if (where == std::string::npos)
        return WordMatch::None;
    return where == 0 ? WordMatch::Beginning : WordMatch::Inside;
}

}  // namespace Appliance::StandIn
