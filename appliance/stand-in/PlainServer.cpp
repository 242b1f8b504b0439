// Serves each socket itself: the library's own way of doing so tells nobody which socket that is.
#include "PlainServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>

namespace Appliance::StandIn {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// How long a peer may take to leave once it has its answer.
constexpr milliseconds farewell = seconds(2);

// A worker thread serves one connection at a time.
thread_local int servedSocket = -1;

bool isReady(int socket, short events, milliseconds time)
{
    pollfd watched{socket, events, 0};
    int ready = 0;
    do
        ready = poll(&watched, 1, static_cast<int>(time.count()));
    while (ready < 0 && errno == EINTR);
    return ready > 0;
}

using AddressOf = int (*)(int, sockaddr*, socklen_t*);

void readAddress(AddressOf addressOf, int socket, std::string& ip, int& port)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (addressOf(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0 || address.sin_family != AF_INET)
        return;
    std::array<char, INET_ADDRSTRLEN> text{};
    ip = inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size());
    port = ntohs(address.sin_port);
}

class SocketStream : public httplib::Stream {
  public:
    SocketStream(int usedSocket, milliseconds usedPatience) : handle(usedSocket), patience(usedPatience) {}

    bool is_readable() const override { return isReady(handle, POLLIN, patience); }
    bool is_writable() const override { return isReady(handle, POLLOUT, patience); }

    ssize_t read(char* data, std::size_t size) override
    {
        return is_readable() ? recv(handle, data, size, 0) : -1;
    }

    ssize_t write(const char* data, std::size_t size) override
    {
        return is_writable() ? send(handle, data, size, MSG_NOSIGNAL) : -1;
    }

    void get_remote_ip_and_port(std::string& ip, int& port) const override
    {
        readAddress(getpeername, handle, ip, port);
    }

    void get_local_ip_and_port(std::string& ip, int& port) const override
    {
        readAddress(getsockname, handle, ip, port);
    }

    socket_t socket() const override { return handle; }

  private:
    const int handle;
    const milliseconds patience;
};

// A socket that is closed with unread bytes in it resets the connection, and the peer may lose its answer:
// that of a request that was refused before its body was read.
void sayFarewell(int socket)
{
    const auto end = std::chrono::steady_clock::now() + farewell;
    std::array<char, 4096> unread;
    shutdown(socket, SHUT_WR);
    while (std::chrono::steady_clock::now() < end && isReady(socket, POLLIN, farewell) &&
           recv(socket, unread.data(), unread.size(), 0) > 0) {
    }
}

}  // namespace

PlainConnections::Served::Served(PlainConnections& usedOwner, int usedSocket)
    : owner(usedOwner), socket(usedSocket)
{
    servedSocket = socket;
    owner.add(socket);
}

PlainConnections::Served::~Served()
{
    owner.remove(socket);
    servedSocket = -1;
}

int PlainConnections::socketOf(const httplib::Request&) const
{
    return servedSocket;
}

PlainServer::PlainServer(PlainConnections& usedConnections, milliseconds usedPatience)
    : connections(usedConnections), patience(usedPatience)
{
}

bool PlainServer::process_and_close_socket(socket_t socket)
{
    bool isServed = false;
    {
        const PlainConnections::Served served(connections, socket);
        SocketStream stream(socket, patience);
        bool isClosed = false;
        isServed = process_request(stream, true, isClosed, nullptr);
        sayFarewell(socket);
    }
    close(socket);
    return isServed;
}

}  // namespace Appliance::StandIn
