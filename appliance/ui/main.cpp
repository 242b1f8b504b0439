// The UI app's process: its options, then the app.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <string>

#include "Confirmation.h"
#include "UiApp.h"

namespace {

using Ui::Confirmation;

const char Footer[] = R"(Exit status:
  0  ended as asked
  1  it could not run as an app
  2  wrong usage
)";

Confirmation::Mode modeOf(const std::string& name)
{
    const auto found = std::find_if(Confirmation::Modes.begin(), Confirmation::Modes.end(),
                                    [&name](const auto& mode) { return mode.first == name; });
    return found->second;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App options("The screen's product card: shows what the service finds.");
    std::string mode = "now";
    int delay = 2000;
    options.add_option("--confirm", mode, "How product lists are answered")
        ->check(CLI::IsMember(Confirmation::Modes))
        ->capture_default_str();
    options.add_option("--confirm-after", delay, "Delay of a late answer, in milliseconds")
        ->check(CLI::Range(0, 3'600'000))
        ->capture_default_str();
    options.footer(Footer);
    try {
        options.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int wrongUsage = 2;
        return options.exit(error) == 0 ? 0 : wrongUsage;
    }

    constexpr double millisecondsPerSecond = 1000;
    return Ui::UiApp(modeOf(mode), delay / millisecondsPerSecond).run(argc, argv) == 0 ? 0 : 1;
}
