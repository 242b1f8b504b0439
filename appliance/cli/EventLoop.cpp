#include "EventLoop.h"

#include <csignal>
#include <exception>
#include <utility>

#include "Terminal.h"

namespace Tool {

namespace {

std::exception_ptr& pendingError()
{
    static std::exception_ptr error;
    return error;
}

// Ecore is C: an exception must not pass through it.
void guarded(const std::function<void()>& callback)
{
    try {
        callback();
    } catch (...) {
        pendingError() = std::current_exception();
    }
}

void rethrowPending()
{
    if (pendingError()) {
        std::rethrow_exception(std::exchange(pendingError(), nullptr));
    }
}

double seconds(std::chrono::milliseconds duration)
{
    return std::chrono::duration<double>(duration).count();
}

Eina_Bool askWhetherToStop(void* stop)
{
    if ((*static_cast<std::function<bool()>*>(stop))()) {
        ecore_main_loop_quit();
    }
    return ECORE_CALLBACK_RENEW;
}

}  // namespace

EventLoop::EventLoop()
{
    ecore_app_no_system_modules();
    ecore_init();
    useUtf8();  // Ecore has taken the environment's locale
    // Ecore would reap every child of the process; ours are waited for by their own descriptors.
    std::signal(SIGCHLD, SIG_DFL);
    exitSignals_ = ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, onSignal, this);
    hangUps_ = ecore_event_handler_add(ECORE_EVENT_SIGNAL_HUP, onSignal, this);
}

EventLoop::~EventLoop()
{
    ecore_event_handler_del(hangUps_);
    ecore_event_handler_del(exitSignals_);
    ecore_shutdown();
}

Eina_Bool EventLoop::onSignal(void* self, int, void*)
{
    static_cast<EventLoop*>(self)->interrupted_ = true;
    return ECORE_CALLBACK_PASS_ON;
}

EventLoop::Outcome EventLoop::runUntil(const std::function<bool()>& done,
                                       std::optional<std::chrono::milliseconds> limit)
{
    bool late = false;
    std::function<bool()> stop = [&] {
        bool over = late || interrupted_ || pendingError();
        if (!over) {
            guarded([&] { over = done(); });
        }
        return over || pendingError();
    };
    std::optional<Ticker> timer;
    if (limit) {
        timer.emplace(*limit, [&late] { late = true; });
    }
    Ecore_Idle_Enterer* enterer = ecore_idle_enterer_add(askWhetherToStop, &stop);
    if (!stop()) {
        ecore_main_loop_begin();
    }
    ecore_idle_enterer_del(enterer);
    rethrowPending();
    if (interrupted_) {
        return Outcome::Interrupted;
    }
    return late && !done() ? Outcome::TimedOut : Outcome::Done;
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

}  // namespace Tool
