// How one of the HTTP library's servers is set up, bound and ended, with and without TLS.
#pragma once

#include "RequestLog.h"

#include <httplib.h>
#include <sys/socket.h>

#include <stdexcept>
#include <string>

namespace Appliance::StandIn {

// The port that it is bound to; 0 asks for any that is free. std::runtime_error when there is none to be had.
int bind(httplib::Server& server, const std::string& address, int port);

template <typename LibraryServer>
class EndableServer : public LibraryServer {
  public:
    using LibraryServer::LibraryServer;

    // As bind(). The library lets five connections wait: of more that come at once the kernel drops some, and
    // those come again after a second.
    int open(const std::string& address, int port)
    {
        constexpr int waitingConnections = 1024;
        const int bound = StandIn::bind(*this, address, port);
        if (::listen(this->svr_sock_, waitingConnections) != 0)
            throw std::runtime_error("cannot let clients wait on port " + std::to_string(bound));
        return bound;
    }

    // Makes the listening thread close the socket and return. stop() would close it under that thread's
    // hands, and does nothing before the thread has begun.
    void endListening() { shutdown(this->svr_sock_, SHUT_RDWR); }
};

// One request for each connection, each written to the log, which must outlive the server.
void setUp(httplib::Server& server, RequestLog& log);

}  // namespace Appliance::StandIn
