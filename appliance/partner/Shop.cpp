#include "Shop.h"

#include <algorithm>
#include <utility>

namespace Partner {

std::string Shop::showProduct(const Product& product)
{
    if (product.merchant.empty() || product.variantRef.empty()) {
        return "it names no product";
    }
    show(Page::Product, product);
    return {};
}

std::string Shop::addToCart()
{
    if (content_.page != Page::Product) {
        return "no product is shown";
    }
    const Product& shown = content_.product;
    const auto line =
        std::find_if(content_.cart.begin(), content_.cart.end(), [&shown](const CartLine& other) {
            return other.product.merchant == shown.merchant && other.product.variantRef == shown.variantRef;
        });
    if (line != content_.cart.end()) {
        ++line->quantity;
        return {};
    }
    if (content_.cart.size() == CartLines) {
        return "the cart is full";
    }
    content_.cart.push_back({shown, 1});
    return {};
}

void Shop::showCart()
{
    show(Page::Cart);
}

void Shop::checkOut()
{
    show(Page::CheckOut);
}

void Shop::noteReceived(Appliance::Received received)
{
    Appliance::note(content_.messages, std::move(received));
}

void Shop::show(Page page, const Product& product)
{
    content_.page = page;
    content_.product = product;
}

}  // namespace Partner
