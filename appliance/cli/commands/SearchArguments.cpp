#include "SearchArguments.h"

#include "Commands.h"
#include "Words.h"

namespace Tool {

SearchOptions SearchArguments::options(const std::string& fallback) const
{
    const auto limit = std::chrono::duration<double>(timeout);
    return {merchant, term.empty() ? fallback : joined(term),
            std::chrono::duration_cast<std::chrono::milliseconds>(limit), !withoutPictures};
}

CLI::Option* addSearchArguments(CLI::App& command, SearchArguments& arguments)
{
    command.add_option("--merchant", arguments.merchant, "Where to search")->capture_default_str();
    addTimeoutOption(command, arguments.timeout);
    command.add_flag("--no-pictures", arguments.withoutPictures, "Do not wait for the pictures");
    command.add_flag("--json", arguments.json, "One JSON object on standard output, nothing else");
    return command.add_option("TERM", arguments.term, "What to search for; several words are one term");
}

}  // namespace Tool
