#include "ImageCurlDownloader.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <curl/curl.h>
#include <sys/stat.h>
#include <tzplatform_config.h>
#include <unistd.h>

#include "Log.h"

namespace Util {

namespace {

constexpr size_t MAX_TEXT = 127;  // bytes of a file name, a path or a shell command
constexpr mode_t DIRECTORY_MODE = 0755;
constexpr long MAX_REDIRECTS = 20;
constexpr long TRANSFER_TIMEOUT_SECONDS = 7;
constexpr long HTTP_OK = 200;

const std::string imageDirectory = tzplatform_mkpath(TZ_USER_CONTENT, "tmp");

size_t __WriteFileCallback(void* buffer, size_t size, size_t count, void* file)
{
    return fwrite(buffer, size, count, static_cast<FILE*>(file));
}

/** The first kind of picture whose name stands anywhere in the URL; else what follows its last dot,
 * uncleaned. */
std::string extensionOf(const std::string& url)
{
    std::string lowerCase = url;
    std::transform(url.begin(), url.end(), lowerCase.begin(), [](unsigned char c) { return tolower(c); });
    auto contains = [&](const char* text) { return lowerCase.find(text) != std::string::npos; };

    if (contains("gif"))
        return "gif";
    if (contains("png"))
        return "png";
    if (contains("jpg") || contains("jpeg"))
        return "jpg";
    return url.substr(url.rfind('.') + 1);
}

/**
 * Where the image goes, cut to the length that every reader of the path can hold; empty where the cut would
 * leave nothing of the file's name, because that would be a path outside the image directory.
 */
std::string imagePath(int id, const std::string& url)
{
    std::string name = (std::to_string(id) + "." + extensionOf(url)).substr(0, MAX_TEXT);
    std::string path = (imageDirectory + "/" + name).substr(0, MAX_TEXT);
    return path.size() > imageDirectory.size() + 1 ? path : "";
}

FILE* openImage(const std::string& path)
{
    mkdir(imageDirectory.c_str(), DIRECTORY_MODE);
    if (path.empty())
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

    curl_easy_setopt(curl, CURLOPT_URL, url);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, __WriteFileCallback);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, file);
    curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 1L);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, MAX_REDIRECTS);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, TRANSFER_TIMEOUT_SECONDS);

    CURLcode result = curl_easy_perform(curl);
    if (result != CURLE_OK)
        throw std::string("curl_easy_perform failed, result: ") + curl_easy_strerror(result);

    long status = 0;
    result = curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    if (result != CURLE_OK || status != HTTP_OK)
        throw "download failed, result: 0HTTP response: " + std::to_string(status);
}

/** True if a shell takes the path for one word that means itself. */
bool isPlainPath(const std::string& path)
{
    auto isPlain = [](unsigned char c) { return isalnum(c) || c >= 0x80 || strchr("/._-+,:@%=", c); };
    return path.size() > 1 && path[0] == '/' && std::all_of(path.begin(), path.end(), isPlain);
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
    std::string command = "rm -rf " + imageDirectory;
    // A command that would be cut, or that a shell would read as something else, removes what it must not.
    if (command.size() > MAX_TEXT || !isPlainPath(imageDirectory))
        return -1;
    return system(command.c_str());
}

}  // namespace Util
