#include "SearchFixture.h"

#include <dlog.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <unistd.h>
#include <vconf.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "AppControl.h"
#include "ScratchRoot.h"

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

bool isResult(const SentMessage& message)
{
    return message.isResult();
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
    // That of the merchant bridge's search, and that of the retailer's.
    return operation == "http://carvoy-service/appcontrol/operation/product_image" ||
           operation == "http://carvoy-service/appcontrol/operation/emart_product_image";
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

std::string imageFile(const std::string& name)
{
    return ScratchRoot::file("media/tmp/" + name);
}

SearchFixture::SearchFixture(ScriptedServer& server) : server_(server) {}

void SearchFixture::SetUp()
{
    for (const char* name : {"apps_rw", "media", "vconf", "data-store.sqlite"})
        fs::remove_all(ScratchRoot::file(name));
    fs::create_directories(ScratchRoot::file("media"));
    Calls::reset();
}

void SearchFixture::TearDown()
{
    settle();
    server_.reset();
    Calls::reset();
}

// What is queued behind everything else goes out behind everything else.
void SearchFixture::settle()
{
    const size_t before = launchesTo(LAST_MESSAGE).size();
    Util::AppControlData last;
    last.setPackageName(LAST_MESSAGE);
    Util::AppControl::performAppControl(last);
    EXPECT_TRUE(waitForMessages(LAST_MESSAGE, before + 1, isAny));
}

std::vector<SentMessage> SearchFixture::sent()
{
    settle();
    return launchesTo(UI_APP);
}

std::vector<SentMessage> SearchFixture::sentImages()
{
    std::vector<SentMessage> images;
    for (const SentMessage& message : sent()) {
        if (message.isImage())
            images.push_back(message);
    }
    return images;
}

SentMessage SearchFixture::resultOf(const std::function<void()>& ask)
{
    std::vector<SentMessage> messages = launchesTo(UI_APP);
    const auto before = std::count_if(messages.begin(), messages.end(), isResult);

    ask();
    EXPECT_TRUE(waitForMessages(UI_APP, static_cast<size_t>(before) + 1, isResult));
    messages = launchesTo(UI_APP);
    const auto last = std::find_if(messages.rbegin(), messages.rend(), isResult);
    return last == messages.rend() ? SentMessage{} : *last;
}

bool SearchFixture::waitForImages(size_t count)
{
    return waitForMessages(UI_APP, count, [](const SentMessage& message) { return message.isImage(); });
}

std::shared_ptr<Latch> SearchFixture::newLatch()
{
    return latches_.emplace_back(std::make_shared<Latch>());
}

void SearchFixture::openLatches()
{
    for (const auto& latch : latches_)
        latch->open();
}

std::string SearchFixture::addPicture(const std::string& path, const std::string& content)
{
    server_.answer(path, 200, content);
    return server_.address(path);
}

std::string SearchFixture::addHeldPicture(const std::string& path, const std::string& content,
                                          const std::shared_ptr<Latch>& reached,
                                          const std::shared_ptr<Latch>& release)
{
    server_.handle(path, [=](const ServerRequest&, ServerConnection& connection) {
        connection.answerHead(200, content.size());
        connection.send(content.substr(0, content.size() / 2));
        reached->open();
        release->wait();
        connection.send(content.substr(content.size() / 2));
    });
    return server_.address(path);
}

void SearchFixture::holdDownloadIn(const std::string& function, const std::shared_ptr<Latch>& reached,
                                   const std::shared_ptr<Latch>& release)
{
    Calls::before(function, [=, mainThread = gettid()] {
        if (gettid() == mainThread || reached->isOpen())
            return;
        reached->open();
        release->wait();
    });
}
