#include "EventLoop.h"

#include <csignal>
#include <exception>

#include "Terminal.h"

namespace Tool {

namespace {

void rethrowPending()
{
    if (const std::exception_ptr error = Appliance::takeCallbackError()) {
        std::rethrow_exception(error);
    }
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
        bool over = late || interrupted_ || Appliance::hasCallbackError();
        if (!over) {
            Appliance::guarded([&] { over = done(); });
        }
        return over || Appliance::hasCallbackError();
    };
    std::optional<Appliance::Ticker> timer;
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

}  // namespace Tool
