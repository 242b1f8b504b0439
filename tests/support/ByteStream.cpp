#include "ByteStream.h"

#include <poll.h>
#include <sys/socket.h>

#include <stdexcept>
#include <utility>

namespace {

class TlsStream : public SocketStream {
  public:
    TlsStream(SSL_CTX* context, int socket) : SocketStream(socket), tls_(SSL_new(context), SSL_free)
    {
        SSL_set_fd(tls_.get(), socket);
        isOpen_ = SSL_accept(tls_.get()) == 1;
    }

    ~TlsStream() override
    {
        if (isOpen_)
            SSL_shutdown(tls_.get());
    }

    bool isOpen() const { return isOpen_; }

    bool receive(char& byte) override { return SSL_read(tls_.get(), &byte, 1) == 1; }

    void send(const std::string& bytes) override
    {
        if (!bytes.empty())
            SSL_write(tls_.get(), bytes.data(), static_cast<int>(bytes.size()));
    }

    bool waitForBytes(std::chrono::milliseconds limit) override
    {
        return SSL_pending(tls_.get()) > 0 || SocketStream::waitForBytes(limit);
    }

    void cut() override { isOpen_ = false; }

    void reset() override
    {
        cut();
        SocketStream::reset();
    }

  private:
    std::unique_ptr<SSL, decltype(&SSL_free)> tls_;
    bool isOpen_ = false;
};

std::string onTheWire(const std::vector<std::string>& protocols)
{
    std::string wire;
    for (const std::string& protocol : protocols)
        wire += static_cast<char>(protocol.size()) + protocol;
    return wire;
}

int choose(SSL*, const unsigned char** chosen, unsigned char* length, const unsigned char* offered,
           unsigned int size, void* own)
{
    const auto& protocols = *static_cast<const std::string*>(own);
    const auto* spoken = reinterpret_cast<const unsigned char*>(protocols.data());
    const int result = SSL_select_next_proto(const_cast<unsigned char**>(chosen), length, spoken,
                                             static_cast<unsigned>(protocols.size()), offered, size);
    return result == OPENSSL_NPN_NEGOTIATED ? SSL_TLSEXT_ERR_OK : SSL_TLSEXT_ERR_ALERT_FATAL;
}

}  // namespace

bool SocketStream::receive(char& byte)
{
    return recv(socket_, &byte, 1, 0) == 1;
}

void SocketStream::send(const std::string& bytes)
{
    size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0)
            return;
        sent += static_cast<size_t>(count);
    }
}

bool SocketStream::waitForBytes(std::chrono::milliseconds limit)
{
    pollfd watch{socket_, POLLIN, 0};
    return poll(&watch, 1, static_cast<int>(limit.count())) > 0;
}

void SocketStream::reset()
{
    const linger atOnce{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

TlsServer::TlsServer(const Appliance::Certificate& certificate, std::vector<std::string> protocols)
    : protocols_(onTheWire(protocols)), context_(SSL_CTX_new(TLS_server_method()), SSL_CTX_free)
{
    if (!context_ || SSL_CTX_use_certificate(context_.get(), certificate.x509.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context_.get(), certificate.key.get()) != 1)
        throw std::runtime_error("the server has no certificate");
    if (!protocols_.empty())
        SSL_CTX_set_alpn_select_cb(context_.get(), choose, &protocols_);
}

std::unique_ptr<ByteStream> TlsServer::accept(int socket) const
{
    auto stream = std::make_unique<TlsStream>(context_.get(), socket);
    return stream->isOpen() ? std::move(stream) : nullptr;
}
