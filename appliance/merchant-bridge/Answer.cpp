// Answers carry members no client here reads (brand, availability ...), as a shop's answers do.
#include "Answer.h"

#include <nlohmann/json.hpp>

namespace Appliance::MerchantBridge {
namespace {

using nlohmann::json;

constexpr std::size_t deepNesting = 100000;
constexpr const char* jsonType = "application/json";

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

constexpr const char* garbage = "\x01\xFF\xFE{\"products\": [{\"name\": \"Mi\xC3";

constexpr const char* html =
    "<!DOCTYPE html>\n<html><head><title>Scheduled maintenance</title></head>\n"
    "<body><h1>We will be back soon</h1></body></html>\n";

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
                         const Trouble& trouble, const std::string& host)
{
    json products = json::array();
    for (const Product* hit : hits) {
        const int position = static_cast<int>(products.size()) + 1;
        const std::string path = picturePath(trouble.forPicture(position), hit->picture);
        products.push_back(productAnswer(*hit, merchant, "https://" + host + path));
    }
    return json{{"merchant", {{"id", merchant.id}, {"name", merchant.name}}},
                {"total", hits.size()},
                {"products", products}}
        .dump();
}

// Lengthens a JSON object by one more member; one that is too long already stays as it is.
std::string pad(std::string body, std::size_t size)
{
    const std::string begin = R"(,"padding":")";
    const std::string end = R"("})";
    body.pop_back();
    const std::size_t least = body.size() + begin.size() + end.size();
    if (least > size)
        return body + "}";
    body.reserve(size);
    return body.append(begin).append(size - least, ' ').append(end);
}

std::string deepBody()
{
    return R"({"products":)" + std::string(deepNesting, '[') + std::string(deepNesting, ']') + "}";
}

}  // namespace

Answer searchAnswer(const Merchant& merchant, const std::vector<const Product*>& hits, const Trouble& trouble,
                    const std::string& host)
{
    switch (trouble.body) {
        case Body::Garbage:
            return {garbage, jsonType};
        case Body::Empty:
            return {"", jsonType};
        case Body::Html:
            return {html, "text/html"};
        case Body::OddTypes:
            return {oddTypes, jsonType};
        case Body::NoProducts:
            return {productsBody(merchant, {}, trouble, host), jsonType};
        case Body::Deep:
            return {deepBody(), jsonType};
        case Body::Big:
            return {pad(productsBody(merchant, hits, trouble, host), trouble.bigSize), jsonType};
        case Body::Products:
            break;
    }
    return {productsBody(merchant, hits, trouble, host), jsonType};
}

Answer errorAnswer(int status, const std::string& message)
{
    const json body{{"error", {{"status", status}, {"message", message}}}};
    // The message may quote bytes of the request, which need not be UTF-8.
    return {body.dump(-1, ' ', false, json::error_handler_t::replace), jsonType};
}

}  // namespace Appliance::MerchantBridge
