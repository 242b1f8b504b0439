// merchant-bridge: stands in for the merchant's product-search service on a PC.
#include "Server.h"
#include "SiteValues.h"
#include "Trouble.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

namespace {

using Appliance::MerchantBridge::Server;
using Appliance::MerchantBridge::Settings;

constexpr int cannotStart = 1;
constexpr int wrongUsage = 2;

std::filesystem::path shareFolder()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() /
           "share/merchant-bridge";
}

void addOptions(CLI::App& app, Settings& settings)
{
    app.add_option("--port", settings.port, "Port to listen on; 0 takes any that is free")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    app.add_option("--address", settings.address, "Address to listen on")->capture_default_str();
    app.add_option("--host", settings.host, "Host name in the certificate and in the pictures' URLs")
        ->capture_default_str();
    app.add_option("--ca-file", settings.caFile,
                   "Written at start: the certificate that clients are to trust")
        ->required();
    app.add_option("--tokens-file", settings.tokensFile, "First line SESSION,ACCESS: the tokens to accept")
        ->required();
    app.add_option("--catalogue", settings.catalogueFile, "What the merchants sell")->capture_default_str();
    app.add_option("--pictures", settings.picturesFolder, "Folder of the products' pictures")
        ->capture_default_str();
    app.add_option("--log", settings.logFile, "Append a line for each request; never a token");
}

std::string footer()
{
    return "\nWhen it is ready it prints one line of JSON: {\"caFile\": ..., \"host\": ..., \"port\": ...}\n"
           "It serves until SIGTERM or SIGINT.\n\n"
           "Trouble words, to be put into the search term and to be combined:\n" +
           Appliance::MerchantBridge::troubleHelp() +
           "\nExit status:\n"
           "  0  stopped by a signal\n"
           "  1  could not start: a file, the catalogue or the port; standard error says which\n"
           "  2  wrong usage\n";
}

void announce(const Settings& settings, int port)
{
    const nlohmann::json ready{{"port", port},
                               {"host", settings.host},
                               {"caFile", std::filesystem::absolute(settings.caFile).string()}};
    std::puts(ready.dump().c_str());
    std::fflush(stdout);
}

int serve(const Settings& settings, const sigset_t& endSignals)
{
    const Server server(settings);
    announce(settings, server.port());
    int signal = 0;
    sigwait(&endSignals, &signal);
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    // Before the first thread, so that every thread inherits it and the signals wait for sigwait.
    sigset_t endSignals;
    sigemptyset(&endSignals);
    sigaddset(&endSignals, SIGTERM);
    sigaddset(&endSignals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &endSignals, nullptr);

    try {
        Settings settings;
        settings.host = CARVOY_MERCHANT_BRIDGE_HOST;
        settings.catalogueFile = shareFolder() / "catalogue.json";
        settings.picturesFolder = shareFolder() / "pictures";
        CLI::App app("Stands in for a merchant's product-search service on this machine.", "merchant-bridge");
        addOptions(app, settings);
        app.footer(footer());
        try {
            app.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            return app.exit(error) == 0 ? 0 : wrongUsage;
        }
        return serve(settings, endSignals);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "merchant-bridge: %s\n", error.what());
        return cannotStart;
    }
}
