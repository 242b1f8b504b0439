#include "Card.h"

#include <algorithm>
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

// Whether only the pictures may differ.
bool isSameProduct(const Product& a, const Product& b)
{
    return std::tie(a.name, a.size, a.discount, a.formerPrice, a.price, a.variantRef, a.id, a.discountType) ==
           std::tie(b.name, b.size, b.discount, b.formerPrice, b.price, b.variantRef, b.id, b.discountType);
}

Product productAt(const ProductLists& lists, std::size_t index)
{
    return {at(lists.names, index),
            at(lists.sizes, index),
            at(lists.discounts, index),
            at(lists.formerPrices, index),
            at(lists.prices, index),
            at(lists.variantRefs, index),
            std::string(),
            at(lists.ids, index),
            at(lists.discountTypes, index),
            std::string()};
}

std::optional<PictureKind> kindFrom(const std::string& type)
{
    if (type == "0") {
        return PictureKind::Product;
    }
    return type == "2" ? std::optional<PictureKind>(PictureKind::Badge) : std::nullopt;
}

}  // namespace

const char* nameOf(Source source)
{
    return source == Source::Retailer ? "retailer" : "merchant";
}

std::optional<Source> sourceNamed(const std::string& name)
{
    for (const Source source : {Source::Merchant, Source::Retailer}) {
        if (name == nameOf(source)) {
            return source;
        }
    }
    return std::nullopt;
}

void Card::startSearch(const std::string& merchant, const std::string& term)
{
    start(Source::Merchant, merchant, term);
}

void Card::startRetailerSearch(const std::string& term)
{
    start(Source::Retailer, "", term);
}

void Card::start(Source source, const std::string& merchant, const std::string& term)
{
    ++content_.sequence;
    content_.state = CardState::Searching;
    content_.source = source;
    content_.merchant = merchant;
    content_.term = term;
    content_.products.clear();
    earlier_ = awaited_.at(static_cast<std::size_t>(source));
}

void Card::noteAsked(Source source)
{
    ++awaited_.at(static_cast<std::size_t>(source));
}

// Whether it answers what was asked before the search under way.
bool Card::noteAnswer(Source source)
{
    int& awaited = awaited_.at(static_cast<std::size_t>(source));
    awaited = std::max(awaited - 1, 0);  // others may ask the services, too
    const bool isEarlier = source == content_.source && earlier_ > 0;
    earlier_ -= isEarlier ? 1 : 0;
    return isEarlier;
}

// The retailer's service does not search for a user who is not logged in, and then knows of no term.
bool Card::isOfNoSearch(const ProductLists& lists, std::size_t total) const
{
    const bool isRetailers = lists.source == Source::Retailer && content_.source == Source::Retailer;
    return isRetailers && lists.term.empty() && total == 0;
}

std::optional<std::string> Card::showResult(const ProductLists& lists)
{
    const bool isEarlier = noteAnswer(lists.source);
    const std::optional<std::size_t> total = countFrom(lists.total);
    if (!total || *total > ProductsShown) {
        return "the number of products is \"" + lists.total + "\"";
    }
    const bool isAnyTerms = isOfNoSearch(lists, *total) && !isEarlier;
    const std::string term = isAnyTerms ? content_.term : lists.term;
    const bool sameSearch = std::tie(lists.source, lists.merchant, term) ==
                            std::tie(content_.source, content_.merchant, content_.term);
    if (content_.state == CardState::Searching && !sameSearch) {
        return "it belongs to another search";
    }
    ++content_.results;
    earlier_ = 0;
    content_.state = CardState::Shown;
    content_.source = lists.source;
    content_.merchant = lists.merchant;
    content_.term = term;
    replaceProducts(lists, *total);
    return std::nullopt;
}

// A service sends each picture once: lists that are sent again leave the pictures of their products.
void Card::replaceProducts(const ProductLists& lists, std::size_t total)
{
    const std::vector<Product> before = std::move(content_.products);
    content_.products.clear();
    for (std::size_t i = 0; i < total; ++i) {
        Product product = productAt(lists, i);
        if (i < before.size() && isSameProduct(product, before[i])) {
            product.picture = before[i].picture;
            product.badge = before[i].badge;
        }
        content_.products.push_back(std::move(product));
    }
}

std::optional<std::string> Card::notePicture(const std::string& number, const std::string& path)
{
    return note(Source::Merchant, PictureKind::Product, number, path);
}

std::optional<std::string> Card::noteRetailerPicture(const std::string& number, const std::string& type,
                                                     const std::string& path)
{
    const std::optional<PictureKind> kind = kindFrom(type);
    if (!kind) {
        return "there is no kind of picture \"" + type + "\"";
    }
    return note(Source::Retailer, *kind, number, path);
}

std::optional<std::string> Card::note(Source source, PictureKind kind, const std::string& number,
                                      const std::string& path)
{
    if (source != content_.source) {
        return "it belongs to another search";
    }
    const std::optional<std::size_t> index = countFrom(number);
    if (!index || *index >= content_.products.size()) {
        return "there is no product \"" + number + "\"";
    }
    if (path.empty()) {
        return "it names no file";
    }
    Product& product = content_.products[*index];
    (kind == PictureKind::Badge ? product.badge : product.picture) = path;
    return std::nullopt;
}

void Card::noteReceived(Appliance::Received received)
{
    Appliance::note(content_.messages, std::move(received));
}

}  // namespace Ui
