#include "BusWatch.h"

#include <utility>

namespace Appliance {

BusWatch::BusWatch(sdbus::IConnection& connection, std::function<void()> onLost)
    : connection_(connection),
      onLost_(std::move(onLost)),
      poll_(
          connection.getEventLoopPollData().fd, [this] { return wish(); }, [this] { work(); })
{
}

BusPoll::Wish BusWatch::wish() const
{
    const auto poll = connection_.getEventLoopPollData();
    return {poll.events, poll.getRelativeTimeout()};
}

void BusWatch::work()
{
    try {
        while (connection_.processPendingRequest()) {
        }
        poll_.update();
    } catch (const sdbus::Error&) {
        poll_.stop();
        onLost_();
    }
}

}  // namespace Appliance
