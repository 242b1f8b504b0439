#include "ImageDelivery.h"

#include <utility>

#include "Singleton.h"

namespace Carvoy {

std::mutex ImageDelivery::mutex;

ImageDelivery::ImageDelivery(std::function<void(const ImagePath&)> sendImage) : sender(std::move(sendImage))
{
}

Util::ImageCurlDownloader* ImageDelivery::downloader()
{
    return Util::Singleton<Util::ImageCurlDownloader>::getInstance();
}

unsigned ImageDelivery::begin(const Step& reset)
{
    std::lock_guard<std::mutex> lock(mutex);
    ++currentSearch;
    pendingImagePaths.clear();
    reset();
    uiReady = false;
    return currentSearch;
}

unsigned ImageDelivery::guarded(const Step& step)
{
    std::lock_guard<std::mutex> lock(mutex);
    step();
    return currentSearch;
}

bool ImageDelivery::ifCurrent(unsigned search, const Step& step)
{
    std::lock_guard<std::mutex> lock(mutex);
    if (search != currentSearch)
        return false;
    step();
    return true;
}

void ImageDelivery::push(unsigned search, ImagePath image)
{
    ifCurrent(search, [&] {
        if (!uiReady) {
            pendingImagePaths.push_back(std::make_unique<ImagePath>(std::move(image)));
            return;
        }
        // The UI app may have become ready a moment ago: what waited goes first.
        sendPending();
        sender(image);
    });
}

void ImageDelivery::setUIReady()
{
    std::lock_guard<std::mutex> lock(mutex);
    uiReady = true;
}

// Since it became ready a download thread may have sent what waits: there is then nothing left to do here.
bool ImageDelivery::sendAll()
{
    std::lock_guard<std::mutex> lock(mutex);
    if (!uiReady)
        return false;
    sendPending();
    return true;
}

void ImageDelivery::sendPending()
{
    while (!pendingImagePaths.empty()) {
        std::unique_ptr<ImagePath> image = std::move(pendingImagePaths.front());
        pendingImagePaths.pop_front();
        sender(*image);
    }
}

void ImageDelivery::download(Step fetch)
{
    threads.start(std::move(fetch));
}

}  // namespace Carvoy
