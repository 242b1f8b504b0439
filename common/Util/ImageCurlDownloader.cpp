#include "ImageCurlDownloader.h"

#include <cstdio>

#include <curl/curl.h>
#include <unistd.h>

#include "ImageFolder.h"
#include "Log.h"

namespace Util {

namespace {

constexpr long MAX_REDIRECTS = 20;
constexpr long TRANSFER_TIMEOUT_SECONDS = 7;
constexpr long HTTP_OK = 200;

size_t __WriteFileCallback(void* buffer, size_t size, size_t count, void* file)
{
    return fwrite(buffer, size, count, static_cast<FILE*>(file));
}

/**
 * Where the image goes, cut to the length that every reader of the path can hold; empty where the cut would
 * leave nothing of the file's name, because that would be a path outside the image directory; and where there
 * is no image directory.
 */
std::string imagePath(int id, const std::string& url)
{
    if (imageFolder().empty())
        return "";
    std::string path = (imageFolder() + "/" + imageFileName(id, url)).substr(0, MAX_IMAGE_TEXT);
    return path.size() > imageFolder().size() + 1 ? path : "";
}

FILE* openImage(const std::string& path)
{
    makeImageFolder();
    // Behind a link that somebody has made since the last wipe lie files of others, which may be called the
    // same.
    if (path.empty() || isImageFolderLink())
        return nullptr;
    // Where the directory could not be wiped, the file may be one that an earlier search still writes.
    unlink(path.c_str());
    return fopen(path.c_str(), "w");
}

/** Fetches `url` into `file`. Throws the text that tells why it did not come to that. */
void fetch(CURL* curl, const char* url, FILE* file)
{
    if (!curl)
        throw std::string("Failed to create curl handler");

    // Without the file to write to, the picture would go to standard output and count as fetched; without its
    // limit the transfer might never end.
    CURLcode result = CURLE_OK;
    const auto set = [&](CURLoption option, auto value) {
        const CURLcode code = curl_easy_setopt(curl, option, value);
        if (result == CURLE_OK)
            result = code;
    };
    curl_easy_setopt(curl, CURLOPT_URL, url);
    set(CURLOPT_WRITEFUNCTION, __WriteFileCallback);
    set(CURLOPT_WRITEDATA, file);
    curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 1L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, MAX_REDIRECTS);
    set(CURLOPT_TIMEOUT, TRANSFER_TIMEOUT_SECONDS);

    if (result == CURLE_OK)
        result = curl_easy_perform(curl);
    if (result != CURLE_OK)
        throw std::string("curl_easy_perform failed, result: ") + curl_easy_strerror(result);

    long status = 0;
    result = curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    if (result != CURLE_OK || status != HTTP_OK)
        throw "download failed, result: 0HTTP response: " + std::to_string(status);
}

}  // namespace

ImageCurlDownloader::ImageCurlDownloader()
{
    // A download thread must not find libcurl's global state being taken down because a search has just
    // ended.
    curl_global_init(CURL_GLOBAL_ALL);
    clearAllDownloadedImages();
}

ImageCurlDownloader::~ImageCurlDownloader()
{
    clearAllDownloadedImages();
    curl_global_cleanup();
}

int ImageCurlDownloader::initDownload(int first, int second)
{
    std::string digits = std::to_string(first) + std::to_string(second);
    return static_cast<int>(strtol(digits.c_str(), nullptr, 10));
}

bool ImageCurlDownloader::startDownload(int id, const char* url, const DownloadGate& gate)
{
    const std::string path = imagePath(id, url);
    FILE* file = nullptr;
    if (!gate([&] { file = openImage(path); }))
        return false;
    if (!file) {
        LOG_E("Failed to open file to image data write");
        return false;
    }

    bool isRecorded = false;
    CURL* curl = curl_easy_init();
    try {
        fetch(curl, url, file);
        isRecorded = gate([&] { downloaded[id] = path; });
    } catch (const std::string& text) {
        LOG_E("%s", text.c_str());
    }
    // The path is passed on as soon as this returns: what it names must be there even after a power cut.
    fflush(file);
    fsync(fileno(file));
    fclose(file);
    sync();
    curl_easy_cleanup(curl);
    return isRecorded;
}

void ImageCurlDownloader::deinitDownload(int id)
{
    downloaded.erase(id);
}

int ImageCurlDownloader::clearAllDownloadedImages()
{
    return removeImageFolder();
}

}  // namespace Util
