// Ends as an app does, through ecore_shutdown(), while the picture of its first argument is under way and
// more than the worker can bring to the main loop waits for it. The second argument is how much of that the
// worker brings between the shutdown and the end of the process.
#include <Ecore.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "AsyncThread.h"
#include "ImageDownloader.h"
#include "Patience.h"
#include "Singleton.h"

namespace {

// Counts what the worker has taken up. Never destroyed: the worker is not either.
class Count {
  public:
    void add()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++count_;
        changed_.notify_all();
    }

    bool waitForMore(int count)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        const int end = count_ + count;
        return changed_.wait_for(lock, TestSupport::Patience, [&] { return count_ >= end; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int count_ = 0;
};

Count* const taken = new Count;

void onState(int, Util::ImageDownloader::State state, void*)
{
    if (state == Util::ImageDownloader::State::DOWNLOADING)
        ecore_main_loop_quit();
}

void onProgress(int, uint64_t, void*) {}

void queue(int count)
{
    const auto work = [] {
        taken->add();
        return true;
    };
    for (int i = 0; i < count; ++i)
        Util::Singleton<Util::AsyncThread>::getInstance()->asyncCall(work, [] {});
}

}  // namespace

int main(int, char** arguments)
{
    const int after = std::atoi(arguments[2]);
    ecore_app_no_system_modules();
    ecore_init();
    static Util::ImageDownloader downloader;
    const int id = downloader.initDownload();
    if (downloader.startDownload(id, arguments[1], onState, onProgress, nullptr) != 0)
        return 1;
    ecore_main_loop_begin();
    std::puts("under way");
    queue(after + 100);
    ecore_shutdown();
    return taken->waitForMore(after) ? 0 : 2;
}
