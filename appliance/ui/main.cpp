// The UI app's process: its options, then the app.
#include <algorithm>
#include <string>

#include "AppMain.h"
#include "Confirmation.h"
#include "UiApp.h"

namespace {

using Ui::Confirmation;

Confirmation::Mode modeOf(const std::string& name)
{
    const auto found = std::find_if(Confirmation::Modes.begin(), Confirmation::Modes.end(),
                                    [&name](const auto& mode) { return mode.first == name; });
    return found->second;
}

}  // namespace

int main(int argc, char** argv)
{
    std::string mode = "now";
    int delay = 2000;
    const auto makeApp = [&mode, &delay] {
        constexpr double millisecondsPerSecond = 1000;
        return std::make_unique<Ui::UiApp>(modeOf(mode), delay / millisecondsPerSecond);
    };
    const auto addOptions = [&mode, &delay](CLI::App& options) {
        options.add_option("--confirm", mode, "How product lists are answered")
            ->check(CLI::IsMember(Confirmation::Modes))
            ->capture_default_str();
        options.add_option("--confirm-after", delay, "Delay of a late answer, in milliseconds")
            ->check(CLI::Range(0, 3'600'000))
            ->capture_default_str();
    };
    return Appliance::runApp("The screen's product card: shows what the service finds.", argc, argv, makeApp,
                             addOptions);
}
