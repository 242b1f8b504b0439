#include "Card.h"

#include <charconv>
#include <tuple>
#include <utility>

namespace Ui {

namespace {

// Decimal digits only: no sign, no blank, nothing behind.
std::optional<std::size_t> countFrom(const std::string& text)
{
    std::size_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return value;
}

std::string at(const std::vector<std::string>& list, std::size_t index)
{
    return index < list.size() ? list[index] : std::string();
}

// Whether only the picture may differ.
bool isSameProduct(const Product& a, const Product& b)
{
    return std::tie(a.name, a.size, a.discount, a.formerPrice, a.price, a.variantRef) ==
           std::tie(b.name, b.size, b.discount, b.formerPrice, b.price, b.variantRef);
}

Product productAt(const ProductLists& lists, std::size_t index)
{
    return {at(lists.names, index),
            at(lists.sizes, index),
            at(lists.discounts, index),
            at(lists.formerPrices, index),
            at(lists.prices, index),
            at(lists.variantRefs, index),
            std::string()};
}

}  // namespace

void Card::startSearch(const std::string& merchant, const std::string& term)
{
    ++content_.sequence;
    content_.state = CardState::Searching;
    content_.merchant = merchant;
    content_.term = term;
    content_.products.clear();
}

std::optional<std::string> Card::showResult(const ProductLists& lists)
{
    const std::optional<std::size_t> total = countFrom(lists.total);
    if (!total || *total > ProductsShown) {
        return "the number of products is \"" + lists.total + "\"";
    }
    const bool sameSearch = lists.merchant == content_.merchant && lists.term == content_.term;
    if (content_.state == CardState::Searching && !sameSearch) {
        return "it belongs to another search";
    }
    ++content_.results;
    content_.state = CardState::Shown;
    content_.merchant = lists.merchant;
    content_.term = lists.term;
    replaceProducts(lists, *total);
    return std::nullopt;
}

// The service sends each picture once: lists that are sent again leave the pictures of their products.
void Card::replaceProducts(const ProductLists& lists, std::size_t total)
{
    const std::vector<Product> before = std::move(content_.products);
    content_.products.clear();
    for (std::size_t i = 0; i < total; ++i) {
        Product product = productAt(lists, i);
        if (i < before.size() && isSameProduct(product, before[i])) {
            product.picture = before[i].picture;
        }
        content_.products.push_back(std::move(product));
    }
}

std::optional<std::string> Card::notePicture(const std::string& number, const std::string& path)
{
    const std::optional<std::size_t> index = countFrom(number);
    if (!index || *index >= content_.products.size()) {
        return "there is no product \"" + number + "\"";
    }
    if (path.empty()) {
        return "it names no file";
    }
    content_.products[*index].picture = path;
    return std::nullopt;
}

void Card::noteReceived(Appliance::Received received)
{
    Appliance::note(content_.messages, std::move(received));
}

}  // namespace Ui
