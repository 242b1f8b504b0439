// How a socket is found and when it closes differs with and without TLS; what is done to it does not.
#include "Connections.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace Appliance::StandIn {
namespace {

using Clock = std::chrono::steady_clock;

// Milliseconds until then, rounded up so that a wait never ends too early; -1 for no end.
int pollTime(std::optional<Clock::time_point> end)
{
    if (!end)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*end - Clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

}  // namespace

Connections::Connections() : endEvent(eventfd(0, EFD_CLOEXEC))
{
    if (endEvent < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
}

Connections::~Connections()
{
    close(endEvent);
}

bool Connections::wait(const httplib::Request& request, std::optional<std::chrono::milliseconds> time) const
{
    std::array<pollfd, 2> watched{{{socketOf(request), POLLRDHUP, 0}, {endEvent, POLLIN, 0}}};
    const auto end = time ? std::optional(Clock::now() + *time) : std::nullopt;
    int ready = 0;
    do
        ready = poll(watched.data(), watched.size(), pollTime(end));
    while (ready < 0 && errno == EINTR);
    return ready == 0;
}

void Connections::reset(const httplib::Request& request) const
{
    // Dissolving a TCP connection's association sends the reset at once and leaves the socket open for
    // its owner to close.
    sockaddr nowhere{};
    nowhere.sa_family = AF_UNSPEC;
    connect(socketOf(request), &nowhere, sizeof nowhere);
}

void Connections::endAll()
{
    const std::lock_guard<std::mutex> lock(mutex);
    isEnded = true;
    eventfd_write(endEvent, 1);
    for (const int socket : sockets)
        shutdown(socket, SHUT_RDWR);
}

void Connections::add(int socket)
{
    const std::lock_guard<std::mutex> lock(mutex);
    sockets.insert(socket);
    if (isEnded)
        shutdown(socket, SHUT_RDWR);
}

void Connections::remove(int socket)
{
    const std::lock_guard<std::mutex> lock(mutex);
    sockets.erase(socket);
}

}  // namespace Appliance::StandIn
