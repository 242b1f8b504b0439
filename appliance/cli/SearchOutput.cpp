#include "SearchOutput.h"

#include <unistd.h>

#include <cstdio>

#include "CardJson.h"
#include "CardView.h"
#include "PlainText.h"

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

// What comes below the card, with a blank line between them.
void SearchOutput::printDetail(const std::string& text)
{
    print((hasDetails_ ? "" : "\n") + text);
    hasDetails_ = true;
}

void SearchOutput::onQueued()
{
    progress_.show("waiting for another search at the retailer");
}

void SearchOutput::onAsked()
{
    progress_.show("searching");
}

void SearchOutput::onShown(const Ui::CardContent& card)
{
    print(cardText(card, style_));
}

void SearchOutput::onPicture(const PictureName& picture, const std::string& path)
{
    printDetail(pictureText(picture.first, path, style_, picture.second));
}

void SearchOutput::onPictureGivenUp(const PictureName& picture, const std::string& reason)
{
    printDetail(missingPictureText(picture.first, reason, style_, picture.second));
}

void SearchOutput::onPicturesAwaited(std::size_t settled, std::size_t total)
{
    progress_.show("waiting for picture " + std::to_string(settled + 1) + " of " + std::to_string(total));
}

void SearchOutput::errors(const SearchResult& result)
{
    if (!result.loginTrouble.empty()) {
        printDetail(style_.red("✗ ") +
                    "not logged in at the retailer: " + Appliance::printable(result.loginTrouble) + "\n");
    }
    for (const std::string& error : result.errors) {
        printDetail(style_.red("✗ ") + error + "\n");
    }
}

nlohmann::json searchJson(const SearchResult& result)
{
    nlohmann::json givenUp = nlohmann::json::array();
    for (const auto& [picture, reason] : result.picturesGivenUp) {
        const char* kind = picture.second == Ui::PictureKind::Badge ? "badge" : "picture";
        givenUp.push_back({{"index", picture.first}, {"kind", kind}, {"reason", reason}});
    }
    return {{"card", Ui::toJson(result.card)},
            {"picturesGivenUp", givenUp},
            {"errors", result.errors},
            {"loginTrouble", result.loginTrouble}};
}

}  // namespace Tool
