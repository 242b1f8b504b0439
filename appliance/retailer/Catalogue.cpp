// A product without discounts or badges lacks these members; every other one must be there.
#include "Catalogue.h"

#include "NameSearch.h"
#include "StockFile.h"

namespace Appliance::Retailer {
namespace {

using nlohmann::json;

Discount readDiscount(const json& from)
{
    return {from.at("type"), from.at("txt")};
}

std::string readBadge(const json& from)
{
    return from;
}

Product readProduct(const json& from)
{
    Product product;
    product.id = from.at("id");
    product.name = from.at("name");
    product.price = from.at("price");
    product.picture = from.at("picture");
    if (from.contains("discounts"))
        product.discounts = StandIn::readList(from.at("discounts"), readDiscount);
    if (from.contains("badges"))
        product.badges = StandIn::readList(from.at("badges"), readBadge);
    return product;
}

}  // namespace

Catalogue::Catalogue(const std::filesystem::path& file)
    : allProducts(StandIn::readStock(file, "products", readProduct))
{
}

std::vector<const Product*> Catalogue::search(std::string_view term) const
{
    std::vector<std::string> names;
    for (const Product& product : allProducts)
        names.push_back(product.name);
    std::vector<const Product*> hits;
    for (const std::size_t position : StandIn::searchNames(names, term))
        hits.push_back(&allProducts[position]);
    return hits;
}

}  // namespace Appliance::Retailer
