#include "RetailerAnswer.h"

#include "JsonReader.h"
#include "Log.h"
#include "RetailerTexts.h"

namespace Carvoy::RetailerAnswer {

namespace {

// What is read of an answer; all else in it is ignored, and all of it may be missing or of another type:
//
//     {"data": {"itemCount": "11",
//               "itemList": [{"itemNm": "우유 1L", "displayPrc": "2980", "itemImgUrl": "http://...",
//                             "itemId": "1000024500411",
//                             "benefitGrp1": [{"type": "11", "txt": "1,000원 할인"}],
//                             "benefitGrp2": [{"type": "270"}]}]}}
//
// Of each inner array only the first element counts: a product is shown with one discount and one badge.

/** Finds the array of products in an answer. Returns null, or what is wrong with the answer. */
const char* findItems(JsonObject* answer, JsonArray*& items)
{
    if (!json_object_has_member(answer, "data"))
        return "no member: data";
    JsonObject* data = JsonReader::objectMember(answer, "data");
    if (!data)
        return "json_node_get_object_member() failed";
    if (const char* itemCount = JsonReader::stringMember(data, "itemCount"))
        LOG_D("itemCount: %s", itemCount);
    if (!json_object_has_member(data, "itemList"))
        return "no member: itemList";
    items = JsonReader::arrayMember(data, "itemList");
    if (!items)
        return "json_object_get_array_member() failed";
    return json_array_get_length(items) == 0 ? "empty json array" : nullptr;
}

void readDiscount(RetailerProduct& product, JsonObject* discount)
{
    const char* type = JsonReader::stringMember(discount, "type");
    if (!type || !RetailerTexts::isAcceptedDiscount(type))
        return;
    product.discountType = type;
    JsonReader::assignString(product.discountText, discount, "txt");
}

RetailerProduct readProduct(JsonObject* item)
{
    RetailerProduct product;
    JsonReader::assignString(product.name, item, "itemNm");
    JsonReader::assignString(product.imageUrl, item, "itemImgUrl");
    JsonReader::assignString(product.id, item, "itemId");
    if (const char* digits = JsonReader::stringMember(item, "displayPrc"))
        product.price = RetailerTexts::price(digits);
    if (JsonObject* discount = JsonReader::firstObjectOf(item, "benefitGrp1"))
        readDiscount(product, discount);
    if (JsonObject* badge = JsonReader::firstObjectOf(item, "benefitGrp2")) {
        if (const char* type = JsonReader::stringMember(badge, "type"))
            product.discountIconUrl = RetailerTexts::iconUrl(type).value_or("");
    }
    return product;
}

}  // namespace

const char* read(const std::string& body, std::size_t limit, std::vector<RetailerProduct>& products)
{
    // Owns all that is read of the answer: the texts are copied before it goes.
    JsonParserPtr parser;
    JsonObject* answer = nullptr;
    JsonArray* items = nullptr;
    const char* fault = JsonReader::loadObject(parser, body, answer);
    if (!fault)
        fault = findItems(answer, items);
    if (fault)
        return fault;

    const unsigned length = json_array_get_length(items);
    for (unsigned i = 0; i < length && i < limit; ++i) {
        // One that is not an object keeps its place, with nothing in it.
        JsonObject* item = JsonReader::objectElement(items, i);
        products.push_back(item ? readProduct(item) : RetailerProduct{});
    }
    return nullptr;
}

}  // namespace Carvoy::RetailerAnswer
