// An HTTP server without TLS whose connections can be waited on, reset and ended.
#pragma once

#include "Connections.h"
#include "Serving.h"

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
    explicit PlainServer(PlainConnections& usedConnections);

  private:
    bool process_and_close_socket(socket_t socket) override;

    PlainConnections& connections;
};

}  // namespace Appliance::StandIn
