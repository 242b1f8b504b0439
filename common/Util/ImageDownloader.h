// Images, fetched by the platform's download service into the temporary image folder.
#pragma once

#include <download.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>

namespace Util {

/**
 * Downloads that report to the main loop. An id lives from initDownload() to deinitDownload(); in between its
 * download may be started, paused, resumed and stopped any number of times.
 *
 * To be used on the main loop only. What happens to a download is told there as well, by the functions given
 * to startDownload(): in order, 50 ms apart at least, and therefore later than it happened. They may use the
 * object, give up their own id and destroy the object. Once an id is given up or the object is gone they are
 * not called any more; something told for an id without a function is logged. The functions are looked up
 * when something is told: what is left of an earlier attempt goes to those of a newer startDownload() of the
 * id.
 */
class ImageDownloader {
  public:
    /** Where a download stands; the numbers are the platform's. */
    enum class State {
        NONE = 0,
        READY = 1,
        QUEUED = 2,
        DOWNLOADING = 3,
        PAUSED = 4,
        COMPLETED = 5,
        FAILED = 6,
        CANCELED = 7
    };

    using StateCallback = std::function<void(int id, State state, void* userData)>;
    using ProgressCallback = std::function<void(int id, uint64_t received, void* userData)>;

    ImageDownloader() = default;
    /** Downloads that were not given up go on unheard. */
    ~ImageDownloader();
    ImageDownloader(const ImageDownloader&) = delete;
    ImageDownloader& operator=(const ImageDownloader&) = delete;

    /** The id of a new download, or the platform's error. An id of 0 is asked for again, 200 times at most.
     */
    int initDownload();

    /**
     * Fetches `url` into the image folder, as a file named by the id and the extension that the URL suggests.
     * Returns 0, or the platform's error at the first step that failed, which is logged as an empty error:
     * the line tells which step it was.
     */
    int startDownload(int id, const char* url, StateCallback stateCallback, ProgressCallback progressCallback,
                      void* userData);

    /* These three return 0 or the platform's error. */
    int pauseDownload(int id);
    int resumeDownload(int id);
    int stopDownload(int id);

    /** The path of a completed download's file, which the caller free()s; returns 0 or the platform's error.
     */
    int getDownloadedImagePath(int id, char** path);

    /* What startDownload() was given; empty or null for an unknown id. */
    StateCallback getStateCallback(int id) const;
    ProgressCallback getProgressCallback(int id) const;
    void* getExtraData(int id) const;

    /** Ends the download, if it is not over, and gives up its id. The file of a completed one stays. */
    int deinitDownload(int id);

    /** Removes the image folder and all that is in it; see removeImageFolder(). */
    int clearAllDownloadedImages();

    /** The platform's states 1 to 7 are ours; every other number is NONE. */
    static State convertDownloadState(download_state_e state);

  private:
    static void _download_state_changed_cb(int id, download_state_e state, void* self);
    static void _download_progress_cb(int id, unsigned long long received, void* self);
    void completeOnMainLoop(int id, const std::function<void()>& completion) const;

    std::map<int, StateCallback> mStateCallbacks;
    std::map<int, ProgressCallback> mProgressCallbacks;
    std::map<int, void*> mExtraData;
    std::set<int> mHeard;  // the ids whose platform callbacks may be this object's
    // What is on its way to the main loop looks whether the object is still there. Set for good: any thread.
    const std::shared_ptr<const bool> mIsAlive = std::make_shared<const bool>(true);
};

}  // namespace Util
