#include "AppSession.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>

#include <cerrno>
#include <exception>
#include <system_error>
#include <utility>

#include "SignalsBlocked.h"

namespace HostPlatform {

namespace {

int newEventDescriptor()
{
    const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
    return descriptor;
}

}  // namespace

std::shared_ptr<AppSession> AppSession::start(std::function<void()> lost)
{
    const std::shared_ptr<AppSession> session(new AppSession(std::move(lost)));
    session->startThread();
    return session;
}

AppSession::AppSession(std::function<void()> lost)
    : lost_(std::move(lost)),
      wakeDescriptor_(newEventDescriptor(), sdbus::adopt_fd),
      connection_(sdbus::createSessionBusConnection())
{
    MainLoop& mainLoop = MainLoop::instance();
    ports_.reset(new Ports{{*connection_, mainLoop}, {*connection_, mainLoop}});
}

void AppSession::startThread()
{
    const SignalsBlocked blocked;
    const std::lock_guard lock(mutex_);
    thread_ = std::thread([self = shared_from_this()] { self->run(); });
    pthread_setname_np(thread_.native_handle(), "app-bus");
}

void AppSession::post(Task task)
{
    const std::lock_guard lock(mutex_);
    if (ended_ || stopping_)
        return;
    tasks_.push_back(std::move(task));
    wake();
}

bool AppSession::hasEnded() const
{
    const std::lock_guard lock(mutex_);
    return ended_;
}

void AppSession::stop()
{
    {
        const std::lock_guard lock(mutex_);
        if (ended_)
            return;
        stopping_ = true;
        wake();
    }
    thread_.join();
}

void AppSession::run()
{
    bool lost = false;
    try {
        processUntilStopped();
    } catch (const std::exception&) {
        // sdbus::Error where the bus is gone; what else comes here leaves a connection of unknown state.
        lost = true;
    }
    end(lost);
}

void AppSession::processUntilStopped()
{
    while (runTasks()) {
        const bool processed = connection_->processPendingRequest();
        ports_->app.tidy();
        if (!processed)
            waitForWork();
    }
}

bool AppSession::runTasks()
{
    std::vector<Task> tasks;
    {
        const std::lock_guard lock(mutex_);
        if (stopping_)
            return false;
        tasks.swap(tasks_);
    }
    for (const Task& task : tasks)
        task(*ports_);
    return true;
}

void AppSession::waitForWork()
{
    const sdbus::IConnection::PollData data = connection_->getEventLoopPollData();
    pollfd watches[] = {{data.fd, data.events, 0}, {wakeDescriptor_.get(), POLLIN, 0}};
    poll(watches, 2, data.getPollTimeout());
    eventfd_t count = 0;
    eventfd_read(wakeDescriptor_.get(), &count);
}

void AppSession::end(bool lost)
{
    std::vector<Task> dropped;
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        if (!stopping_)
            thread_.detach();
        dropped.swap(tasks_);
    }
    if (lost)
        ports_->app.failAll();
    ports_.reset();
    connection_.reset();
    if (lost)
        lost_();
}

void AppSession::wake() const
{
    eventfd_write(wakeDescriptor_.get(), 1);
}

}  // namespace HostPlatform
