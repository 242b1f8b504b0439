// The product card that the screen shows: what was searched, the products found, their pictures.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Received.h"

namespace Ui {

struct Product {
    std::string name;
    std::string size;
    std::string discount;
    std::string formerPrice;
    std::string price;
    std::string variantRef;
    std::string picture;  // path of the local file; empty until it arrived
};

enum class CardState { Empty, Searching, Shown };

struct CardContent {
    int sequence = 0;  // counts the searches of this run of the app from 1; 0 before the first
    int results = 0;   // counts the product lists taken
    CardState state = CardState::Empty;
    std::string merchant;
    std::string term;
    std::vector<Product> products;
    Appliance::ReceivedMessages messages;  // the newest last
};

// The product lists of a result message as they arrived; `total` is still text.
struct ProductLists {
    std::string merchant;
    std::string term;
    std::string total;
    std::vector<std::string> names;
    std::vector<std::string> sizes;
    std::vector<std::string> discounts;
    std::vector<std::string> formerPrices;
    std::vector<std::string> prices;
    std::vector<std::string> variantRefs;
};

// Keeps the content consistent whatever arrives. Used by one thread at a time; no input makes it fail.
class Card {
  public:
    static constexpr std::size_t ProductsShown = 100;

    const CardContent& content() const { return content_; }

    void startSearch(const std::string& merchant, const std::string& term);

    // Both return why the message is ignored, or nothing when it was taken.
    // While a search is under way, lists for another merchant or term are an older search's: ignored.
    std::optional<std::string> showResult(const ProductLists& lists);
    std::optional<std::string> notePicture(const std::string& number, const std::string& path);

    void noteReceived(Appliance::Received received);

  private:
    void replaceProducts(const ProductLists& lists, std::size_t total);

    CardContent content_;
};

}  // namespace Ui
