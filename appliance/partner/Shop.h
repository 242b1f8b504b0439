// The partner's web shop as its app shows it: one page, and a cart.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Received.h"

namespace Partner {

enum class Page { None, Product, Cart, CheckOut };

struct Product {
    std::string merchant;
    std::string variantRef;
};

struct CartLine {
    Product product;
    int quantity = 0;  // at least 1
};

struct ShopContent {
    Page page = Page::None;
    Product product;             // on the product page; else empty
    std::vector<CartLine> cart;  // in the order in which the products came, at most Shop::CartLines
    Appliance::ReceivedMessages messages;
};

// Used by one thread at a time. What cannot be done returns why, and changes nothing; else the text is empty.
class Shop {
  public:
    static constexpr std::size_t CartLines = 100;

    const ShopContent& content() const { return content_; }

    std::string showProduct(const Product& product);
    std::string addToCart();  // the product that is shown
    void showCart();
    void checkOut();

    void noteReceived(Appliance::Received received);

  private:
    void show(Page page, const Product& product = {});

    ShopContent content_;
};

}  // namespace Partner
