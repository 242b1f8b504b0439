// One search from the question to the last picture.
#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "Card.h"
#include "EventLoop.h"
#include "Root.h"
#include "UiClient.h"

namespace Tool {

struct SearchOptions {
    std::string merchant = "freshmart";
    std::string term;
    std::chrono::milliseconds limit{75'000};  // for everything
    bool waitForPictures = true;
};

// Told of each step; main loop.
class SearchListener {
  public:
    virtual ~SearchListener() = default;
    virtual void onAsked() = 0;
    virtual void onShown(const Ui::CardContent& card) = 0;
    virtual void onPicture(std::size_t index, const std::string& path) = 0;
    virtual void onPictureGivenUp(std::size_t index, const std::string& reason) = 0;
    virtual void onPicturesAwaited(std::size_t settled, std::size_t total) = 0;
};

struct SearchResult {
    Ui::CardContent card;
    std::map<std::size_t, std::string> picturesGivenUp;  // by position from 0: what the service logged
    std::vector<std::string> errors;                     // the service's error lines during the search

    bool found() const { return !card.products.empty(); }
};

// Needs the entered session. Throws Failure: TimedOut, Interrupted, NotRunning, or Failed when a newer
// search took the card.
SearchResult runSearch(EventLoop& loop, const Root& root, const SearchOptions& options,
                       SearchListener& listener);

}  // namespace Tool
