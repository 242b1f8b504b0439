#include "BusPoll.h"

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

BusPoll::BusPoll(int fd, std::function<Wish()> wish, std::function<void()> work)
    : wish_(std::move(wish)), work_(std::move(work))
{
    handler_ = ecore_main_fd_handler_add(fd, ECORE_FD_READ, onReady, this, nullptr, nullptr);
    update();
}

void BusPoll::update()
{
    if (handler_ == nullptr) {
        return;
    }
    const Wish wish = wish_();
    ecore_main_fd_handler_active_set(handler_, flagsOf(wish.events));
    stopTimer();
    if (wish.limit) {
        timer_ = ecore_timer_add(std::chrono::duration<double>(*wish.limit).count(), onTime, this);
    }
}

void BusPoll::stop()
{
    stopTimer();
    if (handler_ != nullptr) {
        ecore_main_fd_handler_del(std::exchange(handler_, nullptr));
    }
}

Eina_Bool BusPoll::onReady(void* self, Ecore_Fd_Handler*)
{
    static_cast<BusPoll*>(self)->work_();
    return ECORE_CALLBACK_RENEW;
}

Eina_Bool BusPoll::onTime(void* self)
{
    static_cast<BusPoll*>(self)->timer_ = nullptr;
    static_cast<BusPoll*>(self)->work_();
    return ECORE_CALLBACK_CANCEL;
}

void BusPoll::stopTimer()
{
    if (timer_ != nullptr) {
        ecore_timer_del(std::exchange(timer_, nullptr));
    }
}

}  // namespace Appliance
