// All numbers are texts, as in this shop's answers. Members that no client here reads are there as well.
#include "ProductsAnswer.h"

#include <nlohmann/json.hpp>

namespace Appliance::Retailer {
namespace {

using nlohmann::ordered_json;

// The first six elements, all that a client that wants six reads, each break another habit.
constexpr const char* oddTypes = R"({"data": {"itemCount": 8, "itemList": [
  {"itemNm": 17, "displayPrc": 2980, "itemImgUrl": true, "itemId": {"id": "1"}, "benefitGrp1": "10",
   "benefitGrp2": 90},
  {"itemNm": null, "displayPrc": null, "itemImgUrl": null, "itemId": null, "benefitGrp1": null,
   "benefitGrp2": null},
  {},
  {"itemNm": ["우유"], "displayPrc": "가격 문의", "benefitGrp1": [null], "benefitGrp2": [null]},
  {"itemNm": "이상한 혜택", "displayPrc": "", "benefitGrp1": [{"type": 10, "txt": 10}],
   "benefitGrp2": [{"type": 90}]},
  {"itemNm": "다시 정상", "displayPrc": "990", "benefitGrp1": [[], {"type": "10", "txt": "10%"}],
   "benefitGrp2": ["90"]},
  null,
  "우유"
]}})";

ordered_json discountsOf(const Product& product)
{
    ordered_json discounts = ordered_json::array();
    for (const Discount& discount : product.discounts)
        discounts.push_back({{"type", discount.type}, {"txt", discount.text}});
    return discounts;
}

ordered_json badgesOf(const Product& product)
{
    ordered_json badges = ordered_json::array();
    for (const std::string& badge : product.badges)
        badges.push_back({{"type", badge}});
    return badges;
}

ordered_json itemOf(const Product& product, const std::string& imageUrl)
{
    return {{"itemId", product.id},
            {"itemNm", product.name},
            {"displayPrc", std::to_string(product.price)},
            {"itemImgUrl", imageUrl},
            {"soldOut", "N"},
            {"benefitGrp1", discountsOf(product)},
            {"benefitGrp2", badgesOf(product)}};
}

ordered_json bodyOf(std::size_t count, const ordered_json& list)
{
    return {{"res_code", "0000"}, {"data", {{"itemCount", std::to_string(count)}, {"itemList", list}}}};
}

std::string itemsBody(const std::vector<const Product*>& hits, const StandIn::Trouble& trouble,
                      const std::string& host)
{
    ordered_json items = ordered_json::array();
    for (const Product* hit : hits) {
        const int position = static_cast<int>(items.size()) + 1;
        const std::string path = StandIn::picturePath(trouble.forPicture(position), hit->picture);
        items.push_back(itemOf(*hit, "http://" + host + path));
    }
    return bodyOf(hits.size(), items).dump();
}

}  // namespace

StandIn::Answer productsAnswer(const std::vector<const Product*>& hits, const StandIn::Trouble& trouble,
                               const std::string& host)
{
    StandIn::ShopBodies bodies;
    bodies.products = [&] { return itemsBody(hits, trouble, host); };
    bodies.noProducts = [&] { return itemsBody({}, trouble, host); };
    bodies.oddTypes = oddTypes;
    bodies.beforeList = R"({"data":{"itemList":)";
    bodies.behindList = "}}";
    return searchAnswer(trouble, bodies);
}

}  // namespace Appliance::Retailer
