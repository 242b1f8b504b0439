// A web server whose every byte a test decides, on a random port of this machine.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ByteStream.h"

/** One request as it came in. */
struct ServerRequest {
    std::string head;    // request line and header lines, byte for byte, up to and with the empty line
    std::string target;  // path and query
    std::string path;    // the target up to its question mark
    std::string body;    // as much as the head announces
};

/** The way back to the client of one request; used on the handler's thread. */
class ServerConnection {
  public:
    explicit ServerConnection(ByteStream& stream) : stream_(stream) {}

    void send(const std::string& bytes) { stream_.send(bytes); }

    /** A whole answer with its length. */
    void answer(int status, const std::string& body, const std::string& headerLines = "");

    /** The head of an answer that announces `length` bytes of body. */
    void answerHead(int status, size_t length, const std::string& headerLines = "");

    /** Waits for the client's going away, or the server's end; false when the time is over. */
    bool clientLeaves(std::chrono::milliseconds limit);
    void stayUntilClientLeaves();

    /** The connection ends with the handler, without a goodbye of TLS; or with a reset. */
    void cut() { stream_.cut(); }
    void reset() { stream_.reset(); }

  private:
    ByteStream& stream_;
};

/** Where a server listens. Port 0 is one of the system's choice; another one may be shared with its keeper.
 */
struct ServerPlace {
    std::string address = "127.0.0.1";
    int port = 0;
};

/**
 * Each request runs the handler of its path on a thread of its own; a path without a handler answers 404. Any
 * thread, but for the protected operations, which are for whoever makes and ends the server.
 */
class ScriptedServer {
  public:
    using Handler = std::function<void(const ServerRequest&, ServerConnection&)>;

    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    void handle(const std::string& path, Handler handler);

    /** The path answers each request in the same way. */
    void answer(const std::string& path, int status, const std::string& body,
                const std::string& headerLines = "");

    /** Waits until no request is being handled, then forgets handlers and requests. */
    void reset();

    std::vector<ServerRequest> requests() const;
    int countOf(const std::string& path) const;

    /** Every byte of all requests, also of those that were never whole. */
    std::string received() const;
    int connections() const;

    /** The address of a path on this server. */
    std::string address(const std::string& path) const { return origin_ + path; }

  protected:
    /** Makes the stream of an accepted connection; null where it does not come to one. Any thread. */
    using Open = std::function<std::unique_ptr<ByteStream>(int socket)>;

    /** Has a port, but answers nobody yet. `origin` is what the clients know the server by. */
    explicit ScriptedServer(std::string origin, const ServerPlace& place = ServerPlace{});
    virtual ~ScriptedServer();

    void start(Open open);

    /** Must have been called before anything is destroyed that the streams use. */
    void stop();

    /** ADDRESS:PORT, as the platform leads connections there. */
    const std::string& place() const { return place_; }

  private:
    struct Connection {
        std::thread thread;
        int socket;
        bool isOver = false;
    };

    void listen(const ServerPlace& place);
    void accept();
    void serve(Connection& connection);
    void converse(ByteStream& stream);
    void noteBytes(const std::string& bytes);
    Handler note(const ServerRequest& request);
    void forgetFinished();

    const std::string origin_;
    std::string place_;
    Open open_;
    int listener_ = -1;

    mutable std::mutex mutex_;  // guards all below
    std::condition_variable changed_;
    std::map<std::string, Handler> handlers_;
    std::vector<ServerRequest> requests_;
    std::string received_;
    int accepted_ = 0;
    std::list<Connection> connections_;

    std::thread acceptor_;
};
