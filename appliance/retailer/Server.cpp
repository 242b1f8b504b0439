// Routes by hand but for the search, whose body the library reads for its own routes only. Their regular
// expressions, which recurse over the whole path, see that one path alone.
#include "Server.h"

#include "Catalogue.h"
#include "PictureRoute.h"
#include "PlainServer.h"
#include "Responses.h"
#include "SearchRoute.h"

#include <httplib.h>

#include <string_view>
#include <thread>

namespace Appliance::Retailer {
namespace {

using HandlerResponse = httplib::Server::HandlerResponse;

constexpr std::string_view iconRoot = "/ui/app/6001/icon/";
constexpr std::size_t mostBodyBytes = 64 * 1024;

void checkPictures(const Catalogue& catalogue, const StandIn::Pictures& pictures)
{
    for (const Product& product : catalogue.products())
        pictures.require(product.picture);
}

bool isIconPath(const std::string& path)
{
    return path.compare(0, iconRoot.size(), iconRoot) == 0;
}

// The Host header without a port.
std::string hostOf(const httplib::Request& request)
{
    const std::string host = request.get_header_value("Host");
    return host.substr(0, host.find(':'));
}

// For requests that the library refuses itself: what we send always has a type.
void explainStatus(const httplib::Request&, httplib::Response& response)
{
    if (!response.has_header("Content-Type"))
        StandIn::sendError(response, response.status,
                           response.status == 413 ? "the body is too long" : "the request cannot be read");
}

}  // namespace

class Server::Parts {
  public:
    explicit Parts(const Settings& settings);
    ~Parts();

    int port = 0;

  private:
    HandlerResponse route(const httplib::Request& request, httplib::Response& response) const;
    void sendIcon(const httplib::Request& request, httplib::Response& response) const;

    const std::string host;
    const std::string iconHost;
    Catalogue catalogue;
    StandIn::Pictures pictures;
    StandIn::Pictures icons;
    StandIn::RequestLog requestLog;
    StandIn::PlainConnections connections;
    StandIn::PlainServer server;
    SearchRoute searchRoute;
    StandIn::PictureRoute pictureRoute;
    std::thread listener;
};

Server::Parts::Parts(const Settings& settings)
    : host(settings.host),
      iconHost(settings.iconHost),
      catalogue(settings.catalogueFile),
      pictures(settings.picturesFolder),
      icons(settings.iconsFolder),
      requestLog(settings.logFile),
      server(connections),
      searchRoute(catalogue, connections, settings.host),
      pictureRoute(pictures, connections)
{
    checkPictures(catalogue, pictures);
    StandIn::setUp(server, requestLog);
    server.set_payload_max_length(mostBodyBytes);
    server.set_pre_routing_handler(
        [this](const auto& request, auto& response) { return route(request, response); });
    server.Post(".*", [this](const auto& request, auto& response) { searchRoute.handle(request, response); });
    server.set_error_handler(explainStatus);
    port = server.open(settings.address, settings.port);
    listener = std::thread([this] { server.listen_after_bind(); });
}

Server::Parts::~Parts()
{
    connections.endAll();
    server.endListening();
    listener.join();
}

HandlerResponse Server::Parts::route(const httplib::Request& request, httplib::Response& response) const
{
    const bool isSearch = request.path == SearchRoute::path;
    const std::string method = isSearch ? "POST" : "GET";
    if (request.method != method) {
        StandIn::sendError(response, 405, "only " + method + " is served here");
    } else if (hostOf(request) != (isIconPath(request.path) ? iconHost : host)) {
        StandIn::sendError(response, 421, "this is not on the host " + hostOf(request));
    } else if (isSearch) {
        return HandlerResponse::Unhandled;
    } else if (isIconPath(request.path)) {
        sendIcon(request, response);
    } else {
        pictureRoute.handle(request, response);
    }
    return HandlerResponse::Handled;
}

void Server::Parts::sendIcon(const httplib::Request& request, httplib::Response& response) const
{
    const StandIn::Picture* icon = icons.find(std::string_view(request.path).substr(iconRoot.size()));
    if (icon == nullptr)
        StandIn::sendError(response, 404, "no such icon");
    else
        StandIn::send(response, 200, {icon->bytes, icon->contentType});
}

Server::Server(const Settings& settings) : parts(std::make_unique<Parts>(settings)) {}

Server::~Server() = default;

int Server::port() const
{
    return parts->port;
}

}  // namespace Appliance::Retailer
