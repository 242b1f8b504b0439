#include "AsyncThread.h"

#include <ctime>
#include <system_error>

#include <Ecore.h>

#include "BlockedSignals.h"
#include "Log.h"

namespace Util {

namespace {

constexpr timespec POLL_INTERVAL = {0, 50000000};  // 50 ms

}  // namespace

// Not in the initialiser list: the worker uses the members that are declared behind the thread.
AsyncThread::AsyncThread()
{
    start();
}

AsyncThread::~AsyncThread()
{
    mStop = true;
    if (mThread)
        mThread->join();
}

void AsyncThread::start()
{
    BlockedSignals blocked;
    try {
        mThread = std::make_unique<std::thread>([this] { run(); });
    } catch (const std::system_error& error) {
        // At load time nobody could catch it.
        LOG_E("Failed to start the worker thread: %s", error.what());
    }
}

void AsyncThread::asyncCall(const std::function<bool()>& work, const std::function<void()>& done)
{
    std::lock_guard<std::mutex> lock(mMutex);
    mQueue.push_back(std::make_unique<Task>(Task{work, done}));
    if (!mThread)
        start();
}

void AsyncThread::syncCallEcore(const std::function<void()>& func)
{
    auto onMainLoop = [](void* data) -> void* {
        complete(data);
        return nullptr;
    };
    ecore_main_loop_thread_safe_call_sync(onMainLoop, std::make_unique<Task>(Task{nullptr, func}).release());
}

void AsyncThread::run()
{
    while (!mStop) {
        std::unique_ptr<Task> task = takeTask();
        if (task && task->work())
            ecore_main_loop_thread_safe_call_async(complete, task.release());
        task.reset();
        if (mStop)
            return;
        nanosleep(&POLL_INTERVAL, nullptr);
    }
}

void AsyncThread::complete(void* data)
{
    std::unique_ptr<Task> task(static_cast<Task*>(data));
    if (task->done)
        task->done();
}

std::unique_ptr<AsyncThread::Task> AsyncThread::takeTask()
{
    std::lock_guard<std::mutex> lock(mMutex);
    if (mQueue.empty())
        return nullptr;
    std::unique_ptr<Task> task = std::move(mQueue.front());
    mQueue.pop_front();
    return task;
}

}  // namespace Util
