// The search: request, parsing, delivery, pictures. What the download threads share with the main loop is
// touched through the delivery only, and only for the search that is the current one.
#include "SearchControl.h"

#include <fstream>
#include <system_error>

#include <vconf.h>

#include "AppControl.h"
#include "Constants.h"
#include "Curl.h"
#include "DBControl.h"
#include "JsonReader.h"
#include "Log.h"

namespace Carvoy {

namespace {

constexpr int PAGE_SIZE = 6;  // products asked for, and products kept
constexpr int HTTP_OK = 200;
constexpr int HTTP_UNAUTHORIZED = 401;

// What processSearch() returns.
enum SearchResult { FOUND = 0, BAD_ANSWER = 1, NOT_LOGGED_IN = 2, FAILED = 3 };

Util::AppControlData resultMessage;
Util::AppControlData imageMessage;

}  // namespace

SearchControl::SearchControl()
    : mImages([this](const ImagePath& image) { sendImagePath(image.index, image.path); })
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

// The pictures. The download thread of a search fetches one after the other and pushes the path of each. A
// path that comes before the UI app shows the products waits with those before it; once the UI app is ready
// each is sent at once. The sender has the mutex, so that they leave in the order in which they were fetched.
// One that fails is left out: the UI app shows its product without, and the others follow.

// Between the two steps a download thread may find the UI app ready and send what waits: there is then
// nothing left to do here.
void SearchControl::onUIReady()
{
    mImages.setUIReady();
    sendAllImagePath();
}

void SearchControl::pushImagePath(int index, std::string path, unsigned search)
{
    mImages.push(search, {index, std::move(path), Util::DownloadImageType::PRODUCT_IMAGE});
}

int SearchControl::sendImagePath(int index, std::string path)
{
    imageMessage.clearExtraData();
    imageMessage.addExtraData(KEY_PRODUCT_IMAGE_NUM, std::to_string(index));
    imageMessage.addExtraData(KEY_PRODUCT_IMAGE_PATH, path);
    Util::AppControl::performAppControl(imageMessage);
    return 0;
}

void SearchControl::sendAllImagePath()
{
    if (!mImages.sendAll())
        LOG_E("UI is not ready to show image");
}

std::string SearchControl::recordDownload(int id, int index, unsigned search)
{
    std::string path;
    mImages.ifCurrent(search, [&] {
        mDownloadIds[id] = index;
        path = mImages.downloader()->downloaded[id];
    });
    return path;
}

bool SearchControl::isCurrent(unsigned search)
{
    return mImages.ifCurrent(search, [] {});
}

void SearchControl::deinitDownload(int id, unsigned search)
{
    mImages.ifCurrent(search, [&] {
        mImages.downloader()->deinitDownload(id);
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

    int result = 0;
    mSearch = mImages.begin([&] {
        // Also what a thread has recorded and not yet reported. Download ids count from 1.
        for (int id = 1; id <= PAGE_SIZE; ++id)
            mImages.downloader()->deinitDownload(id);
        mDownloadIds.clear();
        result = mImages.downloader()->clearAllDownloadedImages();
    });
    return result;
}

std::array<std::vector<std::string>*, 7> SearchControl::lists()
{
    return {&mNames,  &mImageUrls,  &mSizeOrWeights, &mDiscountPercents, &mPricesBeforeDiscount,
            &mPrices, &mVariantRefs};
}

// What goes to the merchant bridge, here for the term "oat milk":
//
//     GET .../api/product/search?merchant=freshmart&query=oat%20milk&searchBy=full&pageSize=6
//     X-Auth-Access-Token:...
//     X-Auth-Session-Token:...
//
// There is no blank behind the colons. Both tokens come from the partner app's file, anew for each search:
// the user may have logged in since the last one, or out. Without both of them there is no request, and the
// search counts as a rejected login.

std::string SearchControl::searchUrl(Util::Curl& curl)
{
    std::string url = MERCHANT_BRIDGE_SEARCH_URL;
    url += "?merchant=" + curl.encode(mMerchant);
    url += "&query=" + curl.encode(mSearchTerm);
    url += "&searchBy=" + curl.encode(mSearchBy);
    return url + "&pageSize=" + curl.encode(mPageSize);
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
    curl_easy_setopt(curl.mHandle, CURLOPT_URL, searchUrl(curl).c_str());
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

    // The session token may hold commas, the access token holds none. What stands below the first line has no
    // meaning.
    //
    // Without a comma the whole line is both tokens: the position behind "not found" is the line's start.
    size_t comma = line.rfind(',');
    tokens[0] = line.substr(0, comma);
    tokens[1] = line.substr(comma + 1);
}

// What is read of an answer; all else in it is ignored, and all of it may be missing or of another type:
//
//     {"products": [{"name": "Whole Milk",
//                    "imageUrl": "https://...",
//                    "productOptionGroups": [{"productOptions": [{"label": "1 gal"}]}],
//                    "mbVariants": [{"amountMinorUnits": 750,
//                                    "formerPriceAmountMinorUnits": 1000,
//                                    "productVariantRef": "..."}]}]}
//
// Of each inner array only the first element counts: a product is shown with one size and one price. This one
// is shown as "Whole Milk", "1 gal", "Save 25%", "$10.0" and "$7.50". Prices are in minor units, so 750 is
// $7.50; a product that is not reduced has no former one, or one that is not above its price.

namespace {

/**
 * `minorUnits` (at least 1) as the UI app shows it. The cents are not padded, and the sign is that of the
 * dollar, whatever the merchant:
 *
 *     1250  $12.50
 *     1205  $12.5
 *      300  $3.0
 *       99  $0.99
 */
std::string priceText(int minorUnits)
{
    return "$" + std::to_string(minorUnits / 100) + "." + std::to_string(minorUnits % 100);
}

/**
 * By how many per cent `amount` is below `former`, cut to a whole number:
 *
 *     1000  750  Save 25%
 *      999  500  Save 49%
 *
 * The product of a difference and 100 needs more than 32 bits.
 */
std::string discountText(int amount, int former)
{
    int64_t percent = (static_cast<int64_t>(former) - amount) * 100 / former;
    return "Save " + std::to_string(percent) + "%";
}

/** Finds the array of products in an answer. Returns null, or what is wrong with the answer. */
const char* findProducts(JsonObject* answer, JsonArray*& products)
{
    if (!json_object_has_member(answer, "products"))
        return "no member: products";
    products = JsonReader::arrayMember(answer, "products");
    if (!products)
        return "json_object_get_array_member() failed";
    return json_array_get_length(products) == 0 ? "empty json array" : nullptr;
}

/** How many of them are kept: a merchant may answer with more products than it was asked for. */
int keptOf(JsonArray* products)
{
    unsigned length = json_array_get_length(products);
    return length > PAGE_SIZE ? PAGE_SIZE : static_cast<int>(length);
}

}  // namespace

// What the variant is bought by, and what it costs. The reference is what the partner app knows it by.
void SearchControl::fillVariant(size_t index, JsonObject* variant)
{
    // A missing price counts as -1, and is no price, like 0.
    int amount = JsonReader::intMember(variant, "amountMinorUnits").value_or(-1);
    int former = JsonReader::intMember(variant, "formerPriceAmountMinorUnits").value_or(-1);
    JsonReader::assignString(mVariantRefs[index], variant, "productVariantRef");

    if (former >= 1)
        mPricesBeforeDiscount[index] = priceText(former);
    // Without a price there is nothing that the former one could be compared with.
    if (amount < 1)
        return;
    mPrices[index] = priceText(amount);
    if (amount < former)
        mDiscountPercents[index] = discountText(amount, former);
}

// Any link of the chain that leads to the label may be missing.
void SearchControl::fillSizeOrWeight(size_t index, JsonObject* product)
{
    JsonObject* group = JsonReader::firstObjectOf(product, "productOptionGroups");
    JsonObject* option = group ? JsonReader::firstObjectOf(group, "productOptions") : nullptr;
    if (option)
        JsonReader::assignString(mSizeOrWeights[index], option, "label");
}

void SearchControl::fillProduct(size_t index, JsonObject* product)
{
    JsonReader::assignString(mNames[index], product, "name");
    JsonReader::assignString(mImageUrls[index], product, "imageUrl");

    fillSizeOrWeight(index, product);
    if (JsonObject* variant = JsonReader::firstObjectOf(product, "mbVariants"))
        fillVariant(index, variant);
}

// Every list gets one slot for each product that is kept, filled or not: the UI app reads them side by side.
// A product that is not an object keeps its place, with nothing in it.
void SearchControl::fillLists(JsonArray* products)
{
    mTotalCount = keptOf(products);
    for (std::vector<std::string>* list : lists())
        list->assign(mTotalCount, "");

    for (int i = 0; i < mTotalCount; ++i) {
        if (JsonObject* product = JsonReader::objectElement(products, i))
            fillProduct(i, product);
    }
}

// Fails only where there is no list of products: what is wrong inside a product leaves its slots empty. After
// a failure the lists and the count stay as init() has left them.
int SearchControl::parseResult(std::string text)
{
    // Owns all that is read of the answer: the texts are copied into the lists before it goes.
    JsonParserPtr parser;
    JsonObject* answer = nullptr;
    JsonArray* products = nullptr;
    const char* fault = JsonReader::loadObject(parser, text, answer);
    if (!fault)
        fault = findProducts(answer, products);
    if (fault)
        LOG_E("%s", fault);
    else
        fillLists(products);
    return fault ? BAD_ANSWER : FOUND;
}

void SearchControl::downloadImages()
{
    if (mTotalCount < 1)
        return;

    // The thread works on its own copy of the URLs: the next search fills the list anew.
    auto download = [this, search = mSearch, urls = mImageUrls] {
        bool isWanted = true;
        auto gate = [&](const ImageDelivery::Step& step) {
            return isWanted = mImages.ifCurrent(search, step);
        };
        for (int i = 0; i < static_cast<int>(urls.size()) && isCurrent(search); ++i) {
            int id = i + 1;
            if (id < 1) {
                LOG_E("download_id is not used: %d", id);
                continue;
            }
            bool isRecorded = mImages.downloader()->startDownload(id, urls[i].c_str(), gate);
            if (!isRecorded && isWanted) {
                LOG_E("Failed to startDownload for index %d", i);
                continue;
            }
            pushImagePath(i, recordDownload(id, i, search), search);
            deinitDownload(id, search);
        }
    };
    try {
        mImages.download(download);
    } catch (const std::system_error& error) {
        LOG_E("Failed to start the download thread: %s", error.what());
    }
}

}  // namespace Carvoy
