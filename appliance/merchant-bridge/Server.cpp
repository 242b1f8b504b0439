// Routes by hand: the library's own routes are regular expressions, which recurse over the whole path.
#include "Server.h"

#include "Catalogue.h"
#include "Connections.h"
#include "PictureRoute.h"
#include "Pictures.h"
#include "RequestLog.h"
#include "Responses.h"
#include "SearchRoute.h"
#include "ThrowawayCertificates.h"
#include "Tokens.h"

#include <httplib.h>
#include <sys/socket.h>

#include <stdexcept>
#include <thread>

namespace Appliance::MerchantBridge {
namespace {

// Stalled pictures occupy a thread each until their client gives up.
constexpr std::size_t serverThreads = 16;

class HttpsServer : public httplib::SSLServer {
  public:
    using httplib::SSLServer::SSLServer;

    // Makes the listening thread close the socket and return. stop() would close it under that thread's
    // hands, and does nothing before the thread has begun.
    void endListening() { shutdown(svr_sock_, SHUT_RDWR); }
};

// The library's own choice would let two servers share a port and divide its connections between them.
void reuseAddressOnly(socket_t listening)
{
    const int yes = 1;
    setsockopt(listening, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

void checkPictures(const Catalogue& catalogue, const Pictures& pictures)
{
    for (const Merchant& merchant : catalogue.merchants())
        for (const Product& product : merchant.products)
            if (pictures.find(product.picture) == nullptr)
                throw std::runtime_error("the picture " + product.picture + " is missing");
}

}  // namespace

class Server::Parts {
  public:
    explicit Parts(const Settings& settings);
    ~Parts();

    int port = 0;

  private:
    void bind(const Settings& settings);
    void route(const httplib::Request& request, httplib::Response& response) const;
    void log(const httplib::Request& request, const httplib::Response& response);

    Catalogue catalogue;
    Pictures pictures;
    RequestLog requestLog;
    ThrowawayCertificates authority;
    Certificate certificate;
    HttpsServer server;
    Connections connections;
    SearchRoute searchRoute;
    PictureRoute pictureRoute;
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
    authority.writeAuthority(settings.caFile);
    server.new_task_queue = [] { return new httplib::ThreadPool(serverThreads); };
    // A connection for each request: nothing idles, and a closed connection is the end of its answer.
    server.set_keep_alive_max_count(1);
    server.set_pre_routing_handler([this](const auto& request, auto& response) {
        route(request, response);
        return httplib::Server::HandlerResponse::Handled;
    });
    server.set_logger([this](const auto& request, const auto& response) { log(request, response); });
    bind(settings);
    listener = std::thread([this] { server.listen_after_bind(); });
}

Server::Parts::~Parts()
{
    connections.endAll();
    server.endListening();
    listener.join();
}

void Server::Parts::bind(const Settings& settings)
{
    server.set_socket_options(reuseAddressOnly);
    port = settings.port;
    if (port == 0)
        port = server.bind_to_any_port(settings.address);
    else if (!server.bind_to_port(settings.address, port))
        port = -1;
    if (port < 0)
        throw std::runtime_error("cannot listen on " + settings.address + " port " +
                                 std::to_string(settings.port));
}

void Server::Parts::route(const httplib::Request& request, httplib::Response& response) const
{
    if (request.method != "GET")
        send(response, 405, errorAnswer(405, "only GET is served"));
    else if (request.path == SearchRoute::path)
        searchRoute.handle(request, response);
    else
        pictureRoute.handle(request, response);
}

void Server::Parts::log(const httplib::Request& request, const httplib::Response& response)
{
    const bool isCut = response.content_provider_ && !response.content_provider_success_;
    requestLog.write(request.method, request.target, response.status, isCut);
}

Server::Server(const Settings& settings) : parts(std::make_unique<Parts>(settings)) {}

Server::~Server() = default;

int Server::port() const
{
    return parts->port;
}

}  // namespace Appliance::MerchantBridge
