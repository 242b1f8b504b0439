// The bytes of one connection, whatever carries them.
#pragma once

#include <openssl/ssl.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "ThrowawayCertificates.h"

/** The socket stays its maker's, who closes it behind the stream. One thread. */
class ByteStream {
  public:
    ByteStream() = default;
    virtual ~ByteStream() = default;
    ByteStream(const ByteStream&) = delete;
    ByteStream& operator=(const ByteStream&) = delete;

    /** False at the end. */
    virtual bool receive(char& byte) = 0;

    /** A client that has gone away is no error. */
    virtual void send(const std::string& bytes) = 0;

    /** Waits until there is something to receive, be it the end; false when the time is over. */
    virtual bool waitForBytes(std::chrono::milliseconds limit) = 0;

    /** The connection is to end without a word; to be called last. */
    virtual void cut() = 0;

    /** The same, and with a reset. */
    virtual void reset() = 0;
};

class SocketStream : public ByteStream {
  public:
    explicit SocketStream(int socket) : socket_(socket) {}

    bool receive(char& byte) override;
    void send(const std::string& bytes) override;
    bool waitForBytes(std::chrono::milliseconds limit) override;
    void cut() override {}
    void reset() override;

  private:
    int socket_;
};

/** What a server of TLS is and can. The const members may be called from any thread. */
class TlsServer {
  public:
    /** `protocols`: those that it speaks, by the names of ALPN; where there are some, it speaks no other. */
    explicit TlsServer(const Appliance::Certificate& certificate, std::vector<std::string> protocols = {});

    /** Shakes hands; null where it does not come to that. */
    std::unique_ptr<ByteStream> accept(int socket) const;

  private:
    std::string protocols_;  // as they stand on the wire
    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context_;
};
