#include "ShopJson.h"

#include <algorithm>
#include <stdexcept>

#include "JsonFile.h"

namespace Partner {

NLOHMANN_JSON_SERIALIZE_ENUM(Page, {{Page::None, "none"},
                                    {Page::Product, "product"},
                                    {Page::Cart, "cart"},
                                    {Page::CheckOut, "check-out"}})
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Product, merchant, variantRef)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(CartLine, product, quantity)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ShopContent, page, product, cart, messages)

namespace {

bool isPossible(const ShopContent& content)
{
    const auto isLine = [](const CartLine& line) { return line.quantity > 0; };
    return content.cart.size() <= Shop::CartLines && areCounted(content.messages) &&
           std::all_of(content.cart.begin(), content.cart.end(), isLine);
}

}  // namespace

nlohmann::json toJson(const ShopContent& content)
{
    return content;
}

ShopContent shopFromJson(const nlohmann::json& json)
{
    ShopContent content = json.get<ShopContent>();
    Appliance::requireWritten(json, content);
    if (!isPossible(content)) {
        throw std::runtime_error("not a shop's content");
    }
    return content;
}

}  // namespace Partner
