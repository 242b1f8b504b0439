#include "DownloadThreads.h"

#include <utility>

#include "BlockedSignals.h"

namespace Carvoy {

DownloadThreads::~DownloadThreads()
{
    for (Download& download : mDownloads)
        download.thread.join();
}

void DownloadThreads::start(std::function<void()> download)
{
    forgetFinished();
    Util::BlockedSignals blocked;
    Download& added = mDownloads.emplace_back();
    try {
        added.thread = std::thread([&added, run = std::move(download)] {
            run();
            added.isOver = true;
        });
    } catch (...) {
        mDownloads.pop_back();
        throw;
    }
}

void DownloadThreads::forgetFinished()
{
    mDownloads.remove_if([](Download& download) {
        bool isOver = download.isOver;
        if (isOver)
            download.thread.join();
        return isOver;
    });
}

}  // namespace Carvoy
