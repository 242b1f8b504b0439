// A merchant's answer, from its bytes to the message that brings the UI app the product lists.
#include <cstdint>

#include "Constants.h"
#include "Json.h"
#include "Lists.h"
#include "SearchControl.h"
#include "Singleton.h"

using namespace Carvoy;
using Fuzz::Json;

namespace {

Fuzz::Message productLists()
{
    DEMAND(Util::Singleton<SearchControl>::getInstance()->sendResultToUI() == 0);
    const std::vector<Fuzz::Message> sent = Fuzz::takeSent();
    DEMAND(sent.size() == 1);
    return sent[0];
}

// "$" and cents, or nothing.
bool isPrice(const std::string& text)
{
    const size_t point = text.find('.');
    return text.empty() ||
           (text[0] == '$' && point != std::string::npos && point > 1 && point + 1 < text.size() &&
            text.find_first_not_of("0123456789", 1) == point && text.size() - point <= 3 &&
            text.find_first_not_of("0123456789", point + 1) == std::string::npos);
}

bool isDiscount(const std::string& text)
{
    return text.empty() || (text.rfind("Save ", 0) == 0 && text.back() == '%' &&
                            std::stoi(text.substr(5)) >= 0 && std::stoi(text.substr(5)) < 100);
}

std::string price(int minorUnits)
{
    return minorUnits < 1 ? ""
                          : "$" + std::to_string(minorUnits / 100) + "." + std::to_string(minorUnits % 100);
}

// What the product's slots hold, by the strict reading of its JSON.
struct Product {
    std::string name, size, ref, price, before;
    bool isReduced = false;
    bool isCertain = true;  // its prices are

    explicit Product(const Json& json)
    {
        name = json.member("name").carriedText().value_or("");
        const Json option = json.member("productOptionGroups").element(0).member("productOptions").element(0);
        size = option.member("label").carriedText().value_or("");
        const Json variant = json.member("mbVariants").element(0);
        ref = variant.member("productVariantRef").carriedText().value_or("");
        const Json amount = variant.member("amountMinorUnits");
        const Json former = variant.member("formerPriceAmountMinorUnits");
        isCertain = !amount.isHuge() && !former.isHuge();
        price = ::price(amount.number().value_or(-1));
        before = ::price(former.number().value_or(-1));
        isReduced = amount.number().value_or(-1) > 0 && *amount.number() < former.number().value_or(-1);
    }
};

void compare(const Fuzz::Message& message, size_t index, const Product& product)
{
    DEMAND(Fuzz::listOf(message, KEY_PRODUCT_NAMES)[index] == product.name);
    DEMAND(Fuzz::listOf(message, KEY_PRODUCT_SIZE_OR_WEIGHTS)[index] == product.size);
    DEMAND(Fuzz::listOf(message, KEY_PRODUCT_VARIANT_REFS)[index] == product.ref);
    if (!product.isCertain)
        return;
    DEMAND(Fuzz::listOf(message, KEY_PRODUCT_PRICES)[index] == product.price);
    DEMAND(Fuzz::listOf(message, KEY_PRODUCT_PRICES_BEFORE_DISCOUNT)[index] == product.before);
    DEMAND(Fuzz::listOf(message, KEY_PRODUCT_DISCOUNT_PERCENTS)[index].empty() != product.isReduced);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string body(reinterpret_cast<const char*>(data), size);
    SearchControl* const search = Util::Singleton<SearchControl>::getInstance();
    search->init();
    const int result = search->parseResult(body);
    DEMAND(result == 0 || result == 1);

    const Fuzz::Message message = productLists();
    const size_t count = Fuzz::countOf(
        message, {KEY_PRODUCT_NAMES, KEY_PRODUCT_SIZE_OR_WEIGHTS, KEY_PRODUCT_DISCOUNT_PERCENTS,
                  KEY_PRODUCT_PRICES_BEFORE_DISCOUNT, KEY_PRODUCT_PRICES, KEY_PRODUCT_VARIANT_REFS});
    DEMAND((count > 0) == (result == 0));
    DEMAND(search->getVariantRefs().size() == count);
    for (const std::string& key : {KEY_PRODUCT_PRICES_BEFORE_DISCOUNT, KEY_PRODUCT_PRICES})
        for (const std::string& text : Fuzz::listOf(message, key))
            DEMAND(isPrice(text));
    for (const std::string& text : Fuzz::listOf(message, KEY_PRODUCT_DISCOUNT_PERCENTS))
        DEMAND(isDiscount(text));

    if (const Json answer(body); answer) {
        const Json products = answer.member("products");
        DEMAND(count == std::min(products.size(), Fuzz::MOST_PRODUCTS));
        for (size_t i = 0; i < count; ++i)
            compare(message, i, Product(products.element(i)));
    }
    return 0;
}
