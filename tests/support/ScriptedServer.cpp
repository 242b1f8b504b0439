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

using Clock = std::chrono::steady_clock;

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

std::chrono::milliseconds timeUntil(Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return std::max(left, std::chrono::milliseconds(0));
}

struct SocketAddress {
    sockaddr_storage storage{};
    socklen_t length = 0;

    sockaddr* generic() { return reinterpret_cast<sockaddr*>(&storage); }

    // Stands in the same place in both families.
    int port() { return ntohs(reinterpret_cast<sockaddr_in*>(&storage)->sin_port); }
};

SocketAddress addressOf(const std::string& address, int port)
{
    SocketAddress made;
    auto* four = reinterpret_cast<sockaddr_in*>(&made.storage);
    auto* six = reinterpret_cast<sockaddr_in6*>(&made.storage);
    if (inet_pton(AF_INET, address.c_str(), &four->sin_addr) == 1) {
        four->sin_family = AF_INET;
        made.length = sizeof *four;
    } else {
        require(inet_pton(AF_INET6, address.c_str(), &six->sin6_addr) == 1, "that is no address");
        six->sin6_family = AF_INET6;
        made.length = sizeof *six;
    }
    four->sin_port = htons(static_cast<uint16_t>(port));
    return made;
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

bool ServerConnection::clientLeaves(std::chrono::milliseconds limit)
{
    const auto deadline = Clock::now() + limit;
    char byte;
    while (stream_.waitForBytes(timeUntil(deadline))) {
        if (!stream_.receive(byte))
            return true;
    }
    return false;
}

void ServerConnection::stayUntilClientLeaves()
{
    while (!clientLeaves(TestSupport::Patience)) {
    }
}

ScriptedServer::ScriptedServer(std::string origin, const ServerPlace& place) : origin_(std::move(origin))
{
    signal(SIGPIPE, SIG_IGN);
    listen(place);
}

ScriptedServer::~ScriptedServer()
{
    stop();
    close(listener_);
}

void ScriptedServer::listen(const ServerPlace& place)
{
    SocketAddress address = addressOf(place.address, place.port);
    listener_ = socket(address.generic()->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    require((place.port == 0 || setsockopt(listener_, SOL_SOCKET, SO_REUSEPORT, &on, sizeof on) == 0) &&
                bind(listener_, address.generic(), address.length) == 0 &&
                ::listen(listener_, SOMAXCONN) == 0 &&
                getsockname(listener_, address.generic(), &address.length) == 0,
            "the server has no port");
    const bool isIpv6 = address.generic()->sa_family == AF_INET6;
    place_ = (isIpv6 ? "[" + place.address + "]" : place.address) + ":" + std::to_string(address.port());
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
        ++accepted_;
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
    noteBytes(head);
    // A client may go away without having asked for anything.
    if (!isWhole(head))
        return;
    ServerRequest request = parse(std::move(head));
    request.body = readBody(stream, announcedLength(request.head));
    noteBytes(request.body);
    ServerConnection connection(stream);
    if (const Handler handler = note(request))
        handler(request, connection);
    else
        connection.answer(404, "");
}

void ScriptedServer::noteBytes(const std::string& bytes)
{
    std::lock_guard<std::mutex> lock(mutex_);
    received_ += bytes;
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

std::string ScriptedServer::received() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return received_;
}

int ScriptedServer::connections() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return accepted_;
}
