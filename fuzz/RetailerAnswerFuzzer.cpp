// A retailer's answer, from its bytes to the message that brings the UI app the product lists.
#include <cstdint>

#include "Json.h"
#include "Lists.h"
#include "RetailerConstants.h"
#include "SearchEmartControl.h"
#include "Singleton.h"

using namespace Carvoy;
using Fuzz::Json;

namespace {

/** The controller, as the sources that dispatch to it do not see it. */
class Retailer : public SearchEmartControl {
  public:
    using SearchEmartControl::discountIconUrls;
    using SearchEmartControl::imageUrls;
    using SearchEmartControl::init;
    using SearchEmartControl::parseResult;
};

Fuzz::Message productLists()
{
    DEMAND(Util::Singleton<Retailer>::getInstance()->sendEmartResultToUI() == 0);
    const std::vector<Fuzz::Message> sent = Fuzz::takeSent();
    DEMAND(sent.size() == 1);
    return sent[0];
}

bool endsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool isIcon(const std::string& url)
{
    static const std::string folder = "http://" CARVOY_RETAILER_ICON_HOST "/ui/app/6001/icon/";
    for (const char* badge : {"90", "91", "100", "110", "120", "130", "270"}) {
        if (url == folder + badge + ".png")
            return true;
    }
    return url.empty();
}

bool isDiscount(const std::string& type)
{
    const long number = strtol(type.c_str(), nullptr, 10);
    return number == 10 || number == 11 || number == 30 || number == 60 || type == "A0" || type == "B0" ||
           type == "C0";
}

bool isBadge(const std::string& type)
{
    const std::string number = std::to_string(strtol(type.c_str(), nullptr, 10));
    return isIcon("http://" CARVOY_RETAILER_ICON_HOST "/ui/app/6001/icon/" + number + ".png");
}

// Of texts that have no commas themselves, and no characters that one could come into.
bool isGrouped(const std::string& price, const std::string& text)
{
    if (std::any_of(text.begin(), text.end(),
                    [](char c) { return c == ',' || static_cast<signed char>(c) < 0; }))
        return true;
    std::string groups = text;
    for (size_t i = groups.size(); i > 3; i -= 3)
        groups.insert(i - 3, ",");
    return price == groups + "원";
}

std::string withoutCommas(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), ','), text.end());
    return text;
}

void compare(const Fuzz::Message& message, size_t index, const Json& item)
{
    const auto is = [&](const std::string& key, const char* member) {
        return Fuzz::listOf(message, key)[index] == item.member(member).carriedText().value_or("");
    };
    DEMAND(is(KEY_PRODUCT_NAMES, "itemNm"));
    DEMAND(is(KEY_PRODUCT_IDS, "itemId"));

    const std::string price = Fuzz::listOf(message, KEY_PRODUCT_PRICES)[index];
    const auto digits = item.member("displayPrc").carriedText();
    DEMAND(withoutCommas(price) == (digits ? withoutCommas(*digits) + "원" : ""));

    DEMAND(!digits || isGrouped(price, *digits));

    const Json discount = item.member("benefitGrp1").element(0);
    const std::string type = Fuzz::listOf(message, KEY_PRODUCT_DISCOUNT_TYPE)[index];
    const std::string text = Fuzz::listOf(message, KEY_PRODUCT_DISCOUNT_TXT)[index];
    const std::string code = discount.member("type").carriedText().value_or("");
    DEMAND(type == (isDiscount(code) ? code : ""));
    DEMAND(text == (type.empty() ? "" : discount.member("txt").carriedText().value_or("")));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string body(reinterpret_cast<const char*>(data), size);
    Retailer* const search = Util::Singleton<Retailer>::getInstance();
    search->init();
    const int result = search->parseResult(body);
    DEMAND(result == 0 || result == 1);

    const Fuzz::Message message = productLists();
    const size_t count =
        Fuzz::countOf(message, {KEY_PRODUCT_NAMES, KEY_PRODUCT_PRICES, KEY_PRODUCT_PRICES_BEFORE_DISCOUNT,
                                KEY_PRODUCT_DISCOUNT_TYPE, KEY_PRODUCT_DISCOUNT_TXT, KEY_PRODUCT_IDS});
    DEMAND((count > 0) == (result == 0));
    DEMAND(search->imageUrls.size() == count && search->discountIconUrls.size() == count);
    for (const std::string& url : search->discountIconUrls)
        DEMAND(isIcon(url));
    for (const std::string& price : Fuzz::listOf(message, KEY_PRODUCT_PRICES))
        DEMAND(price.empty() || endsWith(price, "원"));

    if (const Json answer(body); answer) {
        const Json items = answer.member("data").member("itemList");
        DEMAND(count == std::min(items.size(), Fuzz::MOST_PRODUCTS));
        for (size_t i = 0; i < count; ++i)
            compare(message, i, items.element(i));
        for (size_t i = 0; i < count; ++i) {
            const Json badge = items.element(i).member("benefitGrp2").element(0).member("type");
            DEMAND(search->discountIconUrls[i].empty() != isBadge(badge.carriedText().value_or("")));
        }
    }
    return 0;
}
