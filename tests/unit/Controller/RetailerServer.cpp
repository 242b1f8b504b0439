#include "RetailerServer.h"

#include <stdlib.h>

#include <memory>

#include "SiteValues.h"

RetailerServer& RetailerServer::instance()
{
    static RetailerServer server;
    return server;
}

RetailerServer::RetailerServer() : ScriptedServer("http://" CARVOY_RETAILER_API_HOST)
{
    const std::string connectTo =
        CARVOY_RETAILER_API_HOST ":80:" + place() + "," CARVOY_RETAILER_ICON_HOST ":80:" + place();
    setenv("APPLIANCE_CONNECT_TO", connectTo.c_str(), 1);
    // Somebody's proxy would know neither of them.
    setenv("no_proxy", "*", 1);
    start([](int socket) { return std::make_unique<SocketStream>(socket); });
}

std::string RetailerServer::iconPath(int badge)
{
    return "/ui/app/6001/icon/" + std::to_string(badge) + ".png";
}
