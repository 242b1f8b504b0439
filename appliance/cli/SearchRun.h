// One search from the question to the last picture.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Card.h"
#include "EventLoop.h"
#include "Root.h"
#include "UiClient.h"

namespace Tool {

struct SearchOptions {
    Ui::Source source = Ui::Source::Merchant;
    std::string merchant = "freshmart";  // for that source
    std::string term;
    std::chrono::milliseconds limit{75'000};  // for everything
    bool waitForPictures = true;
    bool loggedOut = false;  // while the retailer is searched
};

// A picture of a product, by the product's position from 0. In the order in which a product's pictures come.
using PictureName = std::pair<std::size_t, Ui::PictureKind>;

// Told of each step; main loop.
class SearchListener {
  public:
    virtual ~SearchListener() = default;
    // At the retailer, where another search has to be awaited first.
    virtual void onQueued() = 0;
    virtual void onAsked() = 0;
    virtual void onShown(const Ui::CardContent& card) = 0;
    // Also after onPictureGivenUp(), which is then void.
    virtual void onPicture(const PictureName& picture, const std::string& path) = 0;
    virtual void onPictureGivenUp(const PictureName& picture, const std::string& reason) = 0;
    // `settled` counts the products whose pictures came or were given up.
    virtual void onPicturesAwaited(std::size_t settled, std::size_t total) = 0;
};

struct SearchResult {
    Ui::CardContent card;
    std::map<PictureName, std::string> picturesGivenUp;  // what the service logged
    // The service's error lines during the search, but for those of threads that were there before.
    std::vector<std::string> errors;
    std::string loginTrouble;  // why the retailer's service found nothing without asking; else empty

    bool found() const { return !card.products.empty(); }
};

// Needs the entered session. A search at the retailer holds the login file until its lists are shown. Throws
// Failure: TimedOut, Interrupted, NotRunning, or Failed when a newer search took the card or the login file
// cannot be had.
SearchResult runSearch(EventLoop& loop, const Root& root, const SearchOptions& options,
                       SearchListener& listener);

}  // namespace Tool
