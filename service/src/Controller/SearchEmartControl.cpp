// The retailer's search: login, request, parsing, delivery, pictures.
#include "SearchEmartControl.h"

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <system_error>

#include <vconf.h>

#include "AppControl.h"
#include "Curl.h"
#include "DBControl.h"
#include "Log.h"
#include "RetailerAnswer.h"
#include "RetailerConstants.h"
#include "RetailerTexts.h"

namespace Carvoy {

namespace {

constexpr int MAX_PRODUCTS = 6;  // products asked for, and products kept
constexpr int HTTP_OK = 200;
constexpr int HTTP_UNAUTHORIZED = 401;
constexpr int HTTP_FORBIDDEN = 403;

constexpr const char* SEARCH_URL = "http://" CARVOY_RETAILER_API_HOST "/api/refrigerator/search/datas.ssg";

enum SearchResult { FOUND = 0, BAD_ANSWER = 1, NOT_LOGGED_IN = 2, FAILED = 3 };

Util::AppControlData resultMessage;
Util::AppControlData imageMessage;

using Util::DownloadImageType;

}  // namespace

SearchEmartControl::SearchEmartControl()
    : delivery([this](const ImagePath& image) { sendImagePath(image.index, image.path, image.type); })
{
    init();

    // Called by the platform on the main loop; a reply that comes after this object is gone is not delivered.
    auto onReply = [](app_control_h, app_control_h, app_control_result_e result, void* self) {
        if (result != APP_CONTROL_RESULT_SUCCEEDED) {
            LOG_E("Invalid app control response");
            return;
        }
        static_cast<SearchEmartControl*>(self)->delivery.setUIReady();
        static_cast<SearchEmartControl*>(self)->sendEmartAllImagePath();
    };
    resultMessage.setPackageName(UI_APP_ID).setOperation(OPERATION_RESULT);
    resultMessage.setReplyCallback(onReply, this);
    imageMessage.setPackageName(UI_APP_ID).setOperation(OPERATION_EMART_PRODUCT_IMAGE);
}

SearchEmartControl::~SearchEmartControl()
{
    // From here on the download threads find no product; the last member waits until they have ended.
    init();
}

void SearchEmartControl::init()
{
    httpCode = HTTP_UNAUTHORIZED;
    searchTerm.clear();
    delivery.begin([this] {
        clearLists();
        // Also what a thread has recorded and not yet reported.
        for (int id : startedDownloads)
            delivery.downloader()->deinitDownload(id);
        startedDownloads.clear();
        downloadIndex.clear();
        downloadType.clear();
        delivery.downloader()->clearAllDownloadedImages();
    });
}

int SearchEmartControl::processEmartSearch(std::string term)
{
    init();
    if (DBControl::updateStatus(0, 0, productCount, -1, -1) != 0)
        LOG_E("updateStatus () init failed");

    int result = NOT_LOGGED_IN;
    bool isLinked = false;
    const bool loggedIn = checkEmartLogin();
    if (loggedIn) {
        searchTerm = std::move(term);
        requestCount = MAX_PRODUCTS;
        std::string body = searchProduct();
        isLinked = httpCode == HTTP_OK;
        if (isLinked) {
            result = parseResult(std::move(body));
            if (result == FOUND)
                downloadImages();
        } else if (httpCode != HTTP_FORBIDDEN) {
            result = FAILED;
        }
    }

    if (DBControl::updateStatus(loggedIn, isLinked, productCount, -1, -1) != 0)
        LOG_E("updateStatus() failed");
    if (vconf_set_int("db/nuvex/e-commerce/response", 1) != VCONF_OK)
        LOG_E("vconf_set_int() failed");
    return result;
}

bool SearchEmartControl::checkEmartLogin()
{
    std::ifstream file(RETAILER_LOGIN_FILE);
    if (!file.is_open()) {
        LOG_D("Not Open Emart Login File!");
        return false;
    }
    std::string line;
    std::getline(file, line);

    if (line.find("login") != std::string::npos)
        return true;
    if (line.find("logout") == std::string::npos)
        LOG_E("No matching value for emart - ecommerce login: %s", line.c_str());
    return false;
}

JsonObject* SearchEmartControl::getRequestParamSearch()
{
    JsonObject* params = json_object_new();
    json_object_set_string_member(params, "apiVersion", "1.0.0");
    json_object_set_string_member(params, "siteNo", "6001");
    json_object_set_string_member(params, "query", searchTerm.c_str());
    json_object_set_string_member(params, "target", "mobile_item");
    json_object_set_int_member(params, "count", requestCount);
    return params;
}

JsonObject* SearchEmartControl::getRequestParamObjang()
{
    JsonObject* params = json_object_new();
    json_object_set_string_member(params, "apiVersion", "1.0.0");
    json_object_set_string_member(params, "pagingYn", "N");
    json_object_set_string_member(params, "page", "1");
    json_object_set_string_member(params, "imgSearchYn", "N");
    json_object_set_string_member(params, "siteNo", "6001");
    json_object_set_string_member(params, "itemImgSize", "320");
    return params;
}

std::pair<char*, gsize> SearchEmartControl::getRequestBodyJson(_requestCommand, JsonObject* params)
{
    // localtime_r() alone would stay in the time zone that the process has begun in.
    tzset();
    const time_t now = time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);

    JsonObject* common = json_object_new();
    json_object_set_string_member(common, "ts", RetailerTexts::timestamp(local).c_str());
    json_object_set_string_member(common, "mobil_app_no", "41");
    json_object_set_string_member(common, "apl_ver", "1.0.0");
    json_object_set_string_member(common, "os_cd", "30");

    JsonObject* request = json_object_new();
    json_object_set_object_member(request, "common", common);
    json_object_set_object_member(request, "params", params);

    JsonNode* root = json_node_new(JSON_NODE_OBJECT);
    json_node_take_object(root, request);
    JsonGenerator* generator = json_generator_new();
    json_generator_set_root(generator, root);
    gsize length = 0;
    char* text = json_generator_to_data(generator, &length);
    json_node_free(root);
    g_object_unref(generator);
    return {text, length};
}

std::pair<char*, gsize> SearchEmartControl::getRequestBody(_requestCommand command, JsonObject* params)
{
    return getRequestBodyJson(command, params);
}

std::string SearchEmartControl::searchProduct()
try {
    Util::Curl curl;
    if (searchTerm.empty())
        throw std::string("Invalid extra data");

    auto [text, length] = getRequestBodyJson(REQUEST_SEARCH, getRequestParamSearch());
    const std::unique_ptr<char, decltype(&free)> body(text, free);
    curl.appendHeader("User-Agent: QMREFAPP/41/emartmallQMR");
    curl.appendHeader("Content-Type: application/json");
    curl_easy_setopt(curl.mHandle, CURLOPT_COOKIE, "MOBIL_APP_NO=41; APP_INF=N|HH_FS;");
    curl_easy_setopt(curl.mHandle, CURLOPT_URL, SEARCH_URL);
    curl_easy_setopt(curl.mHandle, CURLOPT_CUSTOMREQUEST, "POST");
    curl_easy_setopt(curl.mHandle, CURLOPT_POSTFIELDS, body.get());
    curl_easy_setopt(curl.mHandle, CURLOPT_POSTFIELDSIZE, static_cast<long>(length));
    httpCode = static_cast<int>(curl.perform());

    if (httpCode == HTTP_OK)
        return curl.getBody();
    if (httpCode == HTTP_UNAUTHORIZED)
        throw std::string("Not logged in");
    throw "curl perform failed: " + std::to_string(httpCode);
} catch (const std::string& text) {
    LOG_E("%s", text.c_str());
    return "";
}

int SearchEmartControl::parseResult(std::string body)
{
    std::vector<RetailerProduct> products;
    const char* fault = RetailerAnswer::read(body, MAX_PRODUCTS, products);
    if (fault)
        LOG_E("%s", fault);
    delivery.guarded([&] { fillLists(std::move(products)); });
    return fault ? BAD_ANSWER : FOUND;
}

std::array<std::vector<std::string>*, 8> SearchEmartControl::lists()
{
    return {&productNames, &imageUrls,     &prices,           &pricesBeforeDiscount,
            &productIds,   &discountTypes, &discountIconUrls, &discountTexts};
}

void SearchEmartControl::clearLists()
{
    productCount = 0;
    for (std::vector<std::string>* list : lists())
        list->clear();
}

// The count comes last: it never says more than the lists hold.
void SearchEmartControl::fillLists(std::vector<RetailerProduct> products)
{
    clearLists();
    for (RetailerProduct& product : products) {
        productNames.push_back(std::move(product.name));
        imageUrls.push_back(std::move(product.imageUrl));
        prices.push_back(std::move(product.price));
        pricesBeforeDiscount.emplace_back();  // the retailer does not tell
        productIds.push_back(std::move(product.id));
        discountTypes.push_back(std::move(product.discountType));
        discountIconUrls.push_back(std::move(product.discountIconUrl));
        discountTexts.push_back(std::move(product.discountText));
    }
    productCount = static_cast<int>(products.size());
}

int SearchEmartControl::sendEmartResultToUI()
{
    LOG_D("");
    if (productCount < 0)
        return 1;

    resultMessage.clearExtraData();
    resultMessage.clearExtraVectorData();
    resultMessage.addExtraData(KEY_SEARCH_TERM, searchTerm);
    resultMessage.addExtraData(KEY_TOTAL_NUM_OF_PRODUCTS, std::to_string(productCount));
    resultMessage.addExtraVectorData(KEY_PRODUCT_NAMES, productNames);
    resultMessage.addExtraVectorData(KEY_PRODUCT_PRICES, prices);
    resultMessage.addExtraVectorData(KEY_PRODUCT_PRICES_BEFORE_DISCOUNT, pricesBeforeDiscount);
    resultMessage.addExtraVectorData(KEY_PRODUCT_DISCOUNT_TYPE, discountTypes);
    resultMessage.addExtraVectorData(KEY_PRODUCT_DISCOUNT_TXT, discountTexts);
    resultMessage.addExtraVectorData(KEY_PRODUCT_IDS, productIds);
    Util::AppControl::performAppControl(resultMessage);
    return 0;
}

int SearchEmartControl::sendImagePath(int index, std::string path, DownloadImageType type)
{
    imageMessage.clearExtraData();
    imageMessage.addExtraData(KEY_PRODUCT_IMAGE_NUM, std::to_string(index));
    imageMessage.addExtraData(KEY_PRODUCT_IMAGE_PATH, path);
    imageMessage.addExtraData(KEY_PRODUCT_IMAGE_TYPE, std::to_string(static_cast<int>(type)));
    Util::AppControl::performAppControl(imageMessage);
    return 0;
}

void SearchEmartControl::pushEmartImagePath(int index, std::string path, DownloadImageType type,
                                            unsigned search)
{
    delivery.push(search, {index, std::move(path), type});
}

void SearchEmartControl::sendEmartAllImagePath()
{
    if (!delivery.sendAll())
        LOG_E("UI is not ready to show image");
}

void SearchEmartControl::deinitDownload(int id, unsigned search)
{
    delivery.ifCurrent(search, [&] {
        delivery.downloader()->deinitDownload(id);
        downloadIndex.erase(id);
        downloadType.erase(id);
    });
}

void SearchEmartControl::downloadImages()
{
    if (productCount < 1)
        return;

    auto download = [this] {
        Util::ImageCurlDownloader* downloader = delivery.downloader();
        for (int i = 0; hasProduct(i); ++i) {
            startDownloadImages(downloader, i, DownloadImageType::PRODUCT_IMAGE);
            startDownloadImages(downloader, i, DownloadImageType::DISCOUNT_ICON_IMAGE);
        }
    };
    try {
        delivery.download(download);
    } catch (const std::system_error& error) {
        LOG_E("Failed to start the download thread: %s", error.what());
    }
}

/** Whether the current search has a product at this position. */
bool SearchEmartControl::hasProduct(int index)
{
    bool hasProduct = false;
    delivery.guarded([&] { hasProduct = index < productCount; });
    return hasProduct;
}

/** Gives the address of a picture, empty where there is none, and the search whose products it was read from.
 */
unsigned SearchEmartControl::findImage(int index, DownloadImageType type, std::string& url)
{
    const bool isPicture = type == DownloadImageType::PRODUCT_IMAGE;
    return delivery.guarded([&] {
        if (index >= 0 && index < productCount)
            url = (isPicture ? imageUrls : discountIconUrls)[index];
    });
}

// Another thread may be at the same products. Whoever comes to a picture first fetches it, and the other
// leaves it out: two transfers into one file would spoil what the UI app may show already.
void SearchEmartControl::startDownloadImages(Util::ImageCurlDownloader* downloader, int index,
                                             DownloadImageType type)
{
    if (type != DownloadImageType::PRODUCT_IMAGE && type != DownloadImageType::DISCOUNT_ICON_IMAGE) {
        LOG_E("Not define DownloadImageType");
        return;
    }
    std::string url;
    const unsigned search = findImage(index, type, url);
    if (url.empty())
        return;
    const int id = downloader->initDownload(index + 1, static_cast<int>(type));
    if (id <= 0) {
        LOG_E("download_id is not used: %d", id);
        return;
    }

    bool isFirst = false;
    bool isWanted = delivery.ifCurrent(search, [&] { isFirst = startedDownloads.insert(id).second; });
    if (!isWanted || !isFirst)
        return;
    auto gate = [&](const std::function<void()>& step) {
        return isWanted = delivery.ifCurrent(search, step);
    };
    const bool isRecorded = downloader->startDownload(id, url.c_str(), gate);
    if (!isRecorded && isWanted)
        LOG_E("Failed to startDownload for index %d, type: %d", index, static_cast<int>(type));
    if (!isRecorded)
        return;

    std::string path;
    delivery.ifCurrent(search, [&] {
        downloadIndex[id] = index;
        downloadType[id] = type;
        path = downloader->downloaded[id];
    });
    pushEmartImagePath(index, path, type, search);
    deinitDownload(id, search);
}

}  // namespace Carvoy
