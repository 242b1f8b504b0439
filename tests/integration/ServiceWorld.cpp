#include "ServiceWorld.h"

#include <signal.h>
#include <sqlite3.h>

#include <algorithm>
#include <fstream>
#include <thread>

#include "ScratchRoot.h"
#include "SiteValues.h"

namespace ServiceTest {

namespace fs = std::filesystem;
using TestSupport::ChildProcess;
using TestSupport::RawMessage;
using TestSupport::RawPeer;
using TestSupport::ScratchRoot;

namespace {

constexpr const char* const Host = CARVOY_MERCHANT_BRIDGE_HOST;
constexpr std::chrono::milliseconds PollInterval{5};

// What the service logs last before it waits for requests.
constexpr const char* const LastOfStart = "set command list";

std::string newRoot()
{
    std::string path = ScratchRoot::file("w-XXXXXX");
    if (!mkdtemp(path.data()))
        throw std::runtime_error("no folder for the service");
    return path;
}

std::optional<int> columnOf(sqlite3_stmt* row, int column)
{
    if (sqlite3_column_type(row, column) == SQLITE_NULL)
        return {};
    return sqlite3_column_int(row, column);
}

std::optional<StatusRecord> readStatus(sqlite3* database)
{
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database,
                       "SELECT isLoggedIn, isLinked, totalCount, productCountInCart, currentViewType"
                       " FROM Commerce WHERE id = 0",
                       -1, &statement, nullptr);
    std::optional<StatusRecord> status;
    if (statement && sqlite3_step(statement) == SQLITE_ROW)
        status = StatusRecord{columnOf(statement, 0), columnOf(statement, 1), columnOf(statement, 2),
                              columnOf(statement, 3), columnOf(statement, 4)};
    sqlite3_finalize(statement);
    return status;
}

std::string textOf(const std::optional<int>& value)
{
    return value ? std::to_string(*value) : "null";
}

auto columnsOf(const StatusRecord& status)
{
    return std::tie(status.isLoggedIn, status.isLinked, status.totalCount, status.productCountInCart,
                    status.currentViewType);
}

}  // namespace

bool operator==(const StatusRecord& one, const StatusRecord& other)
{
    return columnsOf(one) == columnsOf(other);
}

std::ostream& operator<<(std::ostream& stream, const StatusRecord& status)
{
    return stream << "loggedIn " << textOf(status.isLoggedIn) << ", linked " << textOf(status.isLinked)
                  << ", total " << textOf(status.totalCount) << ", cart " << textOf(status.productCountInCart)
                  << ", view " << textOf(status.currentViewType);
}

std::string findingsIn(const std::string& errors)
{
    for (const char* finding :
         {"ERROR: AddressSanitizer", "LeakSanitizer", "WARNING: ThreadSanitizer", "runtime error"}) {
        if (errors.find(finding) != std::string::npos)
            return errors;
    }
    return "";
}

ServiceWorld::ServiceWorld() : root(newRoot()), client(std::make_unique<RawPeer>()), log(logFile())
{
    authority.writeAuthority(root + "/ca.pem");
    writeTokens();
    openMerchant(authority.issue({Host}));
}

void ServiceWorld::TearDown()
{
    if (service && !service->wait(std::chrono::milliseconds(0)).inTime)
        stopService();
    expectNoTokenTold();
}

void ServiceWorld::expectNoTokenTold() const
{
    if (!service)
        return;
    const std::string told = contentOf(logFile()) + service->output() + service->errors();
    for (const char* token : {SessionToken, AccessToken})
        EXPECT_EQ(told.find(token), std::string::npos) << token;
}

void ServiceWorld::startService(Until until, const ChildProcess::Variables& added, const std::string& program)
{
    // The run before may have ended without the bus having noticed.
    ASSERT_TRUE(TestSupport::waitForName(ServiceId, false));
    const std::size_t starts = log.count(LastOfStart);
    service = runService(added, program);
    ASSERT_TRUE(TestSupport::waitForName(ServiceId)) << service->errors();
    if (until == Until::ReadyForVoice) {
        ASSERT_TRUE(log.waitFor(LastOfStart, starts + 1)) << service->errors();
    }
}

std::unique_ptr<ChildProcess> ServiceWorld::runService(const ChildProcess::Variables& added,
                                                       const std::string& program) const
{
    ChildProcess::Variables all = variables();
    all.insert(all.end(), added.begin(), added.end());
    return std::make_unique<ChildProcess>(
        std::vector<std::string>{program.empty() ? CARVOY_SERVICE : program}, all);
}

ChildProcess::Variables ServiceWorld::variables() const
{
    return {{"APPLIANCE_ROOT", root},
            {"APPLIANCE_DLOG", logFile()},
            {"APPLIANCE_CA_FILE", root + "/ca.pem"},
            {"APPLIANCE_CONNECT_TO", std::string(Host) + ":443:127.0.0.1:" + std::to_string(port.number())},
            {"no_proxy", "*"}};
}

void ServiceWorld::stopService()
{
    service->signal(SIGTERM);
    expectEnd(*service, 0);
}

void ServiceWorld::expectEnd(ChildProcess& process, int status)
{
    const TestSupport::ProcessEnd end = process.wait();
    EXPECT_TRUE(end.inTime) << "the process still runs";
    EXPECT_EQ(end.status, status) << "signal " << end.signal << "\n" << process.errors();
    EXPECT_EQ(findingsIn(process.errors()), "");
}

std::string ServiceWorld::launch(const std::string& operation, const TestSupport::Extras& extras)
{
    return client->launch(ServiceId, operation, 0, extras);
}

std::string ServiceWorld::search(const std::string& term, const std::string& merchantName)
{
    return launch(serviceOperation("search"), {{"key_merchant", merchantName}, {"key_search_term", term}});
}

std::string ServiceWorld::askForResult()
{
    return launch(serviceOperation("result"));
}

RawMessage ServiceWorld::resultMessage()
{
    EXPECT_EQ(askForResult(), "");
    return ui->nextResult();
}

void ServiceWorld::stock(const std::vector<Product>& products)
{
    merchant->answer(Merchant::SearchPath, {200, answerOf(products)});
    for (const Product& product : products)
        merchant->answer(product.picture, {200, pictureBytes(product.picture), "image/png"});
}

std::vector<Product> ServiceWorld::threeProducts()
{
    return {{"Whole Milk", "/p/whole.png", "1 gal", 750, 1000, "ref-whole"},
            {"Oat Milk", "/p/oat.jpg", "32 oz", 1205, {}, "ref-oat"},
            {"Goat Milk", "/p/goat.gif", "", {}, {}, ""}};
}

std::string ServiceWorld::pictureBytes(const std::string& path)
{
    return "picture of " + path + std::string("\0\xff\r\n", 4) + std::string(100'000, 'x');
}

void ServiceWorld::expectASearchThatWorks(const std::string& term)
{
    stock(threeProducts());
    EXPECT_EQ(search(term), "");
    const RawMessage result = resultMessage();
    EXPECT_EQ(textOf(result, "key_search_term"), term);
    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "3");
    EXPECT_EQ(ui->confirm(result), "");
    const char* const files[] = {"1.png", "2.jpg", "3.gif"};
    for (std::size_t i = 0; i < 3; ++i) {
        const Picture picture = ui->nextPicture();
        EXPECT_EQ(picture.index, std::to_string(i));
        EXPECT_EQ(picture.path, picturesFolder() + "/" + files[i]);
        EXPECT_TRUE(contentOf(picture.path) == pictureBytes(threeProducts()[i].picture)) << picture.path;
    }
    EXPECT_EQ(pictureFiles(), std::vector<std::string>(std::begin(files), std::end(files)));
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    EXPECT_EQ(responseFlag(), "1\n");
}

void ServiceWorld::openMerchant(const Appliance::Certificate& certificate)
{
    merchant.reset();
    merchant = std::make_unique<Merchant>(port.number(), certificate);
}

bool ServiceWorld::waitForThreads(std::size_t count) const
{
    const auto deadline = std::chrono::steady_clock::now() + TestSupport::Patience;
    while (threads() > count && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(PollInterval);
    return threads() <= count;
}

std::size_t ServiceWorld::threads() const
{
    const fs::path folder = "/proc/" + std::to_string(service->pid()) + "/task";
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

std::optional<StatusRecord> ServiceWorld::status() const
{
    sqlite3* database = nullptr;
    std::optional<StatusRecord> status;
    const std::string file = root + "/data-store.sqlite";
    if (sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_busy_timeout(database, 3000);
        status = readStatus(database);
    }
    sqlite3_close(database);
    return status;
}

std::string ServiceWorld::responseFlag() const
{
    return contentOf(root + "/vconf/db/nuvex/e-commerce/response");
}

std::string ServiceWorld::tokenFile() const
{
    return root + "/apps_rw/" CARVOY_PARTNER_APP_ID "/shared/trusted/tokens.txt";
}

void ServiceWorld::writeTokens(const std::string& content) const
{
    fs::create_directories(fs::path(tokenFile()).parent_path());
    std::ofstream(tokenFile(), std::ios::binary | std::ios::trunc) << content;
}

std::vector<std::string> ServiceWorld::errors() const
{
    std::vector<std::string> texts;
    for (const LogLine& line : log.lines()) {
        if (line.level == "error")
            texts.push_back(line.function + ": " + line.message);
    }
    return texts;
}

std::vector<std::string> ServiceWorld::pictureFiles() const
{
    std::vector<std::string> names;
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(picturesFolder(), missing))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace ServiceTest
