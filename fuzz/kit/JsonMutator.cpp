// How libFuzzer changes JSON texts: half of the time byte by byte, as it does by itself, half of the time
// value by value, which leaves JSON what was JSON. Without that hardly any input would get behind the JSON
// library, which is not built for the fuzzer to see into.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace {

using Tokens = std::vector<std::string>;

const Tokens& oddValues()
{
    static const auto* const values = new Tokens{"null",
                                                 "true",
                                                 "false",
                                                 "0",
                                                 "-1",
                                                 "1",
                                                 "2",
                                                 "3",
                                                 "4",
                                                 "99",
                                                 "1205",
                                                 "2147483647",
                                                 "2147483648",
                                                 "-2147483648",
                                                 "4294967297",
                                                 "9223372036854775807",
                                                 "9223372036854775808",
                                                 "-9223372036854775808",
                                                 "18446744073709551616",
                                                 "1.5",
                                                 "-0.0",
                                                 "1e2",
                                                 "1E+2",
                                                 "1e400",
                                                 "9.3e18",
                                                 "[]",
                                                 "{}",
                                                 "[[]]",
                                                 "[null]",
                                                 "\"\"",
                                                 "\"2\"",
                                                 "\" 3\\n\"",
                                                 "\"-1\"",
                                                 "\"99999999999999999999\"",
                                                 "\"12900\"",
                                                 "\"A0\"",
                                                 "\"11\"",
                                                 "\"270\"",
                                                 "\"270x\"",
                                                 "\"\\u0000\"",
                                                 "\"a\\u0000b\"",
                                                 "\"\\uffff\"",
                                                 "\"\\ufdd0\"",
                                                 "\"\\ud83d\\ude00\"",
                                                 "\"\\ud83d\"",
                                                 "\"\\ud83dx\"",
                                                 "\"\xEC\x9B\x90\xEC\x9B\x90\"",
                                                 "\"\\\\\\\"\\/\"",
                                                 "\"http://a.example/b.png?c=.d/e\"",
                                                 "\"Commerce Add To Cart\"",
                                                 "\"Commerce Check Out\"",
                                                 "\"Show Cart Success\"",
                                                 "\"Commerce Searched Item\""};
    return *values;
}

bool isWord(char c)
{
    return !strchr("[]{},:\" \t\r\n", c);
}

size_t endOfToken(const std::string& text, size_t begin)
{
    size_t end = begin + 1;
    if (text[begin] == '"') {
        while (end < text.size() && text[end] != '"')
            end += text[end] == '\\' ? 2 : 1;
        return std::min(end + 1, text.size());
    }
    while (isWord(text[begin]) && end < text.size() && isWord(text[end]))
        ++end;
    return end;
}

Tokens tokensOf(const std::string& text)
{
    Tokens tokens;
    for (size_t i = 0; i < text.size(); i = endOfToken(text, i))
        tokens.push_back(text.substr(i, endOfToken(text, i) - i));
    return tokens;
}

/** Behind the last token of the value that begins with this one. */
size_t endOfValue(const Tokens& tokens, size_t begin)
{
    int depth = 0;
    for (size_t i = begin; i < tokens.size(); ++i) {
        depth += tokens[i] == "[" || tokens[i] == "{" ? 1 : 0;
        depth -= tokens[i] == "]" || tokens[i] == "}" ? 1 : 0;
        if (depth <= 0)
            return i + 1;
    }
    return tokens.size();
}

std::string joined(const Tokens& tokens, size_t begin, size_t end)
{
    std::string text;
    for (size_t i = begin; i < end; ++i)
        text += tokens[i];
    return text;
}

/** One value in the text of another, of itself twice, wrapped, or of the table above. */
std::string mutated(const std::string& text, std::minstd_rand& dice)
{
    const Tokens tokens = tokensOf(text);
    if (tokens.empty())
        return oddValues()[dice() % oddValues().size()];
    const size_t begin = dice() % tokens.size();
    const size_t end = endOfValue(tokens, begin);
    const size_t other = dice() % tokens.size();
    const std::string value = joined(tokens, begin, end);
    std::string replacement;
    switch (dice() % 6) {
        case 0:
        case 1:
            replacement = oddValues()[dice() % oddValues().size()];
            break;
        case 2:
            replacement = joined(tokens, other, endOfValue(tokens, other));
            break;
        case 3:
            replacement = value + "," + value;
            break;
        case 4:
            replacement = "[" + value + "]";
            break;
        default:
            break;
    }
    return joined(tokens, 0, begin) + replacement + joined(tokens, end, tokens.size());
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed)
{
    std::minstd_rand dice(seed);
    if (dice() % 2 == 0)
        return LLVMFuzzerMutate(data, size, maxSize);
    const std::string text = mutated(std::string(reinterpret_cast<const char*>(data), size), dice);
    if (text.size() > maxSize)
        return LLVMFuzzerMutate(data, size, maxSize);
    memcpy(data, text.data(), text.size());
    return text.size();
}
