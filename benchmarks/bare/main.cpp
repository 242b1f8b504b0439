// A program without the service: the same libraries, a name on the bus, and the bare calls that the service
// cannot do without. What it times it times inside.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <future>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <curl/curl.h>
#include <fcntl.h>
#include <sdbus-c++/sdbus-c++.h>
#include <unistd.h>

namespace {

using Extras = std::map<std::string, sdbus::Variant>;
using Headers = std::vector<std::string>;

constexpr const char* NAME = "org.example.bare";
constexpr const char* PATH = "/org/tizen/AppControl";
constexpr const char* APP_CONTROL = "org.tizen.AppControl1";
constexpr const char* BARE = "org.example.Bare1";

struct CurlDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using Curl = std::unique_ptr<CURL, CurlDeleter>;

struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
};
using File = std::unique_ptr<FILE, FileCloser>;

struct ListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using List = std::unique_ptr<curl_slist, ListDeleter>;

template <typename Work>
double timed(Work&& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// What outlives all handles. Made with the first of them: until then this program is a name and its
// libraries.
curl_slist* connectTo()
{
    static const List list = [] {
        curl_global_init(CURL_GLOBAL_ALL);
        const char* setting = getenv("APPLIANCE_CONNECT_TO");
        return List(setting ? curl_slist_append(nullptr, setting) : nullptr);
    }();
    return list.get();
}

Curl newHandle(const std::string& url)
{
    curl_slist* const led = connectTo();
    Curl handle(curl_easy_init());
    curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(handle.get(), CURLOPT_CAINFO, getenv("APPLIANCE_CA_FILE"));
    curl_easy_setopt(handle.get(), CURLOPT_CAPATH, nullptr);
    curl_easy_setopt(handle.get(), CURLOPT_CONNECT_TO, led);
    curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL, 1L);
    return handle;
}

void perform(CURL* handle)
{
    const CURLcode code = curl_easy_perform(handle);
    long status = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
    if (code != CURLE_OK || status != 200)
        throw sdbus::Error("org.example.Error.Failed", curl_easy_strerror(code));
}

size_t append(void* data, size_t size, size_t count, void* text)
{
    static_cast<std::string*>(text)->append(static_cast<const char*>(data), size * count);
    return size * count;
}

std::string getOver(CURL* handle, const Headers& headers)
{
    std::string body;
    List list;
    for (const std::string& header : headers)
        list.reset(curl_slist_append(list.release(), header.c_str()));
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, list.get());
    perform(handle);
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, nullptr);
    return body;
}

std::string fetch(const std::string& url, const Headers& headers)
{
    return getOver(newHandle(url).get(), headers);
}

double get(const std::string& url, const Headers& headers)
{
    return timed([&] { getOver(newHandle(url).get(), headers); });
}

double getOverKeptConnection(const std::string& url, const Headers& headers)
{
    static const Curl kept = newHandle(url);
    getOver(kept.get(), headers);
    return timed([&] { getOver(kept.get(), headers); });
}

// The same, and what is laid down to come first: the shell removes the last search's pictures.
double wipeAndGet(const std::string& url, const Headers& headers, const std::string& folder)
{
    const std::string command = "rm -rf " + folder;
    return timed([&] {
        if (system(command.c_str()) != 0)
            throw sdbus::Error("org.example.Error.Failed", command);
        getOver(newHandle(url).get(), headers);
    });
}

size_t writeToFile(void* data, size_t size, size_t count, void* file)
{
    return fwrite(data, size, count, static_cast<FILE*>(file));
}

void download(const std::string& url, const std::string& path)
{
    File file(fopen(path.c_str(), "w"));
    if (!file)
        throw sdbus::Error("org.example.Error.Failed", path);
    const Curl handle = newHandle(url);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, writeToFile);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, file.get());
    perform(handle.get());
    if (fflush(file.get()) != 0 || fsync(fileno(file.get())) != 0)
        throw sdbus::Error("org.example.Error.Failed", path);
    file.reset();
    sync();
}

// One after another, each timed; but not the first, which also makes what libcurl keeps.
std::vector<double> downloadEach(const std::vector<std::string>& urls, const std::string& folder)
{
    std::vector<double> times;
    for (std::size_t i = 0; i < urls.size(); ++i) {
        const std::string path = folder + "/" + std::to_string(i + 1) + ".png";
        const double seconds = timed([&] { download(urls[i], path); });
        if (i > 0)
            times.push_back(seconds);
    }
    return times;
}

// On a thread that is made for them, as is laid down: it begins with no memory of its own.
std::vector<double> downloadAll(const std::vector<std::string>& urls, const std::string& folder)
{
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return std::async(std::launch::async, downloadEach, urls, folder).get();
}

// Sends what it has been given to hold, as soon as it is asked.
class Echo {
  public:
    explicit Echo(sdbus::IConnection& connection) : mConnection(connection) {}

    void hold(Extras extras) { mExtras = std::move(extras); }

    void send(const std::string& app)
    {
        auto proxy = sdbus::createProxy(mConnection, app, PATH);
        auto message = proxy->createMethodCall(APP_CONTROL, "Launch");
        message << std::string(NAME) << std::uint32_t{0} << std::string("echo") << std::string() << mExtras;
        message.dontExpectReply();
        proxy->callMethod(message);
    }

  private:
    sdbus::IConnection& mConnection;
    Extras mExtras;
};

}  // namespace

int main()
{
    auto connection = sdbus::createSessionBusConnection();
    Echo echo(*connection);
    auto object = sdbus::createObject(*connection, PATH);
    object->registerMethod("Fetch").onInterface(BARE).implementedAs(fetch);
    object->registerMethod("Get").onInterface(BARE).implementedAs(get);
    object->registerMethod("GetOverKeptConnection").onInterface(BARE).implementedAs(getOverKeptConnection);
    object->registerMethod("WipeAndGet").onInterface(BARE).implementedAs(wipeAndGet);
    object->registerMethod("Download").onInterface(BARE).implementedAs(downloadAll);
    object->registerMethod("Hold").onInterface(BARE).implementedAs(
        [&](const Extras& extras) { echo.hold(extras); });
    object->registerMethod("Launch")
        .onInterface(APP_CONTROL)
        .implementedAs([&](const std::string&, std::uint32_t, const std::string&, const std::string& uri,
                           const Extras&) { echo.send(uri); });
    object->finishRegistration();
    connection->requestName(NAME);
    connection->enterEventLoop();
    return 0;
}
