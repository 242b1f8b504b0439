#include "BusWatch.h"

#include <poll.h>

#include <utility>

namespace Appliance {

namespace {

Ecore_Fd_Handler_Flags flagsOf(short events)
{
    const int write = (events & POLLOUT) != 0 ? ECORE_FD_WRITE : 0;
    return static_cast<Ecore_Fd_Handler_Flags>(ECORE_FD_READ | write);
}

}  // namespace

BusWatch::BusWatch(sdbus::IConnection& connection, std::function<void()> onLost)
    : connection_(connection), onLost_(std::move(onLost))
{
    const auto poll = connection_.getEventLoopPollData();
    handler_ = ecore_main_fd_handler_add(poll.fd, flagsOf(poll.events), onReady, this, nullptr, nullptr);
    update();
}

void BusWatch::update()
{
    if (handler_ == nullptr) {
        return;
    }
    const auto poll = connection_.getEventLoopPollData();
    ecore_main_fd_handler_active_set(handler_, flagsOf(poll.events));
    stopTimer();
    if (const auto left = poll.getRelativeTimeout()) {
        timer_ = ecore_timer_add(std::chrono::duration<double>(*left).count(), onTime, this);
    }
}

Eina_Bool BusWatch::onReady(void* self, Ecore_Fd_Handler*)
{
    static_cast<BusWatch*>(self)->work();
    return ECORE_CALLBACK_RENEW;
}

Eina_Bool BusWatch::onTime(void* self)
{
    static_cast<BusWatch*>(self)->timer_ = nullptr;
    static_cast<BusWatch*>(self)->work();
    return ECORE_CALLBACK_CANCEL;
}

void BusWatch::work()
{
    try {
        while (connection_.processPendingRequest()) {
        }
        update();
    } catch (const sdbus::Error&) {
        stop();
        onLost_();
    }
}

void BusWatch::stop()
{
    stopTimer();
    if (handler_ != nullptr) {
        ecore_main_fd_handler_del(std::exchange(handler_, nullptr));
    }
}

void BusWatch::stopTimer()
{
    if (timer_ != nullptr) {
        ecore_timer_del(std::exchange(timer_, nullptr));
    }
}

}  // namespace Appliance
