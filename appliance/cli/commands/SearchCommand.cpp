#include <cstdio>
#include <memory>

#include "Commands.h"
#include "IndentedJson.h"
#include "SearchArguments.h"
#include "SearchOutput.h"
#include "Session.h"

namespace Tool {

namespace {

Exit search(const std::string& rootOption, const SearchArguments& arguments)
{
    const Session session = enterSession(rootOption);
    EventLoop loop;
    SearchOutput output(arguments.json);
    const SearchResult result = runSearch(loop, session.root, arguments.options(), output);
    if (arguments.json) {
        std::printf("%s\n", Appliance::indentedJson(searchJson(result)).c_str());
    } else if (!result.found()) {
        output.errors(result);
    }
    return result.found() ? Exit::Ok : Exit::Failed;
}

}  // namespace

void addSearchCommand(CLI::App& app, Action& chosen)
{
    const auto root = std::make_shared<std::string>();
    const auto arguments = std::make_shared<SearchArguments>();
    CLI::App* command = app.add_subcommand("search", "Search, and watch the product card fill");
    addRootOption(*command, *root);
    addSearchArguments(*command, *arguments)->required();
    command->footer(
        "Examples:\n"
        "  appliance search milk\n"
        "  appliance search --merchant greengrocer \"apple ~delay=3s\"\n"
        "  appliance search --retailer 우유\n"
        "  appliance search --retailer --logged-out 우유\n");
    command->callback(
        [root, arguments, &chosen] { chosen = [root, arguments] { return search(*root, *arguments); }; });
}

}  // namespace Tool
