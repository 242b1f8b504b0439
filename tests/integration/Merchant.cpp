#include "Merchant.h"

#include <arpa/inet.h>
#include <httplib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace ServiceTest {

namespace {

constexpr const char* Loopback = "127.0.0.1";
// More than one test ever holds or delays at once, so that no request waits for another's thread.
constexpr std::size_t ServerThreads = 32;

void require(bool condition, const char* what)
{
    if (!condition)
        throw std::runtime_error(what);
}

}  // namespace

// The server shares the port with this socket, which the kernel gives to nobody else.
ReservedPort::ReservedPort() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const int on = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    inet_pton(AF_INET, Loopback, &address.sin_addr);
    auto* plain = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    require(setsockopt(socket_, SOL_SOCKET, SO_REUSEPORT, &on, sizeof on) == 0, "no shared port");
    require(bind(socket_, plain, size) == 0, "no free port");
    require(getsockname(socket_, plain, &size) == 0, "no port number");
    number_ = ntohs(address.sin_port);
}

ReservedPort::~ReservedPort()
{
    close(socket_);
}

std::string Asked::header(const std::string& name) const
{
    const auto found = headers.find(name);
    return found == headers.end() ? "" : found->second;
}

Merchant::Merchant(int port, const Appliance::Certificate& certificate)
    : Merchant(port, std::make_unique<httplib::SSLServer>(certificate.x509.get(), certificate.key.get()))
{
}

Merchant::Merchant(int port) : Merchant(port, std::make_unique<httplib::Server>()) {}

Merchant::Merchant(int port, std::unique_ptr<httplib::Server> server) : server_(std::move(server))
{
    server_->new_task_queue = [] { return new httplib::ThreadPool(ServerThreads); };
    server_->set_keep_alive_max_count(1);
    // An answer goes out in two writes.
    server_->set_tcp_nodelay(true);
    const auto handler = [this](const httplib::Request& request, httplib::Response& response) {
        serve(request, response);
    };
    server_->Get(".*", handler);
    server_->Post(".*", handler);
    require(server_->bind_to_port(Loopback, port), "the merchant's port is taken");
    thread_ = std::thread([this] { server_->listen_after_bind(); });
    while (!server_->is_running())
        std::this_thread::yield();
}

Merchant::~Merchant()
{
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        changed_.notify_all();
    }
    server_->stop();
    thread_.join();
}

void Merchant::answer(const std::string& path, Answer answer)
{
    script(path, [answer = std::move(answer)](const Asked&) { return answer; });
}

void Merchant::script(const std::string& path, Script script)
{
    const std::lock_guard lock(mutex_);
    scripts_[path] = std::move(script);
}

void Merchant::hold(const std::string& path)
{
    const std::lock_guard lock(mutex_);
    held_.insert(path);
}

void Merchant::release(const std::string& path)
{
    const std::lock_guard lock(mutex_);
    held_.erase(path);
    changed_.notify_all();
}

bool Merchant::waitForRequests(const std::string& path, std::size_t count, std::chrono::milliseconds limit)
{
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return asked_[path].size() >= count; });
}

std::vector<Asked> Merchant::requests(const std::string& path) const
{
    const std::lock_guard lock(mutex_);
    const auto found = asked_.find(path);
    return found == asked_.end() ? std::vector<Asked>{} : found->second;
}

void Merchant::serve(const httplib::Request& request, httplib::Response& response)
{
    const Asked asked{
        request.method, request.target, {request.headers.begin(), request.headers.end()}, request.body};
    const Script script = note(request.path, asked);
    const Answer answer = script ? script(asked) : Answer{404, "no such thing here", "text/plain"};
    pause(answer.delay);
    fill(response, answer);
}

void Merchant::fill(httplib::Response& response, const Answer& answer)
{
    response.status = answer.status;
    if (answer.withheld == 0 && answer.halfway.count() == 0) {
        response.set_content(answer.body, answer.type);
        return;
    }
    const std::size_t announced = answer.body.size() + answer.withheld;
    response.set_content_provider(
        announced, answer.type,
        [this, body = answer.body, halfway = answer.halfway](size_t offset, size_t, auto& sink) {
            const std::size_t half = halfway.count() == 0 ? body.size() : body.size() / 2;
            if (offset == 0)
                return sink.write(body.data(), half);
            pause(halfway);
            return offset == half && half < body.size() && sink.write(body.data() + half, body.size() - half);
        });
}

Merchant::Script Merchant::note(const std::string& path, const Asked& asked)
{
    std::unique_lock lock(mutex_);
    asked_[path].push_back(asked);
    changed_.notify_all();
    changed_.wait(lock, [&] { return ending_ || held_.count(path) == 0; });
    const auto found = scripts_.find(path);
    return found == scripts_.end() ? Script{} : found->second;
}

void Merchant::pause(std::chrono::milliseconds delay)
{
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, delay, [this] { return ending_; });
}

}  // namespace ServiceTest
