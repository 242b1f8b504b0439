// Product search at the retailer, and the delivery of its result to the UI app.
#pragma once

#include <array>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <json-glib/json-glib.h>

#include "ImageCurlDownloader.h"
#include "ImageDelivery.h"
#include "RetailerAnswer.h"

namespace Carvoy {

/** What a request asks for. All requests have the same body so far. */
enum _requestCommand { REQUEST_SEARCH = 0 };

/**
 * Answers a product search at the retailer, keeps the result, and hands it to the UI app: the product lists
 * when it is told to, and the path of each picture once the UI app has confirmed the lists. A product has up
 * to two pictures: its own, and the icon of its discount badge.
 *
 * One object lives in the process (Util::Singleton). All operations are for the main loop, but for those that
 * are marked: each search runs a thread of its own that downloads the pictures, one after the other. The
 * thread of an earlier search goes on with the products of the current one where it finds some, so that two
 * threads may share them; each picture is fetched by one. The destructor waits for the pictures that are on
 * their way, each of which has its own time limit. It is for the time behind the main loop's end: the UI
 * app's reply to the lists would find the object gone.
 *
 * Failures are logged. None leaves an operation as an exception, but for memory that runs out and a mutex
 * that cannot be locked.
 */
class SearchEmartControl {
  public:
    SearchEmartControl();
    virtual ~SearchEmartControl();
    SearchEmartControl(const SearchEmartControl&) = delete;
    SearchEmartControl& operator=(const SearchEmartControl&) = delete;

    /**
     * Runs one whole search, which blocks for up to 60 seconds, and writes the status record and the vconf
     * flag, whatever came of it. Returns 0 if there are products, 1 for an answer that cannot be used, 2 if
     * the user is not logged in (there is then no request) or the retailer says 403, 3 for any other status
     * and for no answer.
     */
    int processEmartSearch(std::string term);

    /** Sends the lists of the last search to the UI app, also if there are none. 0, or 1 if nothing was sent.
     */
    int sendEmartResultToUI();

  protected:
    /** Drops the result, the waiting and the downloaded pictures of the last search. */
    void init();

    /** Whether the login file's first line holds "login". */
    bool checkEmartLogin();

    // New objects, which the caller owns.
    JsonObject* getRequestParamSearch();
    JsonObject* getRequestParamObjang();

    // A request's body, which the caller releases with free(), and its length in bytes. They take `params`.
    std::pair<char*, gsize> getRequestBodyJson(_requestCommand command, JsonObject* params);
    std::pair<char*, gsize> getRequestBody(_requestCommand command, JsonObject* params);

    /** Sends the request. Returns the answer's body, or an empty text if its status is not 200. */
    std::string searchProduct();

    /** Fills the lists from an answer's body. Returns 0, or 1 if the answer cannot be used. */
    int parseResult(std::string body);

    void sendEmartAllImagePath();
    void downloadImages();

    // For the main loop and the download threads. What belongs to an earlier search than the current one is
    // dropped, and each download id is fetched once in a search, whichever thread asks for it first.
    void startDownloadImages(Util::ImageCurlDownloader* downloader, int index, Util::DownloadImageType type);
    void pushEmartImagePath(int index, std::string path, Util::DownloadImageType type, unsigned search);
    void deinitDownload(int id, unsigned search);

    /** With the mutex held. The result means nothing. */
    int sendImagePath(int index, std::string path, Util::DownloadImageType type);

    int httpCode = 0;  // of the last search; 401 before the request, 0 without an answer

    // Written by the main loop only, and with the mutex held, because the download threads read them, too.
    int productCount = 0;  // products of the last search, 6 at most, and the length of each of the lists
    std::vector<std::string> productNames;
    std::vector<std::string> imageUrls;
    std::vector<std::string> prices;
    std::vector<std::string> pricesBeforeDiscount;
    std::vector<std::string> productIds;
    std::vector<std::string> discountTypes;
    std::vector<std::string> discountIconUrls;
    std::vector<std::string> discountTexts;

    std::string searchTerm;
    int requestCount = 0;  // products to ask for

  private:
    std::array<std::vector<std::string>*, 8> lists();
    void clearLists();
    void fillLists(std::vector<RetailerProduct> products);
    bool hasProduct(int index);
    unsigned findImage(int index, Util::DownloadImageType type, std::string& url);

    // Guarded by the delivery, as are the image message and the image downloader's files and records. The
    // paths that wait for the UI app, whether it is ready, and the mutex are the delivery's own.
    std::map<int, int> downloadIndex;                     // download id to product position
    std::map<int, Util::DownloadImageType> downloadType;  // download id to what it shows
    std::set<int> startedDownloads;  // ids that some thread has taken on in the current search

    ImageDelivery delivery;  // the last member: its threads use all the others
};

}  // namespace Carvoy
