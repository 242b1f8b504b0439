#include "DownloadOrder.h"

#include <curl/curl.h>
#include <sys/stat.h>
#include <tzplatform_config.h>

#include <cstring>
#include <memory>
#include <new>

namespace HostPlatform {

namespace {

constexpr std::size_t LongestName = 255;
constexpr mode_t FolderMode = 0755;
constexpr const char* DefaultFolder = "Downloads";
constexpr const char* DefaultName = "download";

struct FreeUrl {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

}  // namespace

bool isWebAddress(const char* text)
{
    const std::unique_ptr<CURLU, FreeUrl> url(curl_url());
    if (!url)
        throw std::bad_alloc();
    char* scheme = nullptr;
    if (curl_url_set(url.get(), CURLUPART_URL, text, 0) != CURLUE_OK ||
        curl_url_get(url.get(), CURLUPART_SCHEME, &scheme, 0) != CURLUE_OK)
        return false;
    const std::string name = scheme;
    curl_free(scheme);
    return name == "http" || name == "https";
}

bool isFolder(const char* path)
{
    struct stat status {};
    return path[0] == '/' && stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

bool isFileName(const char* name)
{
    const std::size_t length = std::strlen(name);
    return length > 0 && length <= LongestName && !std::strchr(name, '/') && std::strcmp(name, ".") != 0 &&
           std::strcmp(name, "..") != 0;
}

std::string folderOf(const DownloadOrder& order)
{
    if (!order.folder.empty())
        return order.folder;
    const char* const folder = tzplatform_mkpath(TZ_USER_CONTENT, DefaultFolder);
    if (!folder)
        throw std::bad_alloc();
    mkdir(folder, FolderMode);
    return folder;
}

std::string nameOf(const DownloadOrder& order)
{
    if (!order.name.empty())
        return order.name;
    const std::string place = order.url.substr(0, order.url.find_first_of("?#"));
    const std::size_t path = place.find('/', place.find("//") + 2);
    const std::string name = path == std::string::npos ? "" : place.substr(place.rfind('/') + 1);
    return isFileName(name.c_str()) ? name : DefaultName;
}

}  // namespace HostPlatform
