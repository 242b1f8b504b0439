// A server of HTTP/2, for connections that have agreed on it.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "HostileServer.h"

namespace ServiceTest {

/** A request as it came: its pseudo headers too (":method", ":path"). */
using Http2Request = std::map<std::string, std::string>;

/** What a request gets. */
struct Http2Answer {
    std::string body;
    int status = 200;
    bool isReset = false;  // the stream is, in place of an answer
};

/** Answers by path, and notes what it was asked; a path without an answer gets 404. Any thread. */
class Http2Script {
  public:
    void answer(const std::string& path, const Http2Answer& answer);
    std::vector<Http2Request> requests() const;

    Http2Answer take(const Http2Request& request);

  private:
    mutable std::mutex mutex_;
    std::map<std::string, Http2Answer> answers_;
    std::vector<Http2Request> requests_;
};

/** Over TLS and by ALPN, and nothing but HTTP/2. The connection is served to its end. */
Opening http2(const Appliance::Certificate& certificate, const std::shared_ptr<Http2Script>& script);

}  // namespace ServiceTest
