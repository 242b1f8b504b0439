// Answers of the merchant, as a test puts them together.
#pragma once

#include <string>
#include <vector>

namespace Products {

/** An answer with these products, each a JSON value. */
inline std::string answer(const std::vector<std::string>& products)
{
    std::string list;
    for (const std::string& product : products)
        list += (list.empty() ? "" : ", ") + product;
    return "{\"products\": [" + list + "]}";
}

/** A product with one variant, of which `members` are given. */
inline std::string withVariant(const std::string& members)
{
    return "{\"mbVariants\": [{" + members + "}]}";
}

/** A product at `amount` that cost `former` before, both as JSON values. */
inline std::string priced(const std::string& amount, const std::string& former)
{
    return withVariant("\"amountMinorUnits\": " + amount + ", \"formerPriceAmountMinorUnits\": " + former);
}

/** A product of this name with its picture. */
inline std::string pictured(const std::string& name, const std::string& imageUrl)
{
    return "{\"name\": \"" + name + "\", \"imageUrl\": \"" + imageUrl + "\"}";
}

/** One value of each type that JSON has, but for the one that a member is meant to be of. */
inline std::vector<std::string> everyValueBut(const std::string& type)
{
    const std::vector<std::pair<std::string, std::string>> all = {
        {"string", "\"text\""}, {"string", "\"\""}, {"number", "12"}, {"number", "1.5"},
        {"bool", "true"},       {"bool", "false"},  {"null", "null"}, {"array", "[1, \"a\"]"},
        {"array", "[]"},        {"array", "[[]]"},  {"object", "{}"}, {"object", "{\"label\": \"x\"}"}};
    std::vector<std::string> values;
    for (const auto& [kind, text] : all) {
        if (kind != type)
            values.push_back(text);
    }
    return values;
}

}  // namespace Products
