// The download service: what is known of each download, and the thread that does the work.
#pragma once

#include <curl/curl.h>
#include <download.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "Download.h"
#include "DownloadEvents.h"
#include "DownloadTransfer.h"

namespace HostPlatform {

/**
 * Downloads by their ids. Apps change what is wanted of a download; the worker thread makes it so, and calls
 * back.
 *
 * One mutex guards every Download and the queue of events. It is held for single steps only: never while
 * libcurl transfers or the disk is at work, and never during a callback; of libcurl only the worker's wake-up
 * is called with it. Transfers are the worker's alone.
 *
 * The worker starts with the first download. When the process's static objects are destroyed it ends: a
 * callback that is running returns first, unfinished files are removed, and from then on nothing can be
 * started. The object itself stays, so that static objects may use it to the last.
 */
class DownloadService {
  public:
    using Reader = std::function<int(const Download&)>;
    using Change = std::function<int(Download&)>;

    static DownloadService& instance();

    /* Any thread. All return a download_error_e and throw std::bad_alloc. */

    int create(int& id);
    int destroy(int id);

    int read(int id, const Reader& reader);

    /** Runs @p change on a download that is not on its way. */
    int configure(int id, const Change& change);

    /** As configure(); what was called before is not running any more when this returns. */
    int setCallback(int id, const Change& change);

    /** The same in every state. */
    int unsetCallback(int id, const Change& change);

    int start(int id);
    int pause(int id);
    int cancel(int id);

  private:
    using Record = DownloadEvents::Record;
    using Lock = DownloadEvents::Lock;

    /** A transfer, and the attempt that it is made for. */
    struct Job {
        Record download;
        std::uint64_t attempt;
        std::unique_ptr<DownloadTransfer> transfer;
    };

    enum class Wanted { Going, Waiting, Nothing };

    DownloadService();
    ~DownloadService() = delete;

    Record find(int id) const;
    void awaitRunningCallback(Lock& lock, const Record& download);
    int startWorker();
    void wake();
    void stop();

    void change(const Record& download, download_state_e state);

    /* The worker's thread. */
    void run();
    void stopJobs();
    void takeOrders();
    void startJobs();
    void go(Job& job);
    void work();
    void publish(const Job& job);
    void publishLocked(const Job& job);
    void conclude(Job& job, download_error_e error);
    void deliver();
    Wanted wanted(const Job& job);
    Wanted wantedLocked(const Job& job) const;

    std::mutex mutex_;
    std::map<int, Record> downloads_;
    DownloadEvents events_;
    int lastId_ = 0;
    bool isEnding_ = false;
    CURLM* multi_;  // null: there is no memory, or the process is about to end
    std::thread thread_;
    std::thread::id worker_;

    std::vector<Job> jobs_;  // the worker's
};

}  // namespace HostPlatform
