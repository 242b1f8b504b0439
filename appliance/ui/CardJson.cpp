#include "CardJson.h"

#include <stdexcept>

#include "JsonFile.h"

namespace Ui {

NLOHMANN_JSON_SERIALIZE_ENUM(CardState, {{CardState::Empty, "empty"},
                                         {CardState::Searching, "searching"},
                                         {CardState::Shown, "shown"}})
NLOHMANN_JSON_SERIALIZE_ENUM(Source, {{Source::Merchant, "merchant"}, {Source::Retailer, "retailer"}})
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Product, name, size, discount, formerPrice, price, variantRef, picture, id,
                                   discountType, badge)

nlohmann::json toJson(const CardContent& content)
{
    return {
        {"sequence", content.sequence},     {"results", content.results},   {"state", content.state},
        {"source", content.source},         {"merchant", content.merchant}, {"term", content.term},
        {"total", content.products.size()}, {"products", content.products}, {"messages", content.messages}};
}

CardContent cardFromJson(const nlohmann::json& json)
{
    CardContent content;
    json.at("sequence").get_to(content.sequence);
    json.at("results").get_to(content.results);
    json.at("state").get_to(content.state);
    json.at("source").get_to(content.source);
    json.at("merchant").get_to(content.merchant);
    json.at("term").get_to(content.term);
    json.at("products").get_to(content.products);
    json.at("messages").get_to(content.messages);
    Appliance::requireWritten(json, toJson(content));
    if (content.sequence < 0 || content.results < 0 || !areCounted(content.messages)) {
        throw std::runtime_error("not a card's content");
    }
    return content;
}

}  // namespace Ui
