#include "SearchArguments.h"

#include "Commands.h"
#include "Words.h"

namespace Tool {

SearchOptions SearchArguments::options(const std::string& fallback) const
{
    return {merchant, term.empty() ? fallback : joined(term), limit, !withoutPictures};
}

CLI::Option* addSearchArguments(CLI::App& command, SearchArguments& arguments)
{
    command.add_option("--merchant", arguments.merchant, "Where to search")->capture_default_str();
    addTimeoutOption(command, arguments.limit, "Seconds to wait for all of the search");
    command.add_flag("--no-pictures", arguments.withoutPictures, "Do not wait for the pictures");
    command.add_flag("--json", arguments.json, "One JSON object on standard output, nothing else");
    return addTexts(command, "TERM", arguments.term, "What to search for; several words are one term");
}

}  // namespace Tool
