#include "CardFace.h"

#include <sstream>

namespace Screen {

namespace {

const char* stateOf(const Ui::CardContent& card, const Verdict& verdict)
{
    const bool isOver = card.state == Ui::CardState::Shown || verdict.outcome == Outcome::Failed;
    if (isOver) {
        return "shown";
    }
    return card.state == Ui::CardState::Searching ? "searching" : "empty";
}

nlohmann::json faceOf(const Ui::Product& product, const PictureFolder& pictures)
{
    return {{"name", product.name},
            {"size", product.size},
            {"discount", product.discount},
            {"formerPrice", product.formerPrice},
            {"price", product.price},
            {"variantRef", product.variantRef},
            {"id", product.id},
            {"discountType", product.discountType},
            {"picture", pictures.addressOf(product.picture)},
            {"badge", pictures.addressOf(product.badge)}};
}

struct Term {
    std::string words;
    nlohmann::json troubles = nlohmann::json::array();
};

// Where there is no trouble word the term stays as it is.
Term termOf(const std::string& text)
{
    Term term;
    std::istringstream in(text);
    for (std::string word; in >> word;) {
        if (word[0] == '~') {
            term.troubles.push_back(word);
        } else {
            term.words += (term.words.empty() ? "" : " ") + word;
        }
    }
    if (term.troubles.empty()) {
        term.words = text;
    }
    return term;
}

}  // namespace

nlohmann::json faceOf(const Ui::CardContent& card, const Verdict& verdict, const PictureFolder& pictures)
{
    const Term term = termOf(card.term);
    nlohmann::json products = nlohmann::json::array();
    for (const Ui::Product& product : card.products) {
        products.push_back(faceOf(product, pictures));
    }
    return {{"sequence", card.sequence},
            {"state", stateOf(card, verdict)},
            {"source", Ui::nameOf(card.source)},
            {"merchant", card.merchant},
            {"term", term.words},
            {"troubles", term.troubles},
            {"products", products},
            {"outcome", nameOf(verdict.outcome)},
            {"reasons", verdict.reasons}};
}

}  // namespace Screen
