// A search in the terminal as it goes on, and as JSON when it is over.
#pragma once

#include <nlohmann/json.hpp>

#include "Progress.h"
#include "SearchRun.h"
#include "Terminal.h"

namespace Tool {

// Prints to standard output what comes, and tells what is awaited. Quiet: prints nothing.
class SearchOutput : public SearchListener {
  public:
    explicit SearchOutput(bool quiet);

    void onQueued() override;
    void onAsked() override;
    void onShown(const Ui::CardContent& card) override;
    void onPicture(const PictureName& picture, const std::string& path) override;
    void onPictureGivenUp(const PictureName& picture, const std::string& reason) override;
    void onPicturesAwaited(std::size_t settled, std::size_t total) override;

    // Of a search that found nothing: what was wrong with the login, and the service's error lines.
    void errors(const SearchResult& result);

    Progress& progress() { return progress_; }

  private:
    void print(const std::string& text);
    void printDetail(const std::string& text);

    bool quiet_;
    bool hasDetails_ = false;
    Style style_;
    Progress progress_;
};

nlohmann::json searchJson(const SearchResult& result);

}  // namespace Tool
