// What the retailer answers.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Carvoy {

/** A product as the UI app is to show it. What the answer does not have, or the UI app does not know, is
 * empty. */
struct RetailerProduct {
    std::string name;
    std::string imageUrl;
    std::string price;  // in won: "12,900원"
    std::string id;
    std::string discountType;  // code of an accepted kind of discount, as sent
    std::string discountText;
    std::string discountIconUrl;
};

namespace RetailerAnswer {

/**
 * Appends the first `limit` products of an answer's body, in its order. Returns null, or what is wrong with
 * the answer, in words for the log; one without products is wrong, too.
 */
const char* read(const std::string& body, std::size_t limit, std::vector<RetailerProduct>& products);

}  // namespace RetailerAnswer

}  // namespace Carvoy
