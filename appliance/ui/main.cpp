// The UI app's process: its options, then the app.
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "AppMain.h"
#include "Confirmation.h"
#include "Installation.h"
#include "UiApp.h"

namespace {

using Ui::Confirmation;

Confirmation::Mode modeOf(const std::string& name)
{
    const auto found = std::find_if(Confirmation::Modes.begin(), Confirmation::Modes.end(),
                                    [&name](const auto& mode) { return mode.first == name; });
    return found->second;
}

struct Options {
    std::string mode = "now";
    int delay = 2000;
    std::optional<int> port;
    std::string untrustedFile;
    std::vector<std::string> merchants;

    Ui::UiSettings settings() const;
};

Ui::UiSettings Options::settings() const
{
    Ui::UiSettings settings{{modeOf(mode), delay}, std::nullopt};
    if (port) {
        settings.face = {*port, Appliance::shareFolder("screen") / "page", untrustedFile, merchants};
    }
    return settings;
}

void addOptions(CLI::App& app, Options& options)
{
    app.add_option("--confirm", options.mode, "How product lists are answered")
        ->check(CLI::IsMember(Confirmation::Modes))
        ->capture_default_str();
    app.add_option("--confirm-after", options.delay, "Delay of a late answer, in milliseconds")
        ->check(CLI::Range(0, 3'600'000))
        ->capture_default_str();
    CLI::Option* screen = app.add_option("--screen", options.port,
                                         "Serve the screen as a page on this port; 0 takes any that is free")
                              ->type_name("PORT")
                              ->check(CLI::Range(0, 65535).description(""));
    app.add_option("--merchant", options.merchants, "A merchant that the page offers; may be given again")
        ->needs(screen);
    app.add_option("--untrusted-file", options.untrustedFile,
                   "The page makes and removes it: while it exists the merchant is not to be trusted")
        ->type_name("FILE")
        ->needs(screen);
}

}  // namespace

int main(int argc, char** argv)
{
    Options options;
    return Appliance::runApp(
        "The screen's product card: shows what the service finds.", argc, argv,
        [&options] { return std::make_unique<Ui::UiApp>(options.settings()); },
        [&options](CLI::App& app) { addOptions(app, options); });
}
