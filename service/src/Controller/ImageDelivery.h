// Pictures on their way to the UI app: what every search controller does with them.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "DownloadThreads.h"
#include "ImageCurlDownloader.h"

namespace Carvoy {

/** A picture that has been fetched. */
struct ImagePath {
    int index;         // product position, counted from 0
    std::string path;  // of the file, in full
    Util::DownloadImageType type;
};

/**
 * Keeps the pictures of the current search until the UI app is ready to show them, runs the threads that
 * fetch them, and tells the current search from those before it: what an earlier one still brings is dropped.
 *
 * The mutex guards all that a controller shares with its download threads, and the image downloader's files
 * and records. It is one for all, because the image downloader is. The operations take it themselves, so that
 * none may be called from inside a step or from the sender. Any thread, but for begin() and download(), which
 * are for the one that searches.
 *
 * It is the last member of its controller: its destructor waits for the threads, which use all the others.
 */
class ImageDelivery {
  public:
    using Step = std::function<void()>;

    /** `sendImage` hands one picture to the UI app. It is called with the mutex held. */
    explicit ImageDelivery(std::function<void(const ImagePath&)> sendImage);

    /** The process's image downloader, made on first use. */
    static Util::ImageCurlDownloader* downloader();

    /**
     * Begins a new search, with no picture waiting and the UI app not ready, and returns its number. `reset`
     * takes the last search out of what the mutex guards.
     */
    unsigned begin(const Step& reset);

    /** Runs `step` with the mutex held. Returns the number of the search that was the current one. */
    unsigned guarded(const Step& step);

    /** Runs `step` with the mutex held if `search` is the current one; else returns false. */
    bool ifCurrent(unsigned search, const Step& step);

    /** Sends the picture if the UI app is ready, behind all that wait; else it waits, too. */
    void push(unsigned search, ImagePath image);

    /** The UI app shows the products. Nothing is sent yet. */
    void setUIReady();

    /** Sends what waits, in order of arrival. False, and nothing is sent, if the UI app is not ready. */
    bool sendAll();

    /**
     * Runs `fetch` on a thread of its own. It must end by itself in bounded time after a begin() that leaves
     * it nothing to fetch. Throws std::system_error without a thread.
     */
    void download(Step fetch);

  private:
    void sendPending();

    std::function<void(const ImagePath&)> sender;
    std::deque<std::unique_ptr<ImagePath>> pendingImagePaths;
    bool uiReady = false;
    unsigned currentSearch = 0;
    static std::mutex mutex;
    DownloadThreads threads;
};

}  // namespace Carvoy
