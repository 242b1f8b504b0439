#include "Products.h"

#include <nlohmann/json.hpp>

#include "SiteValues.h"

namespace ServiceTest {

namespace {

using Json = nlohmann::json;

Json variantOf(const Product& product)
{
    Json variant = Json::object();
    if (product.amount)
        variant["amountMinorUnits"] = *product.amount;
    if (product.former)
        variant["formerPriceAmountMinorUnits"] = *product.former;
    if (!product.ref.empty())
        variant["productVariantRef"] = product.ref;
    return variant;
}

Json jsonOf(const Product& product)
{
    Json json{{"name", product.name}, {"imageUrl", urlOf(product.picture)}};
    if (!product.label.empty())
        json["productOptionGroups"] = {{{"productOptions", {{{"label", product.label}}}}}};
    const Json variant = variantOf(product);
    if (!variant.empty())
        json["mbVariants"] = Json::array({variant});
    return json;
}

}  // namespace

std::string urlOf(const std::string& path)
{
    return path[0] == '/' ? "https://" CARVOY_MERCHANT_BRIDGE_HOST + path : path;
}

std::string answerOf(const std::vector<Product>& products)
{
    Json list = Json::array();
    for (const Product& product : products)
        list.push_back(jsonOf(product));
    return Json{{"products", list}}.dump();
}

}  // namespace ServiceTest
