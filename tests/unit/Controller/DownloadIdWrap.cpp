// Linked in place of ImageCurlDownloader::initDownload() with --wrap, so that Calls sees it as
// "initDownload": no address and no product makes it give an id that cannot be used.
#include "CallNotes.h"
#include "ImageCurlDownloader.h"

#define INIT_DOWNLOAD "_ZN4Util19ImageCurlDownloader12initDownloadEii"

int realInitDownload(Util::ImageCurlDownloader* self, int first, int second) __asm__("__real_" INIT_DOWNLOAD);
int wrappedInitDownload(Util::ImageCurlDownloader* self, int first,
                        int second) __asm__("__wrap_" INIT_DOWNLOAD);

int wrappedInitDownload(Util::ImageCurlDownloader* self, int first, int second)
{
    return TestSupport::CallNotes::observe("initDownload", {std::to_string(first), std::to_string(second)},
                                           [&] { return realInitDownload(self, first, second); });
}
