// Ends while the picture of its argument is under way, without giving anything up.
#include <Ecore.h>

#include <cstdio>

#include "ImageDownloader.h"

namespace {

void onState(int, Util::ImageDownloader::State state, void*)
{
    if (state == Util::ImageDownloader::State::DOWNLOADING)
        ecore_main_loop_quit();
}

void onProgress(int, uint64_t, void*) {}

}  // namespace

int main(int, char** arguments)
{
    ecore_app_no_system_modules();
    ecore_init();
    static Util::ImageDownloader downloader;
    const int id = downloader.initDownload();
    if (downloader.startDownload(id, arguments[1], onState, onProgress, nullptr) != 0)
        return 1;
    ecore_main_loop_begin();
    std::puts("under way");
    return 0;
}
