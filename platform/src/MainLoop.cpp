#include "MainLoop.h"

#include <Ecore.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <utility>

namespace HostPlatform {

namespace {

void quitLoop(void*)
{
    ecore_main_loop_quit();
}

Eina_Bool onSignal(void* self, int, void*)
{
    static_cast<MainLoop*>(self)->requestEnd(MainLoop::End::Asked);
    return ECORE_CALLBACK_PASS_ON;
}

// Keeps what the program does on signals as it is. Ecore's own handlers would reap its children and
// swallow the signals that end it.
class SignalsKept {
  public:
    SignalsKept()
    {
        for (int number = 1; number < Count; ++number)
            sigaction(number, nullptr, &actions_[number]);
    }
    ~SignalsKept()
    {
        for (int number = 1; number < Count; ++number)
            sigaction(number, &actions_[number], nullptr);
    }
    SignalsKept(const SignalsKept&) = delete;
    SignalsKept& operator=(const SignalsKept&) = delete;

  private:
    static constexpr int Count = 32;
    struct sigaction actions_[Count];
};

bool isFirstThread()
{
    return syscall(SYS_gettid) == getpid();
}

}  // namespace

MainLoop& MainLoop::instance()
{
    static MainLoop* const loop = new MainLoop;
    return *loop;
}

void MainLoop::post(Item item)
{
    const std::lock_guard lock(mutex_);
    items_.push_back(std::move(item));
    if (open_ && !awake_)
        wake();
}

std::size_t MainLoop::waiting() const
{
    const std::lock_guard lock(mutex_);
    return items_.size();
}

void MainLoop::openForTool()
{
    const std::lock_guard lock(mutex_);
    if (open_ || app_ || !isFirstThread())
        return;
    const SignalsKept kept;
    ecore_app_no_system_modules();
    if (ecore_init() > 0)
        open();
}

void MainLoop::prepare()
{
    const std::lock_guard lock(mutex_);
    close();
    app_ = true;
    end_ = End::None;
}

MainLoop::End MainLoop::run()
{
    Ecore_Event_Handler* handler = ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, onSignal, this);
    bool ended = true;
    {
        const std::lock_guard lock(mutex_);
        open();
        ended = end_ != End::None;
    }
    if (!ended)
        ecore_main_loop_begin();
    ecore_event_handler_del(handler);
    const std::lock_guard lock(mutex_);
    close();
    return end_ == End::None ? End::Asked : end_;
}

void MainLoop::finish()
{
    std::deque<Item> dropped;
    const std::lock_guard lock(mutex_);
    close();
    app_ = false;
    end_ = End::None;
    dropped.swap(items_);
}

void MainLoop::requestEnd(End reason)
{
    const std::lock_guard lock(mutex_);
    if (!app_ || end_ != End::None)
        return;
    end_ = reason;
    if (open_)
        ecore_main_loop_thread_safe_call_async(quitLoop, nullptr);
}

void MainLoop::open()
{
    open_ = true;
    if (!items_.empty())
        wake();
}

void MainLoop::close()
{
    open_ = false;
    awake_ = false;
}

// Ecore runs a thread-safe call of its own thread at once, under our lock; a job waits for the loop.
void MainLoop::wake()
{
    awake_ = true;
    if (eina_main_loop_is())
        ecore_job_add(onTurn, this);
    else
        ecore_main_loop_thread_safe_call_async(onWake, this);
}

void MainLoop::onWake(void* self)
{
    ecore_job_add(onTurn, self);
}

// Ecore queues a signal behind the jobs that are there already: the second job comes after it, so that no
// item runs after a signal that ends the app.
void MainLoop::onTurn(void* self)
{
    ecore_job_add(onItem, self);
}

void MainLoop::onItem(void* self)
{
    static_cast<MainLoop*>(self)->runOne();
}

// One item a turn: however long the items take, signals and timers have their turn after each.
void MainLoop::runOne()
{
    Item item;
    if (takeItem(item))
        item();
}

// The next turn is ordered before the item runs, so that an item may run a loop inside itself.
bool MainLoop::takeItem(Item& item)
{
    const std::lock_guard lock(mutex_);
    awake_ = false;
    if (items_.empty() || !mayRun())
        return false;
    item = std::move(items_.front());
    items_.pop_front();
    if (!items_.empty())
        wake();
    return true;
}

bool MainLoop::mayRun() const
{
    return open_ && end_ == End::None;
}

}  // namespace HostPlatform
