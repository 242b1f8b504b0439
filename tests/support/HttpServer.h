// A web server on this machine that a test fills with answers.
#pragma once

#include <httplib.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <mutex>
#include <string>
#include <thread>

/**
 * The library makes what its request parser needs with the first request, in a way that ThreadSanitizer
 * cannot see into. So the first one of a process comes alone, and to a server of its own.
 */
inline void makeFirstRequest()
{
    httplib::Server server;
    const int port = server.bind_to_any_port("127.0.0.1");
    std::thread thread([&] { server.listen_after_bind(); });
    while (!server.is_running())
        std::this_thread::yield();
    httplib::Client("127.0.0.1", port).Get("/", {{"Connection", "close"}});
    server.stop();
    thread.join();
}

/** Serves on a random port from start() until it is destroyed. Handlers run on the server's threads. */
template <typename Server>
class LocalServer : public Server {
  public:
    using Server::Server;

    ~LocalServer() override
    {
        Server::stop();
        if (thread_.joinable())
            thread_.join();
    }

    void start()
    {
        static std::once_flag isFirst;
        std::call_once(isFirst, makeFirstRequest);
        port_ = Server::bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { Server::listen_after_bind(); });
        while (!Server::is_running())
            std::this_thread::yield();
    }

    int port() const { return port_; }

  private:
    int port_ = 0;
    std::thread thread_;
};

class HttpServer : public LocalServer<httplib::Server> {
  public:
    /** The path answers with the body. */
    void answer(const std::string& path, int status, const std::string& body)
    {
        Get(path, [status, body](const httplib::Request&, httplib::Response& response) {
            response.status = status;
            response.set_content(body, "application/octet-stream");
        });
    }

    /** The path promises more bytes than it gives. */
    void breakOff(const std::string& path, const std::string& body)
    {
        Get(path, [body](const httplib::Request&, httplib::Response& response) {
            response.set_content_provider(body.size() + 100, "application/octet-stream",
                                          [body](size_t, size_t, httplib::DataSink& sink) {
                                              sink.write(body.data(), body.size());
                                              return false;
                                          });
        });
    }

    /** The path leads on to another address. */
    void redirect(const std::string& path, const std::string& target)
    {
        Get(path, [target](const httplib::Request&, httplib::Response& response) {
            response.set_redirect(target);
        });
    }

    /** By name, so that no dot stands in the address. */
    std::string url(const std::string& path) const
    {
        return "http://localhost:" + std::to_string(port()) + path;
    }
};

/** A port on this machine that is taken, but where nobody listens: connections are refused while it lives. */
class DeafPort {
  public:
    DeafPort() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address_;
        ::bind(socket_, reinterpret_cast<sockaddr*>(&address_), size);
        ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address_), &size);
    }

    ~DeafPort() { ::close(socket_); }

    DeafPort(const DeafPort&) = delete;
    DeafPort& operator=(const DeafPort&) = delete;

    std::string url(const std::string& path) const
    {
        return "http://127.0.0.1:" + std::to_string(ntohs(address_.sin_port)) + path;
    }

  private:
    int socket_;
    sockaddr_in address_{};
};
