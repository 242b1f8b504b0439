// Reads the catalogue strictly: a member missing or of a wrong type is an error, not a default.
#include "Catalogue.h"

#include "SearchText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace Appliance::MerchantBridge {
namespace {

using nlohmann::json;

Variant readVariant(const json& from)
{
    Variant variant;
    variant.size = from.at("size");
    variant.reference = from.at("ref");
    variant.amount = from.at("amountMinorUnits");
    if (from.contains("formerPriceAmountMinorUnits"))
        variant.formerAmount = from.at("formerPriceAmountMinorUnits").get<std::int64_t>();
    return variant;
}

template <typename Item>
std::vector<Item> readList(const json& list, Item (*read)(const json&))
{
    std::vector<Item> items;
    for (const json& entry : list)
        items.push_back(read(entry));
    if (items.empty())
        throw std::runtime_error("an empty list");
    return items;
}

Product readProduct(const json& from)
{
    Product product;
    product.name = from.at("name");
    product.brand = from.at("brand");
    product.category = from.at("category");
    product.picture = from.at("picture");
    product.variants = readList(from.at("variants"), readVariant);
    return product;
}

Merchant readMerchant(const json& from)
{
    Merchant merchant;
    merchant.id = from.at("id");
    merchant.name = from.at("name");
    merchant.currency = from.at("currency");
    merchant.products = readList(from.at("products"), readProduct);
    return merchant;
}

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

struct Hit {
    const Product* product;
    int score;
    std::size_t nameWords;
};

bool isBetter(const Hit& left, const Hit& right)
{
    if (left.score != right.score)
        return left.score > right.score;
    return left.nameWords < right.nameWords;
}

}  // namespace

Catalogue::Catalogue(const std::filesystem::path& file)
{
    std::ifstream stream(file);
    if (!stream)
        throw std::runtime_error("cannot read the catalogue " + file.string());
    try {
        allMerchants = readList(json::parse(stream).at("merchants"), readMerchant);
    } catch (const std::exception& error) {
        throw std::runtime_error("the catalogue " + file.string() + " is wrong: " + error.what());
    }
}

const Merchant* Catalogue::find(std::string_view merchantId) const
{
    const auto found = std::find_if(allMerchants.begin(), allMerchants.end(),
                                    [&](const Merchant& merchant) { return merchant.id == merchantId; });
    return found == allMerchants.end() ? nullptr : &*found;
}

std::vector<const Product*> search(const Merchant& merchant, std::string_view term)
{
    const auto wanted = foldedWords(term);
    std::vector<Hit> hits;
    for (const Product& product : merchant.products) {
        const auto name = foldedWords(product.name);
        const int points = score(wanted, name);
        if (wanted.empty() || points > 0)
            hits.push_back({&product, points, wanted.empty() ? 0 : name.size()});
    }
    std::stable_sort(hits.begin(), hits.end(), isBetter);

    std::vector<const Product*> products;
    for (const Hit& hit : hits)
        products.push_back(hit.product);
    return products;
}

}  // namespace Appliance::MerchantBridge
