// The search: request, parsing, delivery, pictures. What the download threads share with the main loop is
// touched under the mutex only, and only for the search that is the current one.
#include "SearchControl.h"

#include <fstream>
#include <system_error>

#include <vconf.h>

#include "AppControl.h"
#include "Constants.h"
#include "Curl.h"
#include "DBControl.h"
#include "ImageCurlDownloader.h"
#include "JsonReader.h"
#include "Log.h"
#include "Singleton.h"

namespace Carvoy {

namespace {

constexpr int PAGE_SIZE = 6;  // products asked for, and products kept
constexpr int HTTP_OK = 200;
constexpr int HTTP_UNAUTHORIZED = 401;

enum SearchResult { FOUND = 0, BAD_ANSWER = 1, NOT_LOGGED_IN = 2, FAILED = 3 };

Util::AppControlData resultMessage;
Util::AppControlData imageMessage;

}  // namespace

SearchControl::SearchControl()
{
    init();

    // Called by the platform on the main loop; a reply that comes after this object is gone is not delivered.
    auto onReply = [](app_control_h, app_control_h, app_control_result_e result, void* self) {
        if (result != APP_CONTROL_RESULT_SUCCEEDED) {
            LOG_E("Invalid app control response");
            return;
        }
        static_cast<SearchControl*>(self)->onUIReady();
    };
    resultMessage.setPackageName(UI_APP_ID).setOperation(OPERATION_RESULT);
    resultMessage.setReplyCallback(onReply, this);
    imageMessage.setPackageName(UI_APP_ID).setOperation(OPERATION_PRODUCT_IMAGE);
}

SearchControl::~SearchControl()
{
    // From here on no download thread gets anything through; the last member waits until they have ended.
    init();
}

int SearchControl::processSearch(std::string merchant, std::string searchTerm)
{
    init();
    mMerchant = std::move(merchant);
    mSearchTerm = std::move(searchTerm);
    mSearchBy = "full";
    mPageSize = std::to_string(PAGE_SIZE);

    int result = FAILED;
    std::string body = searchProduct();
    if (mStatus == HTTP_OK) {
        result = parseResult(std::move(body));
        if (result == FOUND)
            downloadImages();
    } else if (mStatus == HTTP_UNAUTHORIZED) {
        result = NOT_LOGGED_IN;
    }

    // A search that never reached the network counts as a rejected login: the user is to log in either way.
    int isLoggedIn = mStatus == HTTP_UNAUTHORIZED ? 0 : 1;
    int isLinked = mStatus == HTTP_OK ? 1 : 0;
    if (DBControl::updateStatus(isLoggedIn, isLinked, mTotalCount, -1, -1) != 0)
        LOG_E("updateStatus() failed");

    if (vconf_set_int("db/nuvex/e-commerce/response", 1) != VCONF_OK)
        LOG_E("vconf_set_int() failed");
    return result;
}

int SearchControl::sendResultToUI()
{
    LOG_D("");
    if (mTotalCount < 0)
        return 1;

    resultMessage.clearExtraData();
    resultMessage.clearExtraVectorData();
    resultMessage.addExtraData(KEY_MERCHANT, mMerchant);
    resultMessage.addExtraData(KEY_SEARCH_TERM, mSearchTerm);
    resultMessage.addExtraData(KEY_SEARCH_BY, mSearchBy);
    resultMessage.addExtraData(KEY_TOTAL_NUM_OF_PRODUCTS, std::to_string(mTotalCount));
    resultMessage.addExtraVectorData(KEY_PRODUCT_NAMES, mNames);
    resultMessage.addExtraVectorData(KEY_PRODUCT_SIZE_OR_WEIGHTS, mSizeOrWeights);
    resultMessage.addExtraVectorData(KEY_PRODUCT_DISCOUNT_PERCENTS, mDiscountPercents);
    resultMessage.addExtraVectorData(KEY_PRODUCT_PRICES_BEFORE_DISCOUNT, mPricesBeforeDiscount);
    resultMessage.addExtraVectorData(KEY_PRODUCT_PRICES, mPrices);
    resultMessage.addExtraVectorData(KEY_PRODUCT_VARIANT_REFS, mVariantRefs);
    Util::AppControl::performAppControl(resultMessage);
    return 0;
}

// A picture that is ready before the UI app shows its product waits. When the UI app is ready it is sent with
// the mutex held, so that pictures leave in the order in which they were fetched.
void SearchControl::pushImagePath(int index, std::string path, unsigned search)
{
    ifCurrent(search, [&] {
        if (!mIsUIReady) {
            mImagePaths.push_back(std::make_unique<std::pair<int, std::string>>(index, std::move(path)));
            return;
        }
        // The UI app may have become ready a moment ago: what waited goes first.
        sendQueuedImagePaths();
        sendImagePath(index, std::move(path));
    });
}

// Between the two steps a download thread may find the UI app ready and send what waits: there is then
// nothing left to do here.
void SearchControl::onUIReady()
{
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mIsUIReady = true;
    }
    sendAllImagePath();
}

void SearchControl::sendAllImagePath()
{
    std::lock_guard<std::mutex> lock(mMutex);
    if (!mIsUIReady) {
        LOG_E("UI is not ready to show image");
        return;
    }
    sendQueuedImagePaths();
}

void SearchControl::sendQueuedImagePaths()
{
    while (!mImagePaths.empty()) {
        std::unique_ptr<std::pair<int, std::string>> image = std::move(mImagePaths.front());
        mImagePaths.pop_front();
        sendImagePath(image->first, image->second);
    }
}

int SearchControl::sendImagePath(int index, std::string path)
{
    imageMessage.clearExtraData();
    imageMessage.addExtraData(KEY_PRODUCT_IMAGE_NUM, std::to_string(index));
    imageMessage.addExtraData(KEY_PRODUCT_IMAGE_PATH, path);
    Util::AppControl::performAppControl(imageMessage);
    return 0;
}

bool SearchControl::ifCurrent(unsigned search, const std::function<void()>& step)
{
    std::lock_guard<std::mutex> lock(mMutex);
    if (search != mSearch)
        return false;
    step();
    return true;
}

bool SearchControl::isCurrent(unsigned search)
{
    return ifCurrent(search, [] {});
}

void SearchControl::deinitDownload(int id, unsigned search)
{
    ifCurrent(search, [&] {
        Util::Singleton<Util::ImageCurlDownloader>::getInstance()->deinitDownload(id);
        mDownloadIds.erase(id);
    });
}

int SearchControl::init()
{
    mStatus = HTTP_UNAUTHORIZED;
    mTotalCount = 0;
    for (std::vector<std::string>* list : lists())
        list->clear();
    mMerchant.clear();
    mSearchTerm.clear();
    mSearchBy.clear();

    std::lock_guard<std::mutex> lock(mMutex);
    ++mSearch;
    mImagePaths.clear();
    auto* downloader = Util::Singleton<Util::ImageCurlDownloader>::getInstance();
    for (const auto& [id, index] : mDownloadIds)
        downloader->deinitDownload(id);
    mDownloadIds.clear();
    downloader->downloaded.clear();  // also what a thread has recorded and not yet reported
    mIsUIReady = false;
    return downloader->clearAllDownloadedImages();
}

std::string SearchControl::searchProduct()
try {
    if (mMerchant.empty() || mSearchTerm.empty())
        throw std::string("Invalid extra data");

    std::string tokens[2];
    checkMCLogin(tokens);
    const auto& [sessionToken, accessToken] = tokens;
    if (sessionToken.empty() || accessToken.empty())
        throw std::string("Invalid access token");

    Util::Curl curl;
    curl.appendHeader(DBControl::CarvoyDBKeyXAuthAccessToken + ":" + accessToken);
    curl.appendHeader(DBControl::CarvoyDBKeyXAuthSessionToken + ":" + sessionToken);

    std::string url = MERCHANT_BRIDGE_SEARCH_URL;
    url += "?merchant=" + curl.encode(mMerchant) + "&query=" + curl.encode(mSearchTerm);
    url += "&searchBy=" + curl.encode(mSearchBy) + "&pageSize=" + curl.encode(mPageSize);
    curl_easy_setopt(curl.mHandle, CURLOPT_URL, url.c_str());
    mStatus = static_cast<int>(curl.perform());

    if (mStatus == HTTP_OK)
        return curl.getBody();
    if (mStatus == HTTP_UNAUTHORIZED)
        throw std::string("Not logged in");
    throw "curl perform failed: " + std::to_string(mStatus);
} catch (const std::string& text) {
    LOG_E("%s", text.c_str());
    return "";
}

void SearchControl::checkMCLogin(std::string* tokens)
{
    std::ifstream file(PARTNER_TOKEN_FILE);
    if (!file.is_open()) {
        LOG_D("Not Open MC Login File!");
        return;
    }
    std::string line;
    std::getline(file, line);

    // Without a comma the whole line is both tokens: the position behind "not found" is the line's start.
    size_t comma = line.rfind(',');
    tokens[0] = line.substr(0, comma);
    tokens[1] = line.substr(comma + 1);
}

namespace {

// What is read of an answer; all else in it is ignored, and all of it may be missing or of another type:
//
//     {"products": [{"name": "Whole Milk", "imageUrl": "https://...",
//                    "productOptionGroups": [{"productOptions": [{"label": "1 gal"}]}],
//                    "mbVariants": [{"amountMinorUnits": 750, "formerPriceAmountMinorUnits": 1000,
//                                    "productVariantRef": "..."}]}]}
//
// Of each inner array only the first element counts: a product is shown with one size and one price.

/**
 * `minorUnits` (at least 1) as the UI app shows it: 1250 is $12.50, 99 is $0.99. The cents are not padded, so
 * 1205 is $12.5 and 300 is $3.0. The sign is that of the dollar, whatever the merchant.
 */
std::string priceText(int minorUnits)
{
    return "$" + std::to_string(minorUnits / 100) + "." + std::to_string(minorUnits % 100);
}

/**
 * By how many per cent `amount` is below `former`, cut to a whole number: 500 instead of 999 saves 49%. The
 * product of a difference and 100 needs more than 32 bits.
 */
std::string discountText(int amount, int former)
{
    int64_t percent = (static_cast<int64_t>(former) - amount) * 100 / former;
    return "Save " + std::to_string(percent) + "%";
}

/** Leaves the slot as it is, which is empty, where the answer has no such text. */
void assignString(std::string& slot, JsonObject* object, const char* name)
{
    if (const char* text = JsonReader::stringMember(object, name))
        slot = text;
}

/** The array of products in a loaded answer. Throws what is wrong with the answer. */
JsonArray* productsOf(JsonParser* parser)
{
    JsonNode* root = json_parser_get_root(parser);
    if (!root)
        throw "json_parser_get_root() failed";
    if (json_node_get_node_type(root) != JSON_NODE_OBJECT)
        throw "Invalid json type";
    JsonObject* answer = json_node_get_object(root);
    if (!answer)
        throw "json_node_get_object() failed";
    if (!json_object_has_member(answer, "products"))
        throw "no member: products";
    JsonArray* products = JsonReader::arrayMember(answer, "products");
    if (!products)
        throw "json_object_get_array_member() failed";
    return products;
}

}  // namespace

std::array<std::vector<std::string>*, 7> SearchControl::lists()
{
    return {&mNames,  &mImageUrls,  &mSizeOrWeights, &mDiscountPercents, &mPricesBeforeDiscount,
            &mPrices, &mVariantRefs};
}

void SearchControl::fillVariant(size_t index, JsonObject* variant)
{
    // A missing price counts as -1, and is no price, like 0.
    int amount = JsonReader::intMember(variant, "amountMinorUnits").value_or(-1);
    int former = JsonReader::intMember(variant, "formerPriceAmountMinorUnits").value_or(-1);
    assignString(mVariantRefs[index], variant, "productVariantRef");

    if (former >= 1)
        mPricesBeforeDiscount[index] = priceText(former);
    // Without a price there is nothing that the former one could be compared with.
    if (amount < 1)
        return;
    mPrices[index] = priceText(amount);
    if (amount < former)
        mDiscountPercents[index] = discountText(amount, former);
}

void SearchControl::fillProduct(size_t index, JsonObject* product)
{
    assignString(mNames[index], product, "name");
    assignString(mImageUrls[index], product, "imageUrl");

    if (JsonObject* group = JsonReader::firstObjectOf(product, "productOptionGroups")) {
        if (JsonObject* option = JsonReader::firstObjectOf(group, "productOptions"))
            assignString(mSizeOrWeights[index], option, "label");
    }
    if (JsonObject* variant = JsonReader::firstObjectOf(product, "mbVariants"))
        fillVariant(index, variant);
}

// Every list gets one slot for each product that is kept, filled or not: the UI app reads them side by side.
// A product that is not an object keeps its place, with nothing in it.
void SearchControl::fillLists(JsonArray* products)
{
    for (std::vector<std::string>* list : lists())
        list->resize(mTotalCount);

    for (int i = 0; i < mTotalCount; ++i) {
        if (JsonObject* product = JsonReader::objectElement(products, i))
            fillProduct(i, product);
    }
}

// Fails only where there is no list of products: what is wrong inside a product leaves its slots empty. The
// count stays for the status record, also after a failure.
int SearchControl::parseResult(std::string text)
{
    // Owns all that is read of the answer: the texts are copied into the lists before it goes.
    JsonParserPtr parser;
    try {
        parser.reset(json_parser_new());
        if (!parser)
            throw "Couldn't create json parser";
        if (!JsonReader::load(parser.get(), text))
            throw "json_parser_load_from_data() failed";
        JsonArray* products = productsOf(parser.get());

        // A merchant may answer with more products than it was asked for.
        unsigned length = json_array_get_length(products);
        mTotalCount = length > PAGE_SIZE ? PAGE_SIZE : static_cast<int>(length);
        if (mTotalCount < 1)
            throw "empty json array";

        fillLists(products);
    } catch (const char* message) {
        LOG_E("%s", message);
        return BAD_ANSWER;
    }
    return FOUND;
}

void SearchControl::downloadImages()
{
    if (mTotalCount < 1)
        return;

    // The thread works on its own copy of the URLs: the lists are the main loop's, and the next search fills
    // them anew.
    auto download = [this, search = mSearch, urls = mImageUrls] {
        auto* downloader = Util::Singleton<Util::ImageCurlDownloader>::getInstance();
        bool isWanted = true;
        auto gate = [&](const std::function<void()>& step) { return isWanted = ifCurrent(search, step); };
        for (int i = 0; i < static_cast<int>(urls.size()) && isCurrent(search); ++i) {
            int id = i + 1;
            if (id < 1) {
                LOG_E("download_id is not used: %d", id);
                continue;
            }
            bool isRecorded = downloader->startDownload(id, urls[i].c_str(), gate);
            if (!isRecorded && isWanted) {
                LOG_E("Failed to startDownload for index %d", i);
                continue;
            }
            std::string path;
            ifCurrent(search, [&] {
                mDownloadIds[id] = i;
                path = downloader->downloaded[id];
            });
            pushImagePath(i, path, search);
            deinitDownload(id, search);
        }
    };
    try {
        mDownloads.start(download);
    } catch (const std::system_error& error) {
        LOG_E("Failed to start the download thread: %s", error.what());
    }
}

}  // namespace Carvoy
