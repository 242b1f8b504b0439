// Product search at the merchant bridge, and the delivery of its result to the UI app.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include <json-glib/json-glib.h>

#include "ImageDelivery.h"

namespace Util {
class Curl;
}

namespace Carvoy {

/**
 * Answers a product search, keeps the result, and hands it to the UI app: the product lists when the UI app
 * asks for them, and each picture's local path once the UI app has confirmed the lists.
 *
 * One object lives in the process (Util::Singleton). All operations are for the main loop, but for those
 * that are marked: each search runs a thread of its own that downloads the pictures, one after the other. A
 * new search makes the thread of the one before it stop at its next picture, and nothing that it still brings
 * gets through. The destructor waits for the pictures that are on their way, each of which has its own time
 * limit.
 *
 * Failures are logged. None leaves an operation as an exception, but for memory that runs out and a mutex
 * that cannot be locked.
 */
class SearchControl {
  public:
    SearchControl();
    virtual ~SearchControl();
    SearchControl(const SearchControl&) = delete;
    SearchControl& operator=(const SearchControl&) = delete;

    /**
     * Runs one whole search, which blocks for up to 60 seconds, and writes the status record and the vconf
     * flag, whatever came of it. Returns 0 if there are products, 1 for an answer that cannot be used, 2 if
     * the user is not logged in (also where the request could not be made at all), 3 for any other status and
     * for no answer.
     */
    int processSearch(std::string merchant, std::string searchTerm);

    /** Sends the lists of the last search to the UI app, also if there are none. 0, or 1 if nothing was sent.
     */
    int sendResultToUI();

    /** Drops the result, the waiting and the downloaded pictures of the last search. The result means
     * nothing. */
    int init();

    /** Reads the session token into tokens[0] and the access token into tokens[1]; a missing file changes
     * none. */
    void checkMCLogin(std::string* tokens);

    /** Sends the request. Returns the answer's body, or an empty text if its status is not 200. */
    std::string searchProduct();

    /** Fills the lists from an answer's body. Returns 0, or 1 if the answer cannot be used. */
    int parseResult(std::string text);

    const std::string& getMerchant() const { return mMerchant; }
    const std::vector<std::string>& getVariantRefs() const { return mVariantRefs; }

  private:
    void onUIReady();
    void sendAllImagePath();
    void downloadImages();
    std::string searchUrl(Util::Curl& curl);

    // For the main loop and the download threads. What belongs to an earlier search than the current one is
    // dropped.
    void pushImagePath(int index, std::string path, unsigned search);
    std::string recordDownload(int id, int index, unsigned search);
    bool isCurrent(unsigned search);
    void deinitDownload(int id, unsigned search);

    /** With the mutex held. The result means nothing. */
    int sendImagePath(int index, std::string path);

    std::array<std::vector<std::string>*, 7> lists();
    void fillLists(JsonArray* products);
    void fillSizeOrWeight(size_t index, JsonObject* product);
    void fillProduct(size_t index, JsonObject* product);
    void fillVariant(size_t index, JsonObject* variant);

    int mStatus = 0;      // HTTP status of the last search; 401 before the request, 0 without an answer
    int mTotalCount = 0;  // products of the last search, 6 at most, and the length of each of the lists
    std::vector<std::string> mNames;
    std::vector<std::string> mImageUrls;
    std::vector<std::string> mSizeOrWeights;
    std::vector<std::string> mDiscountPercents;
    std::vector<std::string> mPricesBeforeDiscount;
    std::vector<std::string> mPrices;
    std::vector<std::string> mVariantRefs;
    std::string mMerchant;
    std::string mSearchTerm;
    std::string mSearchBy;
    std::string mPageSize;

    unsigned mSearch = 0;  // number of the current search

    // Download id to product index. Guarded by mImages, as are the image message and the image downloader's
    // files and records.
    std::map<int, int> mDownloadIds;

    ImageDelivery mImages;  // the last member: its threads use all the others
};

}  // namespace Carvoy
