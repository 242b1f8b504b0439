// Answers carry members no client here reads (brand, availability ...), as a shop's answers do.
#include "ProductsAnswer.h"

#include <nlohmann/json.hpp>

namespace Appliance::MerchantBridge {
namespace {

using nlohmann::json;

// The first six elements, all that a client with a page of six reads, each break another habit.
constexpr const char* oddTypes = R"({"total": "eight", "products": [
  {"name": 17, "imageUrl": true, "productOptionGroups": "one", "mbVariants": {"amountMinorUnits": 100}},
  {"name": null, "imageUrl": null, "productOptionGroups": null, "mbVariants": null},
  {},
  {"name": ["Milk"], "imageUrl": {"url": "x"}, "productOptionGroups": [null], "mbVariants": [null]},
  {"name": "Odd Prices", "imageUrl": "", "productOptionGroups": [{"productOptions": [{"label": 3.5}]}],
   "mbVariants": [{"amountMinorUnits": "299", "formerPriceAmountMinorUnits": 1e30, "productVariantRef": 5}]},
  {"name": "Sound Again", "imageUrl": 4294967296, "productOptionGroups": [{"productOptions": "1 gal"}],
   "mbVariants": ["none", {"amountMinorUnits": 100}]},
  null,
  "Milk"
]})";

json optionGroup(const Product& product)
{
    json options = json::array();
    for (const Variant& variant : product.variants)
        options.push_back(
            {{"id", variant.reference}, {"label", variant.size}, {"selected", options.empty()}});
    return {{"name", "Size"}, {"type", "single"}, {"productOptions", options}};
}

json variantAnswer(const Variant& variant, const std::string& currency)
{
    json answer{{"productVariantRef", variant.reference},
                {"amountMinorUnits", variant.amount},
                {"currency", currency},
                {"available", true}};
    if (variant.formerAmount)
        answer["formerPriceAmountMinorUnits"] = *variant.formerAmount;
    return answer;
}

json productAnswer(const Product& product, const Merchant& merchant, const std::string& imageUrl)
{
    json variants = json::array();
    for (const Variant& variant : product.variants)
        variants.push_back(variantAnswer(variant, merchant.currency));
    return {{"name", product.name},
            {"brand", product.brand},
            {"categories", json::array({product.category})},
            {"imageUrl", imageUrl},
            {"productOptionGroups", json::array({optionGroup(product)})},
            {"mbVariants", variants}};
}

std::string productsBody(const Merchant& merchant, const std::vector<const Product*>& hits,
                         const StandIn::Trouble& trouble, const std::string& host)
{
    json products = json::array();
    for (const Product* hit : hits) {
        const int position = static_cast<int>(products.size()) + 1;
        const std::string path = StandIn::picturePath(trouble.forPicture(position), hit->picture);
        products.push_back(productAnswer(*hit, merchant, "https://" + host + path));
    }
    return json{{"merchant", {{"id", merchant.id}, {"name", merchant.name}}},
                {"total", hits.size()},
                {"products", products}}
        .dump();
}

}  // namespace

StandIn::Answer productsAnswer(const Merchant& merchant, const std::vector<const Product*>& hits,
                               const StandIn::Trouble& trouble, const std::string& host)
{
    StandIn::ShopBodies bodies;
    bodies.products = [&] { return productsBody(merchant, hits, trouble, host); };
    bodies.noProducts = [&] { return productsBody(merchant, {}, trouble, host); };
    bodies.oddTypes = oddTypes;
    bodies.beforeList = R"({"products":)";
    bodies.behindList = "}";
    return searchAnswer(trouble, bodies);
}

}  // namespace Appliance::MerchantBridge
