// The library's defaults are for a server that has the machine to itself.
#include "Serving.h"

#include <stdexcept>

namespace Appliance::StandIn {
namespace {

// Stalled pictures occupy a thread each until their client gives up.
constexpr std::size_t serverThreads = 16;

// The library's own choice would let two servers share a port and divide its connections between them.
void reuseAddressOnly(socket_t listening)
{
    const int yes = 1;
    setsockopt(listening, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

}  // namespace

void setUp(httplib::Server& server, RequestLog& log)
{
    server.new_task_queue = [] { return new httplib::ThreadPool(serverThreads); };
    // A connection for each request: nothing idles, and a closed connection is the end of its answer.
    server.set_keep_alive_max_count(1);
    server.set_logger([&log](const httplib::Request& request, const httplib::Response& response) {
        const bool isCut = response.content_provider_ && !response.content_provider_success_;
        log.write(request.method, request.target, response.status, isCut);
    });
}

int bind(httplib::Server& server, const std::string& address, int port)
{
    server.set_socket_options(reuseAddressOnly);
    int bound = port;
    if (port == 0)
        bound = server.bind_to_any_port(address);
    else if (!server.bind_to_port(address, port))
        bound = -1;
    if (bound < 0)
        throw std::runtime_error("cannot listen on " + address + " port " + std::to_string(port));
    return bound;
}

}  // namespace Appliance::StandIn
