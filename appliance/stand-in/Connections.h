// The open connections of a server: waiting on one, resetting one, ending them all.
#pragma once

#include <httplib.h>

#include <chrono>
#include <mutex>
#include <optional>
#include <set>

namespace Appliance::StandIn {

// The member functions may be called from any thread.
class Connections {
  public:
    // std::system_error when the system lacks resources.
    Connections();
    virtual ~Connections();
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    // Blocks for that time, or without end, while `request` is being handled. False at once when the client
    // leaves or endAll is called.
    bool wait(const httplib::Request& request, std::optional<std::chrono::milliseconds> time) const;

    // Resets the connection under the HTTP library's feet; what is still written to it goes nowhere.
    void reset(const httplib::Request& request) const;

    // Shuts every connection down, those that are still to come as well, and ends every wait.
    void endAll();

  protected:
    // A socket is open from its add to its remove.
    void add(int socket);
    void remove(int socket);

  private:
    // Of the connection that a request came on, while it is being handled.
    virtual int socketOf(const httplib::Request& request) const = 0;

    int endEvent;
    std::mutex mutex;
    std::set<int> sockets;
    bool isEnded = false;
};

}  // namespace Appliance::StandIn
