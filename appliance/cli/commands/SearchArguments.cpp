#include "SearchArguments.h"

#include "Commands.h"
#include "Words.h"

namespace Tool {

SearchOptions SearchArguments::options() const
{
    SearchOptions options;
    options.source = atRetailer ? Ui::Source::Retailer : Ui::Source::Merchant;
    options.merchant = merchant;
    options.term = joined(term);
    if (term.empty()) {
        options.term = atRetailer ? "우유" : "milk";
    }
    options.limit = limit;
    options.waitForPictures = !withoutPictures;
    options.loggedOut = loggedOut;
    return options;
}

CLI::Option* addSearchArguments(CLI::App& command, SearchArguments& arguments)
{
    CLI::Option* merchant =
        command.add_option("--merchant", arguments.merchant, "Where to search")->capture_default_str();
    CLI::Option* retailer =
        command.add_flag("--retailer", arguments.atRetailer, "Search at the retailer, who has no merchants");
    retailer->excludes(merchant);
    command.add_flag("--logged-out", arguments.loggedOut, "As a user who is not logged in at the retailer")
        ->needs(retailer);
    addTimeoutOption(command, arguments.limit, "Seconds to wait for all of the search");
    command.add_flag("--no-pictures", arguments.withoutPictures, "Do not wait for the pictures");
    command.add_flag("--json", arguments.json, "One JSON object on standard output, nothing else");
    return addTexts(command, "TERM", arguments.term, "What to search for; several words are one term")
        ->check(notEmpty());
}

}  // namespace Tool
