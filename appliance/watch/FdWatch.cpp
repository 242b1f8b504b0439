#include "FdWatch.h"

#include <utility>

namespace Appliance {

namespace {

std::exception_ptr& pendingError()
{
    static std::exception_ptr error;
    return error;
}

double seconds(std::chrono::milliseconds duration)
{
    return std::chrono::duration<double>(duration).count();
}

}  // namespace

void guarded(const std::function<void()>& callback)
{
    try {
        callback();
    } catch (...) {
        pendingError() = std::current_exception();
    }
}

bool hasCallbackError()
{
    return pendingError() != nullptr;
}

std::exception_ptr takeCallbackError()
{
    return std::exchange(pendingError(), nullptr);
}

FdWatch::FdWatch(int fd, std::function<void()> onReadable) : onReadable_(std::move(onReadable))
{
    handler_ = ecore_main_fd_handler_add(fd, ECORE_FD_READ, onEvent, this, nullptr, nullptr);
}

FdWatch::~FdWatch()
{
    if (handler_ != nullptr) {
        ecore_main_fd_handler_del(handler_);
    }
}

Eina_Bool FdWatch::onEvent(void* self, Ecore_Fd_Handler*)
{
    guarded(static_cast<FdWatch*>(self)->onReadable_);
    return ECORE_CALLBACK_RENEW;
}

Ticker::Ticker(std::chrono::milliseconds period, std::function<void()> onTick) : onTick_(std::move(onTick))
{
    timer_ = ecore_timer_add(seconds(period), onTimer, this);
}

Ticker::~Ticker()
{
    ecore_timer_del(timer_);
}

Eina_Bool Ticker::onTimer(void* self)
{
    guarded(static_cast<Ticker*>(self)->onTick_);
    return ECORE_CALLBACK_RENEW;
}

}  // namespace Appliance
