// The catalogue's members, and its names for the search.
#include "Catalogue.h"

#include "NameSearch.h"
#include "StockFile.h"

#include <algorithm>

namespace Appliance::MerchantBridge {
namespace {

using nlohmann::json;
using StandIn::readList;

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

}  // namespace

Catalogue::Catalogue(const std::filesystem::path& file)
    : allMerchants(StandIn::readStock(file, "merchants", readMerchant))
{
}

const Merchant* Catalogue::find(std::string_view merchantId) const
{
    const auto found = std::find_if(allMerchants.begin(), allMerchants.end(),
                                    [&](const Merchant& merchant) { return merchant.id == merchantId; });
    return found == allMerchants.end() ? nullptr : &*found;
}

std::vector<const Product*> search(const Merchant& merchant, std::string_view term)
{
    std::vector<std::string> names;
    for (const Product& product : merchant.products)
        names.push_back(product.name);
    std::vector<const Product*> products;
    for (const std::size_t position : StandIn::searchNames(names, term))
        products.push_back(&merchant.products[position]);
    return products;
}

}  // namespace Appliance::MerchantBridge
