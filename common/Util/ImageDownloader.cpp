#include "ImageDownloader.h"

#include <utility>

#include <Ecore.h>

#include "AsyncThread.h"
#include "ImageFolder.h"
#include "Log.h"
#include "Singleton.h"

namespace Util {

namespace {

constexpr int MAX_CREATE_ATTEMPTS = 200;

template <typename Value>
Value valueOf(const std::map<int, Value>& values, int id)
{
    const auto found = values.find(id);
    return found == values.end() ? Value() : found->second;
}

// The worker is never stopped, and brings to Ecore's loop what is told to the last. The reference is never
// given back, so that the platform's ecore_shutdown() at the end of the app does not take Ecore away from
// under it.
bool makeWorker()
{
    if (!Singleton<AsyncThread>::mInstance && ecore_init() == 0)
        return false;
    Singleton<AsyncThread>::getInstance();
    return true;
}

}  // namespace

ImageDownloader::~ImageDownloader()
{
    for (int id : mHeard) {
        download_unset_state_changed_cb(id);
        download_unset_progress_cb(id);
    }
}

int ImageDownloader::initDownload()
{
    int id = 0;
    int result = DOWNLOAD_ERROR_NONE;
    for (int attempt = 0; id == 0 && attempt < MAX_CREATE_ATTEMPTS; ++attempt)
        result = download_create(&id);
    return result == DOWNLOAD_ERROR_NONE ? id : result;
}

int ImageDownloader::startDownload(int id, const char* url, StateCallback stateCallback,
                                   ProgressCallback progressCallback, void* userData)
{
    int result = download_set_url(id, url);
    if (result != DOWNLOAD_ERROR_NONE) {
        LOG_E("");
        return result;
    }
    result = download_set_network_type(id, DOWNLOAD_NETWORK_WIFI);
    if (result != DOWNLOAD_ERROR_NONE) {
        LOG_E("");
        return result;
    }
    makeImageFolder();
    result = download_set_destination(id, imageFolder().c_str());
    if (result != DOWNLOAD_ERROR_NONE) {
        LOG_E("");
        return result;
    }
    result = download_set_file_name(id, imageFileName(id, url).c_str());
    if (result != DOWNLOAD_ERROR_NONE) {
        LOG_E("");
        return result;
    }
    // Here and not on the download service's thread, where the holder must not make anything.
    if (!makeWorker()) {
        LOG_E("");
        return DOWNLOAD_ERROR_SYSTEM_DOWN;
    }
    mHeard.insert(id);
    result = download_set_state_changed_cb(id, _download_state_changed_cb, this);
    if (result != DOWNLOAD_ERROR_NONE) {
        LOG_E("");
        return result;
    }
    result = download_set_progress_cb(id, _download_progress_cb, this);
    if (result != DOWNLOAD_ERROR_NONE) {
        LOG_E("");
        return result;
    }
    mStateCallbacks[id] = std::move(stateCallback);
    mProgressCallbacks[id] = std::move(progressCallback);
    mExtraData[id] = userData;
    result = download_start(id);
    if (result != DOWNLOAD_ERROR_NONE)
        LOG_E("");
    return result;
}

int ImageDownloader::pauseDownload(int id)
{
    return download_pause(id);
}

int ImageDownloader::resumeDownload(int id)
{
    return download_start(id);
}

int ImageDownloader::stopDownload(int id)
{
    return download_cancel(id);
}

int ImageDownloader::getDownloadedImagePath(int id, char** path)
{
    return download_get_downloaded_file_path(id, path);
}

ImageDownloader::StateCallback ImageDownloader::getStateCallback(int id) const
{
    return valueOf(mStateCallbacks, id);
}

ImageDownloader::ProgressCallback ImageDownloader::getProgressCallback(int id) const
{
    return valueOf(mProgressCallbacks, id);
}

void* ImageDownloader::getExtraData(int id) const
{
    return valueOf(mExtraData, id);
}

int ImageDownloader::deinitDownload(int id)
{
    mStateCallbacks.erase(id);
    mProgressCallbacks.erase(id);
    mExtraData.erase(id);
    download_unset_state_changed_cb(id);
    download_unset_progress_cb(id);
    mHeard.erase(id);
    return download_destroy(id);
}

int ImageDownloader::clearAllDownloadedImages()
{
    return removeImageFolder();
}

ImageDownloader::State ImageDownloader::convertDownloadState(download_state_e state)
{
    const bool isKnown = state >= DOWNLOAD_STATE_READY && state <= DOWNLOAD_STATE_CANCELED;
    return isKnown ? static_cast<State>(state) : State::NONE;
}

void ImageDownloader::_download_state_changed_cb(int id, download_state_e state, void* self)
{
    const auto* const downloader = static_cast<const ImageDownloader*>(self);
    downloader->completeOnMainLoop(id, [downloader, id, state] {
        const StateCallback callback = downloader->getStateCallback(id);
        callback(id, convertDownloadState(state), downloader->getExtraData(id));
    });
}

void ImageDownloader::_download_progress_cb(int id, unsigned long long received, void* self)
{
    const auto* const downloader = static_cast<const ImageDownloader*>(self);
    downloader->completeOnMainLoop(id, [downloader, id, received] {
        const ProgressCallback callback = downloader->getProgressCallback(id);
        callback(id, received, downloader->getExtraData(id));
    });
}

void ImageDownloader::completeOnMainLoop(int id, const std::function<void()>& completion) const
{
    const auto guarded = [id, completion, isAlive = std::weak_ptr<const bool>(mIsAlive)] {
        if (isAlive.expired())
            return;
        try {
            completion();
        } catch (const std::bad_function_call& error) {
            // The loop is a C library's: an exception must not get into it.
            LOG_E("Download %d: %s", id, error.what());
        }
    };
    Singleton<AsyncThread>::getInstance()->asyncCall([] { return true; }, guarded);
}

}  // namespace Util
