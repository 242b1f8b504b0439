// The HTTP library does not tell which sockets it serves; the TLS library does, at the first handshake
// step and when the connection is freed, which comes before its socket is closed.
#include "Connections.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace Appliance::MerchantBridge {
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

Connections::Connections(SSL_CTX* context) : endEvent(eventfd(0, EFD_CLOEXEC))
{
    if (endEvent < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
    SSL_CTX_set_app_data(context, this);
    SSL_CTX_set_info_callback(context, handshakeChanged);
}

Connections::~Connections()
{
    close(endEvent);
}

bool Connections::wait(const SSL* connection, std::optional<std::chrono::milliseconds> time) const
{
    std::array<pollfd, 2> watched{{{SSL_get_fd(connection), POLLRDHUP, 0}, {endEvent, POLLIN, 0}}};
    const auto end = time ? std::optional(Clock::now() + *time) : std::nullopt;
    int ready = 0;
    do
        ready = poll(watched.data(), watched.size(), pollTime(end));
    while (ready < 0 && errno == EINTR);
    return ready == 0;
}

void Connections::reset(const SSL* connection)
{
    // Dissolving a TCP connection's association sends the reset at once and leaves the socket open for
    // its owner to close.
    sockaddr nowhere{};
    nowhere.sa_family = AF_UNSPEC;
    connect(SSL_get_fd(connection), &nowhere, sizeof nowhere);
}

void Connections::endAll()
{
    const std::lock_guard<std::mutex> lock(mutex);
    isEnded = true;
    eventfd_write(endEvent, 1);
    for (const auto& [connection, socket] : sockets)
        shutdown(socket, SHUT_RDWR);
}

void Connections::handshakeChanged(const SSL* connection, int where, int)
{
    if ((where & SSL_CB_HANDSHAKE_START) == 0)
        return;
    auto* owner = static_cast<Connections*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(connection)));
    owner->add(const_cast<SSL*>(connection));
}

void Connections::connectionFreed(void* connection, void* owner, CRYPTO_EX_DATA*, int, long, void*)
{
    if (owner != nullptr)
        static_cast<Connections*>(owner)->remove(static_cast<SSL*>(connection));
}

int Connections::ownerIndex()
{
    static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, connectionFreed);
    return index;
}

void Connections::add(SSL* connection)
{
    const std::lock_guard<std::mutex> lock(mutex);
    SSL_set_ex_data(connection, ownerIndex(), this);
    sockets[connection] = SSL_get_fd(connection);
    if (isEnded)
        shutdown(sockets[connection], SHUT_RDWR);
}

void Connections::remove(const SSL* connection)
{
    const std::lock_guard<std::mutex> lock(mutex);
    sockets.erase(connection);
}

}  // namespace Appliance::MerchantBridge
