#include <unistd.h>

#include <cstdio>
#include <memory>

#include "CardJson.h"
#include "CardView.h"
#include "Commands.h"
#include "FolderWatch.h"
#include "IndentedJson.h"
#include "Names.h"
#include "Session.h"
#include "UiClient.h"

namespace Tool {

namespace {

struct ResultArguments {
    std::string root;
    bool atRetailer = false;
    std::chrono::milliseconds limit{75'000};
    bool json = false;
};

std::string allText(const Ui::CardContent& card, const Style& style)
{
    std::string pictures;
    for (std::size_t i = 0; i < card.products.size(); ++i) {
        const auto& [picture, badge] = std::tie(card.products[i].picture, card.products[i].badge);
        pictures += picture.empty() ? "" : pictureText(i, picture, style);
        pictures += badge.empty() ? "" : pictureText(i, badge, style, Ui::PictureKind::Badge);
    }
    return cardText(card, style) + (pictures.empty() ? "" : "\n" + pictures);
}

Ui::CardContent freshCard(EventLoop& loop, const Root& root, Ui::Source source,
                          std::chrono::milliseconds limit)
{
    Appliance::Extras whose;
    whose.texts[Appliance::KeySource] = Ui::nameOf(source);
    std::optional<Ui::CardContent> card;
    const Appliance::FolderWatch screen(root.screenFolder(),
                                        [&](const std::string&) { card = currentCard(root); });
    const CardMark mark = askUi(loop, Appliance::OperationShow, whose, limit);
    card = currentCard(root);
    const auto isNewer = [&] { return card && card->results > mark.results; };
    switch (loop.runUntil(isNewer, limit)) {
        case EventLoop::Outcome::Done:
            return *card;
        case EventLoop::Outcome::TimedOut:
            throw Failure(Exit::TimedOut, "no product list came in time");
        case EventLoop::Outcome::Interrupted:
            break;
    }
    throw Failure(Exit::Interrupted, "interrupted");
}

Exit result(const ResultArguments& arguments)
{
    const Session session = enterSession(arguments.root);
    EventLoop loop;
    const Ui::Source source = arguments.atRetailer ? Ui::Source::Retailer : Ui::Source::Merchant;
    const Ui::CardContent card = freshCard(loop, session.root, source, arguments.limit);
    const std::string text = arguments.json ? Appliance::indentedJson(Ui::toJson(card)) + "\n"
                                            : allText(card, styleOf(STDOUT_FILENO));
    std::fputs(text.c_str(), stdout);
    return Exit::Ok;
}

}  // namespace

void addResultCommand(CLI::App& app, Action& chosen)
{
    const auto arguments = std::make_shared<ResultArguments>();
    CLI::App* command = app.add_subcommand("result", "Ask the service again for what it found last");
    addRootOption(*command, arguments->root);
    command->add_flag("--retailer", arguments->atRetailer, "Ask the retailer's service");
    addTimeoutOption(*command, arguments->limit, "Seconds to wait for the answer, and for the list");
    command->add_flag("--json", arguments->json, "The card as JSON");
    command->footer("Examples:\n  appliance result\n  appliance result --retailer --json\n");
    command->callback([arguments, &chosen] { chosen = [arguments] { return result(*arguments); }; });
}

}  // namespace Tool
