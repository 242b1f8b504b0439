// The UI app's process: its options, then the app.
#include <CLI/CLI.hpp>

#include <map>

#include "UiApp.h"

namespace {

const std::map<std::string, Ui::Confirmation::Mode> Modes = {{"now", Ui::Confirmation::Mode::Now},
                                                             {"late", Ui::Confirmation::Mode::Late},
                                                             {"fail", Ui::Confirmation::Mode::Fail},
                                                             {"never", Ui::Confirmation::Mode::Never}};

}  // namespace

int main(int argc, char** argv)
{
    CLI::App options("The screen's product card: shows what the service finds.");
    std::string mode = "now";
    int delay = 2000;
    options.add_option("--confirm", mode, "How product lists are answered")
        ->check(CLI::IsMember({"now", "late", "fail", "never"}))
        ->capture_default_str();
    options.add_option("--confirm-after", delay, "Delay of a late answer, in milliseconds")
        ->check(CLI::Range(0, 3'600'000))
        ->capture_default_str();
    CLI11_PARSE(options, argc, argv);

    constexpr double millisecondsPerSecond = 1000;
    return Ui::UiApp(Modes.at(mode), delay / millisecondsPerSecond).run(argc, argv) == 0 ? 0 : 1;
}
