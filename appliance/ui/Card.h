// The product card that the screen shows: what was searched, the products found, their pictures.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "Received.h"

namespace Ui {

// Who found the products: the service, by a merchant's name, or the retailer's service.
enum class Source { Merchant, Retailer };

// "merchant" and "retailer"; nothing for another name.
const char* nameOf(Source source);
std::optional<Source> sourceNamed(const std::string& name);

enum class PictureKind { Product, Badge };

struct Product {
    std::string name;
    std::string size;
    std::string discount;
    std::string formerPrice;
    std::string price;
    std::string variantRef;
    std::string picture;  // path of the local file; empty until it arrived
    // A retailer's product only:
    std::string id{};
    std::string discountType{};  // the code of the discount
    std::string badge{};         // like picture: the icon of the discount's badge
};

enum class CardState { Empty, Searching, Shown };

struct CardContent {
    int sequence = 0;  // counts the searches of this run of the app from 1; 0 before the first
    int results = 0;   // counts the product lists taken
    CardState state = CardState::Empty;
    Source source = Source::Merchant;
    std::string merchant;  // empty where the source is the retailer
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
    std::vector<std::string> ids{};
    std::vector<std::string> discountTypes{};
    Source source = Source::Merchant;
};

// Keeps the content consistent whatever arrives. Used by one thread at a time; no input makes it fail.
class Card {
  public:
    static constexpr std::size_t ProductsShown = 100;

    const CardContent& content() const { return content_; }

    void startSearch(const std::string& merchant, const std::string& term);
    void startRetailerSearch(const std::string& term);

    // The service of that source was asked for its lists. It answers in the order in which it was asked.
    void noteAsked(Source source);

    // All return why the message is ignored, or nothing when it was taken.
    // While a search is under way, lists of another source, merchant or term are an older search's: ignored.
    // No products and no term from the retailer are the answer to any term, once what the retailer's service
    // was asked before that search is answered.
    std::optional<std::string> showResult(const ProductLists& lists);
    // Pictures of another source than the card's are an older search's, too.
    std::optional<std::string> notePicture(const std::string& number, const std::string& path);
    // `type` is "0" for the product's picture and "2" for the icon of its badge.
    std::optional<std::string> noteRetailerPicture(const std::string& number, const std::string& type,
                                                   const std::string& path);

    void noteReceived(Appliance::Received received);

  private:
    void start(Source source, const std::string& merchant, const std::string& term);
    std::optional<std::string> note(Source source, PictureKind kind, const std::string& number,
                                    const std::string& path);
    bool noteAnswer(Source source);
    bool isOfNoSearch(const ProductLists& lists, std::size_t total) const;
    void replaceProducts(const ProductLists& lists, std::size_t total);

    CardContent content_;
    std::array<int, 2> awaited_{};  // answers of each source's service
    int earlier_ = 0;               // of these, what was asked before the search under way
};

}  // namespace Ui
