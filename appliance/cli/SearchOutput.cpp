#include "SearchOutput.h"

#include <unistd.h>

#include <cstdio>

#include "CardJson.h"
#include "CardView.h"

namespace Tool {

SearchOutput::SearchOutput(bool quiet) : quiet_(quiet), style_(styleOf(STDOUT_FILENO)), progress_(quiet) {}

void SearchOutput::print(const std::string& text)
{
    if (!quiet_) {
        progress_.clear();
        std::fputs(text.c_str(), stdout);
        std::fflush(stdout);
    }
}

void SearchOutput::onAsked()
{
    progress_.show("searching");
}

void SearchOutput::onShown(const Ui::CardContent& card)
{
    print(cardText(card, style_) + "\n");
}

void SearchOutput::onPicture(std::size_t index, const std::string& path)
{
    print(pictureText(index, path, style_));
}

void SearchOutput::onPictureGivenUp(std::size_t index, const std::string& reason)
{
    print(missingPictureText(index, reason, style_));
}

void SearchOutput::onPicturesAwaited(std::size_t settled, std::size_t total)
{
    progress_.show("waiting for picture " + std::to_string(settled + 1) + " of " + std::to_string(total));
}

void SearchOutput::errors(const SearchResult& result)
{
    for (const std::string& error : result.errors) {
        print(style_.red("✗ ") + error + "\n");
    }
}

nlohmann::json searchJson(const SearchResult& result)
{
    nlohmann::json givenUp = nlohmann::json::array();
    for (const auto& [index, reason] : result.picturesGivenUp) {
        givenUp.push_back({{"index", index}, {"reason", reason}});
    }
    return {{"card", Ui::toJson(result.card)}, {"picturesGivenUp", givenUp}, {"errors", result.errors}};
}

}  // namespace Tool
