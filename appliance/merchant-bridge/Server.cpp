// Routes by hand: the library's own routes are regular expressions, which recurse over the whole path.
#include "Server.h"

#include "Catalogue.h"
#include "Distrust.h"
#include "PictureRoute.h"
#include "Pictures.h"
#include "RequestLog.h"
#include "Responses.h"
#include "SearchRoute.h"
#include "Serving.h"
#include "ThrowawayCertificates.h"
#include "TlsConnections.h"
#include "Tokens.h"

#include <httplib.h>

#include <optional>
#include <thread>

namespace Appliance::MerchantBridge {
namespace {

using HttpsServer = StandIn::EndableServer<httplib::SSLServer>;

void checkPictures(const Catalogue& catalogue, const StandIn::Pictures& pictures)
{
    for (const Merchant& merchant : catalogue.merchants())
        for (const Product& product : merchant.products)
            pictures.require(product.picture);
}

}  // namespace

class Server::Parts {
  public:
    explicit Parts(const Settings& settings);
    ~Parts();

    int port = 0;

  private:
    void route(const httplib::Request& request, httplib::Response& response) const;

    Catalogue catalogue;
    StandIn::Pictures pictures;
    StandIn::RequestLog requestLog;
    ThrowawayCertificates authority;
    Certificate certificate;
    HttpsServer server;
    std::optional<Distrust> distrust;
    StandIn::TlsConnections connections;
    SearchRoute searchRoute;
    StandIn::PictureRoute pictureRoute;
    std::thread listener;
};

Server::Parts::Parts(const Settings& settings)
    : catalogue(settings.catalogueFile),
      pictures(settings.picturesFolder),
      requestLog(settings.logFile),
      certificate(authority.issue({settings.host})),
      server(certificate.x509.get(), certificate.key.get()),
      connections(server.ssl_context()),
      searchRoute(catalogue, connections, readTokens(settings.tokensFile), settings.host),
      pictureRoute(pictures, connections)
{
    checkPictures(catalogue, pictures);
    if (!settings.untrustedWhile.empty())
        distrust.emplace(server.ssl_context(), settings.host, settings.untrustedWhile);
    authority.writeAuthority(settings.caFile);
    StandIn::setUp(server, requestLog);
    server.set_pre_routing_handler([this](const auto& request, auto& response) {
        route(request, response);
        return httplib::Server::HandlerResponse::Handled;
    });
    port = server.open(settings.address, settings.port);
    listener = std::thread([this] { server.listen_after_bind(); });
}

Server::Parts::~Parts()
{
    connections.endAll();
    server.endListening();
    listener.join();
}

void Server::Parts::route(const httplib::Request& request, httplib::Response& response) const
{
    if (request.method != "GET")
        StandIn::sendError(response, 405, "only GET is served");
    else if (request.path == SearchRoute::path)
        searchRoute.handle(request, response);
    else
        pictureRoute.handle(request, response);
}

Server::Server(const Settings& settings) : parts(std::make_unique<Parts>(settings)) {}

Server::~Server() = default;

int Server::port() const
{
    return parts->port;
}

}  // namespace Appliance::MerchantBridge
