// A merchant bridge whose every byte a test decides: HTTPS on a random port of this machine.
#pragma once

#include <openssl/ssl.h>

#include <condition_variable>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ThrowawayCertificates.h"

/** One request as it came in. */
struct MerchantRequest {
    std::string head;    // request line and header lines, byte for byte, up to and with the empty line
    std::string target;  // path and query
    std::string path;    // the target up to its question mark
};

/** The way back to the client of one request; used on the handler's thread. */
class MerchantConnection {
  public:
    explicit MerchantConnection(SSL* tls) : tls_(tls) {}

    void send(const std::string& bytes);

    /** A whole answer with its length. */
    void answer(int status, const std::string& body, const std::string& headerLines = "");

    /** The head of an answer that announces `length` bytes of body. */
    void answerHead(int status, size_t length, const std::string& headerLines = "");

  private:
    SSL* tls_;
};

/**
 * The one server of a test process, started on first use; it is the host that the service searches at, and
 * all of this process's HTTPS trusts it. Each request runs the handler of its path on a thread of its own;
 * a path without a handler answers 404. Any thread.
 */
class MerchantServer {
  public:
    using Handler = std::function<void(const MerchantRequest&, MerchantConnection&)>;

    static constexpr const char* SEARCH_PATH = "/merchantbridge-production/api/product/search";

    static MerchantServer& instance();

    MerchantServer(const MerchantServer&) = delete;
    MerchantServer& operator=(const MerchantServer&) = delete;

    void handle(const std::string& path, Handler handler);

    /** The path answers each request in the same way. */
    void answer(const std::string& path, int status, const std::string& body,
                const std::string& headerLines = "");
    void answerSearch(int status, const std::string& body) { answer(SEARCH_PATH, status, body); }

    /** Waits until no request is being handled, then forgets handlers and requests. */
    void reset();

    std::vector<MerchantRequest> requests() const;
    int countOf(const std::string& path) const;

    /** The address of a path on this server. */
    static std::string url(const std::string& path);

  private:
    struct Connection {
        std::thread thread;
        int socket;
        bool isOver = false;
    };

    MerchantServer();
    ~MerchantServer();
    void listen();
    void makeContext();
    void accept();
    void serve(Connection& connection);
    void converse(SSL* tls);
    Handler note(const MerchantRequest& request);
    void forgetFinished();

    Appliance::ThrowawayCertificates certificates_;
    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context_{nullptr, SSL_CTX_free};
    int listener_ = -1;

    mutable std::mutex mutex_;  // guards all below
    std::condition_variable changed_;
    std::map<std::string, Handler> handlers_;
    std::vector<MerchantRequest> requests_;
    std::list<Connection> connections_;

    std::thread acceptor_;
};
