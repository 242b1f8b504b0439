// Makes a downloader whose image directory the environment names, starts one download and ends. Tells what it
// asks of the shell and of the file system, and does nothing of it.
#include <sys/types.h>
#include <tzplatform_config.h>

#include <cstdio>
#include <cstdlib>

#include "ImageCurlDownloader.h"

extern "C" {
const char* __wrap_tzplatform_mkpath(tzplatform_variable id, const char* path);
int __wrap_system(const char* command);
int __wrap_mkdir(const char* path, mode_t mode);
FILE* __wrap_fopen(const char* path, const char* mode);
}

const char* __wrap_tzplatform_mkpath(tzplatform_variable, const char*)
{
    return std::getenv("IMAGE_FOLDER");
}

int __wrap_system(const char* command)
{
    std::printf("asked: system %s\n", command);
    return 0;
}

int __wrap_mkdir(const char* path, mode_t)
{
    std::printf("asked: mkdir %s\n", path);
    return 0;
}

FILE* __wrap_fopen(const char* path, const char*)
{
    std::printf("asked: fopen %s\n", path);
    return nullptr;
}

int main()
{
    Util::ImageCurlDownloader downloader;
    const auto gate = [](const std::function<void()>& step) {
        step();
        return true;
    };
    return downloader.startDownload(10, "http://127.0.0.1:1/milk.png", gate) ? 1 : 0;
}
