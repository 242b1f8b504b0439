// A web server that treats its clients badly, from the first byte of a connection on.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ScriptedServer.h"

namespace ServiceTest {

/** What becomes of a connection: its bytes, or null where it comes to nothing (or has been served already).
 */
using Opening = std::function<std::unique_ptr<ByteStream>(int socket)>;

Opening plainHttp();
Opening overTls(const Appliance::Certificate& certificate, const std::vector<std::string>& protocols = {});

/** Serves from construction to destruction. */
class HostileServer : public ScriptedServer {
  public:
    using ScriptedServer::place;

    /** `origin`: scheme and host, as the service's addresses have them. */
    HostileServer(const std::string& origin, Opening opening, const ServerPlace& place = {});
    ~HostileServer() override { stop(); }
};

/** One way of treating a client. */
struct Hostility {
    using Handler = ScriptedServer::Handler;

    const char* name;
    Handler handler;

    /** What libcurl calls that. */
    std::string reason;

    /** Where it begins with the connection: how that opens, of a server that is known as `host`. */
    std::function<Opening(const Appliance::ThrowawayCertificates& authority, const std::string& host)>
        opening{};
};

std::ostream& operator<<(std::ostream& stream, const Hostility& hostility);

/** How connections to it open. */
Opening openingOf(const Hostility& hostility, const Appliance::ThrowawayCertificates& authority,
                  const std::string& host);

/** The path, and what begins a connection of HTTP/2, are handled that way from now on. */
void misbehave(ScriptedServer& server, const std::string& path, const Hostility& hostility);

/** A handler that sends these bytes as they are, and ends the connection in order. */
Hostility::Handler bytes(const std::string& all);

/** Everything that ends at once and brings no answer: in the bytes of HTTP, and below them. */
const std::vector<Hostility>& hostilitiesOverHttp();
const std::vector<Hostility>& hostilitiesOverTls();

/** What goes on until the client's time is up. */
const std::vector<Hostility>& stalls();

}  // namespace ServiceTest
