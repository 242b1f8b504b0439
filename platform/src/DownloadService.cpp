#include "DownloadService.h"

#include <algorithm>
#include <new>
#include <system_error>
#include <utility>

#include "SignalsBlocked.h"

namespace HostPlatform {

namespace {

constexpr std::size_t MostDownloads = 32;
constexpr int PollMilliseconds = 60'000;  // a wake-up or the network end it earlier

bool isOnItsWay(download_state_e state)
{
    return state == DOWNLOAD_STATE_QUEUED || state == DOWNLOAD_STATE_DOWNLOADING;
}

bool isConfigurable(download_state_e state)
{
    return state == DOWNLOAD_STATE_READY || state == DOWNLOAD_STATE_FAILED ||
           state == DOWNLOAD_STATE_CANCELED;
}

}  // namespace

DownloadService& DownloadService::instance()
{
    static DownloadService* const service = new DownloadService;
    // Made after libcurl has brought up the TLS library, and therefore ended before that takes itself down.
    static const struct End {
        ~End() { service->stop(); }
    } end;
    return *service;
}

DownloadService::DownloadService()
{
    curl_global_init(CURL_GLOBAL_ALL);
    multi_ = curl_multi_init();
}

int DownloadService::create(int& id)
{
    const Lock lock(mutex_);
    if (downloads_.size() >= MostDownloads)
        return DOWNLOAD_ERROR_TOO_MANY_DOWNLOADS;
    const auto created = std::make_shared<Download>(lastId_ + 1);
    downloads_.emplace(created->id, created);
    id = lastId_ = created->id;
    return DOWNLOAD_ERROR_NONE;
}

int DownloadService::destroy(int id)
{
    Lock lock(mutex_);
    const Record download = find(id);
    if (!download)
        return DOWNLOAD_ERROR_ID_NOT_FOUND;
    downloads_.erase(id);
    download->isDestroyed = true;
    download->stateChanged = {};
    download->progress = {};
    wake();
    awaitRunningCallback(lock, download);
    return DOWNLOAD_ERROR_NONE;
}

int DownloadService::read(int id, const Reader& reader)
{
    const Lock lock(mutex_);
    const Record download = find(id);
    return download ? reader(*download) : static_cast<int>(DOWNLOAD_ERROR_ID_NOT_FOUND);
}

int DownloadService::configure(int id, const Change& change)
{
    const Lock lock(mutex_);
    const Record download = find(id);
    if (!download)
        return DOWNLOAD_ERROR_ID_NOT_FOUND;
    return isConfigurable(download->state) ? change(*download)
                                           : static_cast<int>(DOWNLOAD_ERROR_INVALID_STATE);
}

int DownloadService::setCallback(int id, const Change& change)
{
    Lock lock(mutex_);
    const Record download = find(id);
    if (!download)
        return DOWNLOAD_ERROR_ID_NOT_FOUND;
    if (!isConfigurable(download->state))
        return DOWNLOAD_ERROR_INVALID_STATE;
    change(*download);
    awaitRunningCallback(lock, download);
    return DOWNLOAD_ERROR_NONE;
}

int DownloadService::unsetCallback(int id, const Change& change)
{
    Lock lock(mutex_);
    const Record download = find(id);
    if (!download)
        return DOWNLOAD_ERROR_ID_NOT_FOUND;
    change(*download);
    awaitRunningCallback(lock, download);
    return DOWNLOAD_ERROR_NONE;
}

int DownloadService::start(int id)
{
    const Lock lock(mutex_);
    const Record download = find(id);
    if (!download)
        return DOWNLOAD_ERROR_ID_NOT_FOUND;
    const bool isResumed = download->state == DOWNLOAD_STATE_PAUSED;
    if (!isResumed && !isConfigurable(download->state))
        return DOWNLOAD_ERROR_INVALID_STATE;
    if (download->order.url.empty())
        return DOWNLOAD_ERROR_INVALID_URL;
    const int started = startWorker();
    if (started != DOWNLOAD_ERROR_NONE)
        return started;
    change(download, DOWNLOAD_STATE_QUEUED);
    if (isResumed)
        return DOWNLOAD_ERROR_NONE;
    ++download->attempt;
    download->error = DOWNLOAD_ERROR_NONE;
    download->httpStatus = 0;
    download->received = 0;
    download->contentSize = 0;
    return DOWNLOAD_ERROR_NONE;
}

int DownloadService::pause(int id)
{
    const Lock lock(mutex_);
    const Record download = find(id);
    if (!download)
        return DOWNLOAD_ERROR_ID_NOT_FOUND;
    if (!isOnItsWay(download->state))
        return DOWNLOAD_ERROR_INVALID_STATE;
    change(download, DOWNLOAD_STATE_PAUSED);
    return DOWNLOAD_ERROR_NONE;
}

int DownloadService::cancel(int id)
{
    const Lock lock(mutex_);
    const Record download = find(id);
    if (!download)
        return DOWNLOAD_ERROR_ID_NOT_FOUND;
    if (!isOnItsWay(download->state) && download->state != DOWNLOAD_STATE_PAUSED)
        return DOWNLOAD_ERROR_INVALID_STATE;
    change(download, DOWNLOAD_STATE_CANCELED);
    return DOWNLOAD_ERROR_NONE;
}

DownloadService::Record DownloadService::find(int id) const
{
    const auto found = downloads_.find(id);
    return found == downloads_.end() ? nullptr : found->second;
}

// A callback may well unset itself; it cannot wait for its own end.
void DownloadService::awaitRunningCallback(Lock& lock, const Record& download)
{
    if (std::this_thread::get_id() != worker_)
        events_.awaitRunning(lock, *download);
}

int DownloadService::startWorker()
{
    if (isEnding_)
        return DOWNLOAD_ERROR_SYSTEM_DOWN;
    if (!multi_)
        return DOWNLOAD_ERROR_OUT_OF_MEMORY;
    if (thread_.joinable())
        return DOWNLOAD_ERROR_NONE;
    try {
        const SignalsBlocked blocked;
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        return DOWNLOAD_ERROR_SYSTEM_DOWN;
    }
    worker_ = thread_.get_id();
    return DOWNLOAD_ERROR_NONE;
}

void DownloadService::wake()
{
    if (multi_)
        curl_multi_wakeup(multi_);
}

// A callback that ends the process is the one thing that cannot be waited for.
void DownloadService::stop()
{
    {
        const Lock lock(mutex_);
        isEnding_ = true;
        if (std::this_thread::get_id() == worker_)
            return;
        wake();
    }
    if (thread_.joinable())
        thread_.join();
    const Lock lock(mutex_);
    curl_multi_cleanup(multi_);
    multi_ = nullptr;
}

// The event comes first: there may be no memory for it.
void DownloadService::change(const Record& download, download_state_e state)
{
    events_.addState(download, state);
    download->state = state;
    wake();
}

void DownloadService::run()
{
    for (;;) {
        {
            const Lock lock(mutex_);
            if (isEnding_)
                break;
        }
        takeOrders();
        stopJobs();  // before a new attempt asks for the name of an old one
        startJobs();
        work();
        deliver();
        curl_multi_poll(multi_, nullptr, 0, PollMilliseconds, nullptr);
    }
    jobs_.clear();
}

// A job for each attempt that has none yet.
void DownloadService::takeOrders()
{
    const Lock lock(mutex_);
    for (const auto& [id, download] : downloads_) {
        if (download->state != DOWNLOAD_STATE_QUEUED)
            continue;
        const bool isKnown =
            std::any_of(jobs_.begin(), jobs_.end(), [&, download = download](const Job& job) {
                return job.download == download && job.attempt == download->attempt;
            });
        if (!isKnown)
            jobs_.push_back(
                {download, download->attempt, std::make_unique<DownloadTransfer>(download->order)});
    }
}

void DownloadService::startJobs()
{
    for (Job& job : jobs_) {
        if (!job.transfer->isGoing() && wanted(job) == Wanted::Going)
            go(job);
    }
}

// Before a state is told, too: whoever hears of the end finds nothing of the file, and after a pause nothing
// more comes.
void DownloadService::stopJobs()
{
    const auto isUnwanted = [this](const Job& job) { return wanted(job) == Wanted::Nothing; };
    jobs_.erase(std::remove_if(jobs_.begin(), jobs_.end(), isUnwanted), jobs_.end());
    for (const Job& job : jobs_) {
        if (wanted(job) == Wanted::Waiting)
            job.transfer->halt();
    }
}

void DownloadService::go(Job& job)
{
    if (job.transfer->isWhole()) {
        conclude(job, job.transfer->isStillThere() ? DOWNLOAD_ERROR_NONE : DOWNLOAD_ERROR_IO_ERROR);
        return;
    }
    const download_error_e error = job.transfer->go(multi_);
    if (error != DOWNLOAD_ERROR_NONE)
        conclude(job, error);
}

void DownloadService::work()
{
    int going = 0;
    curl_multi_perform(multi_, &going);
    for (const Job& job : jobs_)
        publish(job);
    while (const CURLMsg* const message = curl_multi_info_read(multi_, &going)) {
        const CURLcode result = message->data.result;
        DownloadTransfer* ended = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &ended);
        const auto job = std::find_if(jobs_.begin(), jobs_.end(),
                                      [ended](const Job& each) { return each.transfer.get() == ended; });
        conclude(*job, ended->finish(result));
    }
}

void DownloadService::publish(const Job& job)
{
    const Lock lock(mutex_);
    if (wantedLocked(job) == Wanted::Going && job.transfer->hasBegun())
        publishLocked(job);
}

void DownloadService::publishLocked(const Job& job)
{
    const DownloadTransfer& transfer = *job.transfer;
    Download& download = *job.download;
    download.httpStatus = transfer.httpStatus();
    download.contentSize = transfer.contentSize();
    const bool isNew = download.state == DOWNLOAD_STATE_QUEUED;
    if (isNew)
        change(job.download, DOWNLOAD_STATE_DOWNLOADING);
    if (isNew || transfer.received() != download.received)
        events_.addProgress(job.download, transfer.received());
    download.received = transfer.received();
}

// A transfer that ended while it was to wait tells so when it is to go on.
void DownloadService::conclude(Job& job, download_error_e error)
{
    const Lock lock(mutex_);
    if (wantedLocked(job) != Wanted::Going)
        return;
    job.download->httpStatus = job.transfer->httpStatus();
    if (error != DOWNLOAD_ERROR_NONE) {
        job.download->error = error;
        change(job.download, DOWNLOAD_STATE_FAILED);
        return;
    }
    publishLocked(job);
    job.transfer->keepFile();
    job.download->path = job.transfer->path();
    change(job.download, DOWNLOAD_STATE_COMPLETED);
}

void DownloadService::deliver()
{
    Lock lock(mutex_);
    const auto before = [this] { stopJobs(); };
    while (!isEnding_ && events_.tellNext(lock, before)) {
    }
}

DownloadService::Wanted DownloadService::wanted(const Job& job)
{
    const Lock lock(mutex_);
    return wantedLocked(job);
}

DownloadService::Wanted DownloadService::wantedLocked(const Job& job) const
{
    const Download& download = *job.download;
    if (download.isDestroyed || download.attempt != job.attempt)
        return Wanted::Nothing;
    if (isOnItsWay(download.state))
        return Wanted::Going;
    return download.state == DOWNLOAD_STATE_PAUSED ? Wanted::Waiting : Wanted::Nothing;
}

}  // namespace HostPlatform
