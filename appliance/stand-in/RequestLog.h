// One line for each request: time, method, target as it was sent, status.
#pragma once

#include <filesystem>
#include <string>

namespace Appliance::StandIn {

// write may be called from any thread. Headers, and with them the tokens, never come in here.
class RequestLog {
  public:
    // An empty name keeps no log. std::system_error when the file cannot be opened.
    explicit RequestLog(const std::filesystem::path& file);
    ~RequestLog();
    RequestLog(const RequestLog&) = delete;
    RequestLog& operator=(const RequestLog&) = delete;

    // `status` is 0 for a request without an answer; `isCut` for an answer whose client got only part of it.
    void write(const std::string& method, const std::string& target, int status, bool isCut);

  private:
    int descriptor = -1;
};

}  // namespace Appliance::StandIn
