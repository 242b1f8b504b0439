// A line is one write to a file opened for appending: lines never mix, and no lock is needed.
#include "RequestLog.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <system_error>

namespace Appliance::StandIn {
namespace {

std::string utcNow()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm utc{};
    gmtime_r(&now.tv_sec, &utc);
    std::array<char, 32> seconds{};
    std::strftime(seconds.data(), seconds.size(), "%Y-%m-%dT%H:%M:%S", &utc);
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%s.%03ldZ", seconds.data(), now.tv_nsec / 1000000);
    return text.data();
}

// A client may send any byte; only visible ASCII goes into the file.
std::string visible(const std::string& text)
{
    std::string shown;
    for (const char byte : text)
        shown += byte > ' ' && byte < 0x7F ? byte : '?';
    return shown.empty() ? "-" : shown;
}

}  // namespace

RequestLog::RequestLog(const std::filesystem::path& file)
{
    if (file.empty())
        return;
    descriptor = open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "cannot open the log " + file.string());
}

RequestLog::~RequestLog()
{
    if (descriptor >= 0)
        close(descriptor);
}

void RequestLog::write(const std::string& method, const std::string& target, int status, bool isCut)
{
    if (descriptor < 0)
        return;
    const std::string line = utcNow() + " " + visible(method) + " " + visible(target) + " " +
                             std::to_string(status) + (isCut ? " cut\n" : "\n");
    // A full disk must not stop the shop; there is nowhere better to tell it.
    if (::write(descriptor, line.data(), line.size()) < 0)
        return;
}

}  // namespace Appliance::StandIn
