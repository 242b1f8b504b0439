// A shop in the test's own process: a server that does what the test tells it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "Patience.h"
#include "ThrowawayCertificates.h"

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

namespace ServiceTest {

/** A port of this machine that is kept for this test. Nobody listens on it: connections are refused. */
class ReservedPort {
  public:
    ReservedPort();
    ~ReservedPort();
    ReservedPort(const ReservedPort&) = delete;
    ReservedPort& operator=(const ReservedPort&) = delete;

    int number() const { return number_; }

  private:
    int socket_;
    int number_ = 0;
};

/** A request as it came: path and query as they were sent, the header lines, and the body. */
struct Asked {
    std::string method;
    std::string target;
    std::multimap<std::string, std::string> headers;
    std::string body;

    std::string header(const std::string& name) const;
};

struct Answer {
    int status = 200;
    std::string body{};
    std::string type = "application/json";
    std::size_t withheld = 0;  // bytes that are announced behind the body and never come
    std::chrono::milliseconds delay{0};
    std::chrono::milliseconds halfway{0};  // a pause in the middle of the body
};

/** Serves from construction to destruction; what is held then is let go. Any thread. */
class Merchant {
  public:
    using Script = std::function<Answer(const Asked&)>;

    static constexpr const char* SearchPath = "/merchantbridge-production/api/product/search";

    /** HTTPS, as the merchant bridge has it. */
    Merchant(int port, const Appliance::Certificate& certificate);

    /** Plain HTTP, as the retailer has it. */
    explicit Merchant(int port);
    ~Merchant();
    Merchant(const Merchant&) = delete;
    Merchant& operator=(const Merchant&) = delete;

    /** What requests for a path (without a query) are answered with from now on; without an answer: 404. */
    void answer(const std::string& path, Answer answer);
    void script(const std::string& path, Script script);

    /** Requests for the path are noted, and wait until they are let go. */
    void hold(const std::string& path);
    void release(const std::string& path);

    /** Waits until so many requests for the path have come, since the start; false when the time is over. */
    bool waitForRequests(const std::string& path, std::size_t count = 1,
                         std::chrono::milliseconds limit = TestSupport::Patience);

    std::vector<Asked> requests(const std::string& path) const;

  private:
    Merchant(int port, std::unique_ptr<httplib::Server> server);

    void fill(httplib::Response& response, const Answer& answer);
    void serve(const httplib::Request& request, httplib::Response& response);
    Script note(const std::string& path, const Asked& asked);
    void pause(std::chrono::milliseconds delay);

    std::unique_ptr<httplib::Server> server_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, Script> scripts_;
    std::map<std::string, std::vector<Asked>> asked_;
    std::set<std::string> held_;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace ServiceTest
