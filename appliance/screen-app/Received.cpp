#include "Received.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <iterator>
#include <utility>

namespace Appliance {

namespace {

bool continuesCharacter(char byte)
{
    constexpr unsigned mask = 0xC0;
    constexpr unsigned continuation = 0x80;
    return (static_cast<unsigned char>(byte) & mask) == continuation;
}

void shorten(std::map<std::string, std::string>& extras)
{
    if (extras.size() > ExtrasKept) {
        extras.erase(std::next(extras.begin(), ExtrasKept), extras.end());
    }
    std::map<std::string, std::string> kept;
    for (const auto& [key, text] : extras) {
        kept[shortened(key)] = shortened(text);
    }
    extras = std::move(kept);
}

}  // namespace

void note(ReceivedMessages& messages, Received received)
{
    received.number = lastNumber(messages) + 1;
    received.operation = shortened(received.operation);
    received.from = shortened(received.from);
    received.outcome = shortened(received.outcome);
    shorten(received.extras);
    messages.push_back(std::move(received));
    if (messages.size() > MessagesKept) {
        messages.pop_front();
    }
}

std::string shortened(const std::string& text)
{
    if (text.size() <= BytesKept) {
        return text;
    }
    std::size_t end = BytesKept;
    while (end > 0 && continuesCharacter(text[end])) {
        --end;
    }
    return text.substr(0, end) + "…";
}

bool areCounted(const ReceivedMessages& messages)
{
    if (messages.size() > MessagesKept) {
        return false;
    }
    int before = messages.empty() ? 0 : messages.front().number - 1;
    return before >= 0 && std::all_of(messages.begin(), messages.end(), [&before](const Received& message) {
               return message.number == ++before;
           });
}

int lastNumber(const ReceivedMessages& messages)
{
    return messages.empty() ? 0 : messages.back().number;
}

std::string timeNow()
{
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::time_t seconds = system_clock::to_time_t(now);
    const auto milliseconds = duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char date[32];
    char time[48];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(time, sizeof time, "%s.%03dZ", date, static_cast<int>(milliseconds));
    return time;
}

}  // namespace Appliance
