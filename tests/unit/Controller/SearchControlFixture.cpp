#include "SearchControlFixture.h"

#include <dlog.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <vconf.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "AppControl.h"
#include "Products.h"
#include "ScratchRoot.h"
#include "SiteValues.h"

using TestSupport::Calls;
using TestSupport::ScratchRoot;

namespace fs = std::filesystem;

namespace {

// The platform's log stays out of the test's output.
const int logFile = setenv("APPLIANCE_DLOG", ScratchRoot::file("log").c_str(), 1);

constexpr const char* UI_APP = "org.tizen.carvoy";
constexpr const char* LAST_MESSAGE = "org.example.last-message";

std::vector<SentMessage> launchesTo(const std::string& appId)
{
    std::vector<SentMessage> messages;
    for (const TestSupport::Launch& launch : Calls::launches()) {
        if (launch.appId == appId)
            messages.push_back({launch});
    }
    return messages;
}

/** Waits until `count` messages went to the app for which `isMeant` holds. */
template <typename Condition>
bool waitForMessages(const std::string& appId, size_t count, Condition isMeant)
{
    for (;;) {
        const size_t seen = Calls::launches().size();
        const std::vector<SentMessage> messages = launchesTo(appId);
        if (static_cast<size_t>(std::count_if(messages.begin(), messages.end(), isMeant)) >= count)
            return true;
        if (!Calls::waitForLaunches(seen + 1))
            return false;
    }
}

bool isAny(const SentMessage&)
{
    return true;
}

/** "ESC[31m[4711] Curl.cpp: perform(69) > textESC[0m" is "perform: text". */
std::string withoutPlace(const std::string& line)
{
    const size_t function = line.find(": ") + 2;
    const size_t text = line.find(") > ", function);
    const size_t end = line.rfind("\033[0m");
    return line.substr(function, line.rfind('(', text) - function) + ": " +
           line.substr(text + 4, end - text - 4);
}

std::vector<std::string> loggedFrom(int lowestPriority)
{
    std::vector<std::string> texts;
    for (const TestSupport::LogEntry& entry : Calls::log()) {
        if (entry.priority >= lowestPriority)
            texts.push_back(withoutPlace(entry.text));
    }
    return texts;
}

std::optional<int> column(sqlite3_stmt* row, int index)
{
    if (sqlite3_column_type(row, index) == SQLITE_NULL)
        return std::nullopt;
    return sqlite3_column_int(row, index);
}

}  // namespace

std::string SentMessage::text(const std::string& key) const
{
    const auto found = extras.find(key);
    EXPECT_NE(found, extras.end()) << key;
    return found == extras.end() ? "" : found->second;
}

std::vector<std::string> SentMessage::list(const std::string& key) const
{
    const auto found = lists.find(key);
    EXPECT_NE(found, lists.end()) << key;
    return found == lists.end() ? std::vector<std::string>() : found->second;
}

bool SentMessage::isResult() const
{
    return operation == "http://carvoy-service/appcontrol/operation/result";
}

bool SentMessage::isImage() const
{
    return operation == "http://carvoy-service/appcontrol/operation/product_image";
}

bool StatusRecord::operator==(const StatusRecord& other) const
{
    return isLoggedIn == other.isLoggedIn && isLinked == other.isLinked && totalCount == other.totalCount &&
           productCountInCart == other.productCountInCart && currentViewType == other.currentViewType;
}

std::ostream& operator<<(std::ostream& out, const StatusRecord& record)
{
    for (const auto& field : {record.isLoggedIn, record.isLinked, record.totalCount,
                              record.productCountInCart, record.currentViewType})
        out << (field ? std::to_string(*field) : "null") << ' ';
    return out;
}

std::optional<StatusRecord> statusRecord()
{
    sqlite3* store = nullptr;
    sqlite3_stmt* select = nullptr;
    std::optional<StatusRecord> record;
    sqlite3_open_v2(ScratchRoot::file("data-store.sqlite").c_str(), &store, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_prepare_v2(store,
                       "SELECT isLoggedIn, isLinked, totalCount, productCountInCart, currentViewType "
                       "FROM Commerce WHERE id = 0",
                       -1, &select, nullptr);
    if (select && sqlite3_step(select) == SQLITE_ROW)
        record = StatusRecord{column(select, 0), column(select, 1), column(select, 2), column(select, 3),
                              column(select, 4)};
    sqlite3_finalize(select);
    sqlite3_close(store);
    return record;
}

std::optional<int> responseFlag()
{
    int value = 0;
    if (vconf_get_int("db/nuvex/e-commerce/response", &value) != VCONF_OK)
        return std::nullopt;
    return value;
}

std::vector<std::string> loggedErrors()
{
    return loggedFrom(DLOG_ERROR);
}

std::vector<std::string> logged()
{
    return loggedFrom(DLOG_DEBUG);
}

bool holds(const std::vector<std::string>& texts, const std::string& text)
{
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

std::string readFile(const std::string& path)
{
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

void writeFile(const std::string& path, const std::string& content)
{
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

std::string tokenFile()
{
    return ScratchRoot::file("apps_rw/" CARVOY_PARTNER_APP_ID "/shared/trusted/tokens.txt");
}

std::string imageFile(const std::string& name)
{
    return ScratchRoot::file("media/tmp/" + name);
}

SearchControlFixture::SearchControlFixture() : merchant_(MerchantServer::instance()) {}

void SearchControlFixture::SetUp()
{
    for (const char* name : {"apps_rw", "media", "vconf", "data-store.sqlite"})
        fs::remove_all(ScratchRoot::file(name));
    fs::create_directories(ScratchRoot::file("media"));
    writeFile(tokenFile(), "session,access\n");

    Calls::reset();
    search_ = std::make_unique<Carvoy::SearchControl>();
}

void SearchControlFixture::TearDown()
{
    for (const auto& latch : latches_)
        latch->open();
    search_.reset();
    settle();
    merchant_.reset();
    Calls::reset();
}

// What is queued behind everything else goes out behind everything else.
void SearchControlFixture::settle()
{
    const size_t before = launchesTo(LAST_MESSAGE).size();
    Util::AppControlData last;
    last.setPackageName(LAST_MESSAGE);
    Util::AppControl::performAppControl(last);
    EXPECT_TRUE(waitForMessages(LAST_MESSAGE, before + 1, isAny));
}

std::vector<SentMessage> SearchControlFixture::sent()
{
    settle();
    return launchesTo(UI_APP);
}

std::vector<SentMessage> SearchControlFixture::sentImages()
{
    std::vector<SentMessage> images;
    for (const SentMessage& message : sent()) {
        if (message.isImage())
            images.push_back(message);
    }
    return images;
}

SentMessage SearchControlFixture::result()
{
    auto isResult = [](const SentMessage& message) { return message.isResult(); };
    std::vector<SentMessage> messages = launchesTo(UI_APP);
    const auto before = std::count_if(messages.begin(), messages.end(), isResult);

    EXPECT_EQ(search_->sendResultToUI(), 0);
    EXPECT_TRUE(waitForMessages(UI_APP, static_cast<size_t>(before) + 1, isResult));
    messages = launchesTo(UI_APP);
    const auto last = std::find_if(messages.rbegin(), messages.rend(), isResult);
    return last == messages.rend() ? SentMessage{} : *last;
}

void SearchControlFixture::confirm()
{
    result().answer(APP_CONTROL_RESULT_SUCCEEDED);
}

bool SearchControlFixture::waitForImages(size_t count)
{
    return waitForMessages(UI_APP, count, [](const SentMessage& message) { return message.isImage(); });
}

std::shared_ptr<Latch> SearchControlFixture::newLatch()
{
    return latches_.emplace_back(std::make_shared<Latch>());
}

std::string SearchControlFixture::addPicture(const std::string& path, const std::string& content)
{
    merchant_.answer(path, 200, content);
    return MerchantServer::url(path);
}

std::string SearchControlFixture::addHeldPicture(const std::string& path, const std::string& content,
                                                 const std::shared_ptr<Latch>& reached,
                                                 const std::shared_ptr<Latch>& release)
{
    merchant_.handle(path, [=](const MerchantRequest&, MerchantConnection& connection) {
        connection.answerHead(200, content.size());
        connection.send(content.substr(0, content.size() / 2));
        reached->open();
        release->wait();
        connection.send(content.substr(content.size() / 2));
    });
    return MerchantServer::url(path);
}

void SearchControlFixture::answerWithPictures(const std::vector<std::string>& urls)
{
    std::vector<std::string> products;
    for (const std::string& url : urls)
        products.push_back(Products::pictured("product " + std::to_string(products.size()), url));
    merchant_.answerSearch(200, Products::answer(products));
}
