// merchant-bridge: stands in for the merchant's product-search service on a PC.
#include "Installation.h"
#include "Program.h"
#include "Server.h"
#include "SiteValues.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>

namespace StandIn = Appliance::StandIn;

namespace {

using Appliance::MerchantBridge::Server;
using Appliance::MerchantBridge::Settings;

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
    app.add_option("--untrusted-while", settings.untrustedWhile,
                   "While this file is there, present a certificate that nobody trusts");
}

void announce(const Settings& settings, int port)
{
    const nlohmann::json ready{{"port", port},
                               {"host", settings.host},
                               {"caFile", std::filesystem::absolute(settings.caFile).string()}};
    std::puts(ready.dump().c_str());
    std::fflush(stdout);
}

void serve(const Settings& settings)
{
    const Server server(settings);
    announce(settings, server.port());
    StandIn::waitForEndSignal();
}

}  // namespace

int main(int argc, char** argv)
{
    StandIn::holdEndSignals();
    Settings settings;
    settings.host = CARVOY_MERCHANT_BRIDGE_HOST;
    settings.catalogueFile = Appliance::shareFolder("merchant-bridge") / "catalogue.json";
    settings.picturesFolder = Appliance::shareFolder("merchant-bridge") / "pictures";
    CLI::App app("Stands in for a merchant's product-search service on this machine.", "merchant-bridge");
    addOptions(app, settings);
    app.footer(
        StandIn::footer(R"({"caFile": ..., "host": ..., "port": ...})", "a file, the catalogue or the port"));
    return StandIn::run(app, argc, argv, [&] { serve(settings); });
}
