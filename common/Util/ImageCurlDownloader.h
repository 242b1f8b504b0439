// Product images, fetched with libcurl into the service's temporary image directory.
#pragma once

#include <functional>
#include <map>
#include <string>

namespace Util {

/** What an image shows. The numbers travel to the UI app as decimal text. */
enum class DownloadImageType {
    PRODUCT_IMAGE = 0,       // the product's own picture
    UNDEFINED_IMAGE = 1,     // has no consumer
    DISCOUNT_ICON_IMAGE = 2  // the icon of the product's discount badge
};

/**
 * Runs `step` while nobody else touches the downloader's files and records, and returns true; or returns
 * false without running it, because the image is not wanted any more.
 */
using DownloadGate = std::function<bool(const std::function<void()>& step)>;

/** The gate of a caller that has nothing to guard: every image is wanted. */
inline bool openGate(const std::function<void()>& step)
{
    step();
    return true;
}

/**
 * Fetches one image at a time into a file in the image directory, and remembers the path of each file that it
 * fetched, by download id. The directory belongs to the object: making and destroying one wipes it.
 *
 * The object has no lock of its own. Its caller has one anyway, and holds it around every use of
 * `downloaded`, deinitDownload() and clearAllDownloadedImages(), and inside the gate that it gives to
 * startDownload(), which itself blocks for seconds and is called without it.
 */
class ImageCurlDownloader {
  public:
    ImageCurlDownloader();
    virtual ~ImageCurlDownloader();
    ImageCurlDownloader(const ImageCurlDownloader&) = delete;
    ImageCurlDownloader& operator=(const ImageCurlDownloader&) = delete;

    /** The download id of (first, second): both in decimal, one behind the other; 1 and 0 give 10. */
    int initDownload(int first, int second);

    /**
     * Fetches `url` into a file named by `id` (also the key of its record) and the extension that the URL
     * suggests. Blocks for 7 seconds at most, and until the file is on the disk. Returns whether the path was
     * recorded. A failure is logged; its file, empty or partial, stays. The gate is asked before the file is
     * opened and before its path is recorded; when it is closed the result is false, without a log line.
     */
    bool startDownload(int id, const char* url, const DownloadGate& gate = openGate);

    /** Forgets the path recorded under `id`, if there is one. The file stays. */
    void deinitDownload(int id);

    /**
     * Removes the image directory and all that is in it; startDownload() makes it anew. Returns the status of
     * the shell that did it, or -1 where the directory's path cannot be given to a shell.
     */
    int clearAllDownloadedImages();

    /** Full path of the file fetched for a download id. */
    std::map<int, std::string> downloaded;
};

}  // namespace Util
