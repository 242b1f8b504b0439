// An HTTP server without TLS whose connections can be waited on, reset and ended.
#pragma once

#include "Connections.h"
#include "Serving.h"

#include <chrono>

namespace Appliance::StandIn {

class PlainConnections : public Connections {
  public:
    // Marks a socket as open, and as the one that the calling thread serves.
    class Served {
      public:
        Served(PlainConnections& usedOwner, int usedSocket);
        ~Served();
        Served(const Served&) = delete;
        Served& operator=(const Served&) = delete;

      private:
        PlainConnections& owner;
        const int socket;
    };

  private:
    int socketOf(const httplib::Request& request) const override;
};

// Serves one request for each connection. `usedConnections` must outlive it.
class PlainServer : public EndableServer<httplib::Server> {
  public:
    // `usedPatience`: how long a peer may take to send the next bytes, or to make room for some.
    explicit PlainServer(PlainConnections& usedConnections,
                         std::chrono::milliseconds usedPatience = std::chrono::seconds(30));

  private:
    bool process_and_close_socket(socket_t socket) override;

    PlainConnections& connections;
    const std::chrono::milliseconds patience;
};

}  // namespace Appliance::StandIn
