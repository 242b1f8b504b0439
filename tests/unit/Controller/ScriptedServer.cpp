#include "ScriptedServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "Patience.h"

namespace {

void require(bool isTrue, const char* what)
{
    if (!isTrue)
        throw std::runtime_error(what);
}

bool isWhole(const std::string& head)
{
    constexpr const char* end = "\r\n\r\n";
    return head.size() >= 4 && head.compare(head.size() - 4, 4, end) == 0;
}

std::string readHead(ByteStream& stream)
{
    std::string head;
    char byte;
    while (!isWhole(head) && stream.receive(byte))
        head += byte;
    return head;
}

size_t announcedLength(const std::string& head)
{
    constexpr const char* name = "\r\nContent-Length: ";
    const size_t place = head.find(name);
    return place == std::string::npos ? 0 : strtoul(head.c_str() + place + strlen(name), nullptr, 10);
}

std::string readBody(ByteStream& stream, size_t length)
{
    std::string body;
    char byte;
    while (body.size() < length && stream.receive(byte))
        body += byte;
    return body;
}

ServerRequest parse(std::string head)
{
    ServerRequest request;
    const size_t begin = head.find(' ') + 1;
    request.target = head.substr(begin, head.find(' ', begin) - begin);
    request.path = request.target.substr(0, request.target.find('?'));
    request.head = std::move(head);
    return request;
}

}  // namespace

void ServerConnection::answer(int status, const std::string& body, const std::string& headerLines)
{
    answerHead(status, body.size(), headerLines);
    send(body);
}

void ServerConnection::answerHead(int status, size_t length, const std::string& headerLines)
{
    send("HTTP/1.1 " + std::to_string(status) + " Status\r\nConnection: close\r\nContent-Length: " +
         std::to_string(length) + "\r\n" + headerLines + "\r\n");
}

ScriptedServer::ScriptedServer(std::string origin) : origin_(std::move(origin))
{
    signal(SIGPIPE, SIG_IGN);
    listen();
}

ScriptedServer::~ScriptedServer()
{
    stop();
    close(listener_);
}

void ScriptedServer::listen()
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(bind(listener_, generic, length) == 0 && ::listen(listener_, SOMAXCONN) == 0 &&
                getsockname(listener_, generic, &length) == 0,
            "the server has no port");
    place_ = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}

void ScriptedServer::start(Open open)
{
    open_ = std::move(open);
    acceptor_ = std::thread([this] { accept(); });
}

void ScriptedServer::stop()
{
    shutdown(listener_, SHUT_RDWR);
    if (acceptor_.joinable())
        acceptor_.join();
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (Connection& connection : connections_) {
            if (!connection.isOver)
                shutdown(connection.socket, SHUT_RDWR);
        }
    }
    for (Connection& connection : connections_)
        connection.thread.join();
    connections_.clear();
}

void ScriptedServer::accept()
{
    for (int peer; (peer = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        forgetFinished();
        std::lock_guard<std::mutex> lock(mutex_);
        Connection& connection = connections_.emplace_back();
        connection.socket = peer;
        connection.thread = std::thread([this, &connection] { serve(connection); });
    }
}

void ScriptedServer::serve(Connection& connection)
{
    int socket;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        socket = connection.socket;
    }
    if (const std::unique_ptr<ByteStream> stream = open_(socket))
        converse(*stream);

    std::lock_guard<std::mutex> lock(mutex_);
    close(socket);
    connection.isOver = true;
    changed_.notify_all();
}

void ScriptedServer::converse(ByteStream& stream)
{
    std::string head = readHead(stream);
    // A client may go away without having asked for anything.
    if (!isWhole(head))
        return;
    ServerRequest request = parse(std::move(head));
    request.body = readBody(stream, announcedLength(request.head));
    ServerConnection connection(stream);
    if (const Handler handler = note(request))
        handler(request, connection);
    else
        connection.answer(404, "");
}

ScriptedServer::Handler ScriptedServer::note(const ServerRequest& request)
{
    std::lock_guard<std::mutex> lock(mutex_);
    requests_.push_back(request);
    const auto found = handlers_.find(request.path);
    return found == handlers_.end() ? Handler() : found->second;
}

void ScriptedServer::forgetFinished()
{
    std::list<Connection> finished;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (auto it = connections_.begin(); it != connections_.end();) {
            const auto next = std::next(it);
            if (it->isOver)
                finished.splice(finished.end(), connections_, it);
            it = next;
        }
    }
    for (Connection& connection : finished)
        connection.thread.join();
}

void ScriptedServer::handle(const std::string& path, Handler handler)
{
    std::lock_guard<std::mutex> lock(mutex_);
    handlers_[path] = std::move(handler);
}

void ScriptedServer::answer(const std::string& path, int status, const std::string& body,
                            const std::string& headerLines)
{
    handle(path, [=](const ServerRequest&, ServerConnection& connection) {
        connection.answer(status, body, headerLines);
    });
}

void ScriptedServer::reset()
{
    std::unique_lock<std::mutex> lock(mutex_);
    auto isIdle = [this] {
        return std::all_of(connections_.begin(), connections_.end(), [](auto& one) { return one.isOver; });
    };
    require(changed_.wait_for(lock, TestSupport::Patience, isIdle), "a handler of the server does not end");
    handlers_.clear();
    requests_.clear();
}

std::vector<ServerRequest> ScriptedServer::requests() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
}

int ScriptedServer::countOf(const std::string& path) const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return static_cast<int>(std::count_if(requests_.begin(), requests_.end(),
                                          [&](const auto& request) { return request.path == path; }));
}
