// retailer: stands in for the retailer's product-search service on a PC.
#include "Installation.h"
#include "Program.h"
#include "Server.h"
#include "SiteValues.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace StandIn = Appliance::StandIn;

namespace {

using Appliance::Retailer::Server;
using Appliance::Retailer::Settings;

Settings defaults()
{
    const std::filesystem::path share = Appliance::shareFolder("retailer");
    Settings settings;
    settings.host = CARVOY_RETAILER_API_HOST;
    settings.iconHost = CARVOY_RETAILER_ICON_HOST;
    settings.catalogueFile = share / "catalogue.json";
    settings.picturesFolder = share / "pictures";
    settings.iconsFolder = share / "icons";
    return settings;
}

void addOptions(CLI::App& app, Settings& settings)
{
    app.add_option("--port", settings.port, "Port to listen on; 0 takes any that is free")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    app.add_option("--address", settings.address, "Address to listen on")->capture_default_str();
    app.add_option("--host", settings.host, "Host name of the search and of the products' pictures")
        ->capture_default_str();
    app.add_option("--icon-host", settings.iconHost, "Host name of the badge icons")->capture_default_str();
    app.add_option("--catalogue", settings.catalogueFile, "What the retailer sells")->capture_default_str();
    app.add_option("--pictures", settings.picturesFolder, "Folder of the products' pictures")
        ->capture_default_str();
    app.add_option("--icons", settings.iconsFolder, "Folder of the badge icons")->capture_default_str();
    app.add_option("--log", settings.logFile, "Append a line for each request");
}

void announce(const Settings& settings, int port)
{
    const nlohmann::json ready{{"port", port}, {"host", settings.host}, {"iconHost", settings.iconHost}};
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
    Settings settings = defaults();
    CLI::App app("Stands in for the retailer's product-search service on this machine.", "retailer");
    addOptions(app, settings);
    app.footer(StandIn::footer(R"({"host": ..., "iconHost": ..., "port": ...})",
                               "the catalogue, a picture, the log or the port"));
    return StandIn::run(app, argc, argv, [&] { serve(settings); });
}
