#include "Surroundings.h"

#include <json-glib/json-glib.h>

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <utility>

#include "AppBus.h"
#include "AsyncThread.h"
#include "Demand.h"
#include "ImageFolder.h"
#include "MainLoop.h"

namespace {

// Priority 102: behind the scratch folder, ahead of the static objects.
__attribute__((constructor(102))) void setUp()
{
    setenv("APPLIANCE_DLOG", "/dev/null", 1);
    DEMAND(freopen("/dev/null", "w", stdout));
    g_log_set_default_handler(
        [](const gchar* domain, GLogLevelFlags, const gchar* message, gpointer) {
            fprintf(stderr, "GLib: %s: %s\n", domain ? domain : "", message);
            abort();
        },
        nullptr);
}

std::vector<Fuzz::Message>& sent()
{
    static auto* const messages = new std::vector<Fuzz::Message>;
    return *messages;
}

using WriteFunction = size_t(void* data, size_t size, size_t count, void* stream);

struct Transfers {
    CURLcode code = CURLE_COULDNT_CONNECT;
    long status = 0;
    std::string body;
    std::vector<Fuzz::Request> performed;

    // Of the request that is being set up: there is one at a time.
    Fuzz::Request next;
    WriteFunction* write = nullptr;
    void* writeData = nullptr;
};

Transfers& transfers()
{
    static auto* const all = new Transfers;
    return *all;
}

void noteOption(unsigned option, void* value)
{
    Transfers& all = transfers();
    if (option == CURLOPT_URL)
        all.next.url = static_cast<const char*>(value);
    if (option == CURLOPT_WRITEDATA)
        all.writeData = value;
    if (option == CURLOPT_HTTPHEADER)
        for (auto* header = static_cast<curl_slist*>(value); header; header = header->next)
            all.next.headers.emplace_back(header->data);
}

// How deep the JSON library is in a text. It reads by recursion, so that more would be the end of the
// process; but a fuzzer's inputs are too short for that.
int nesting;

void enter(JsonParser*, gpointer)
{
    constexpr int deepest = 1024;
    DEMAND(++nesting <= deepest);
}

void leave(JsonParser*, gpointer, gpointer)
{
    --nesting;
}

}  // namespace

namespace Fuzz {

std::vector<Message> takeSent()
{
    return std::exchange(sent(), {});
}

std::string textOf(const Message& message, const std::string& key)
{
    const auto* value = message->extraData.find(key);
    return value ? std::get<std::string>(*value) : "";
}

std::vector<std::string> listOf(const Message& message, const std::string& key)
{
    std::vector<std::string> texts;
    if (const auto* value = message->extraData.find(key))
        for (const auto& text : std::get<HostPlatform::TextList>(*value))
            texts.push_back(text.value());
    return texts;
}

void answerTransfers(CURLcode code, long status, const std::string& body)
{
    transfers().code = code;
    transfers().status = status;
    transfers().body = body;
}

std::vector<Request> takeRequests()
{
    return std::exchange(transfers().performed, {});
}

void writeFile(const std::string& path, const void* data, size_t size)
{
    FILE* file = fopen(path.c_str(), "w");
    if (!file) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        file = fopen(path.c_str(), "w");
    }
    DEMAND(file);
    DEMAND(fwrite(data, 1, size, file) == size);
    DEMAND(fclose(file) == 0);
}

}  // namespace Fuzz

// The linker's names of what is stood in for: the members of the product's classes first.
extern "C" {

int __wrap__ZN12HostPlatform6AppBus6launchESt10shared_ptrI13app_control_sERKNS_11ReplyTargetE(
    HostPlatform::AppBus*, Fuzz::Message message, const HostPlatform::ReplyTarget&)
{
    sent().push_back(std::move(message));
    return APP_CONTROL_ERROR_NONE;
}

void __wrap__ZN12HostPlatform8MainLoop11openForToolEv(HostPlatform::MainLoop*) {}

// A message that the platform refuses shows as one that is missing.
void __wrap__ZN4Util11AsyncThread9asyncCallERKSt8functionIFbvEERKS1_IFvvEE(Util::AsyncThread*,
                                                                           const std::function<bool()>& work,
                                                                           const std::function<void()>&)
{
    DEMAND(!work());
}

int __wrap__ZN6Carvoy9DBControl12updateStatusEiiiii(int isLoggedIn, int isLinked, int totalCount,
                                                    int productCountInCart, int currentViewType)
{
    DEMAND(isLoggedIn == 0 || isLoggedIn == 1);
    DEMAND(isLinked == 0 || isLinked == 1);
    DEMAND(totalCount >= 0 && totalCount <= 6);
    DEMAND(productCountInCart == -1 && currentViewType == -1);
    return 0;
}

int __wrap_vconf_set_int(const char*, int)
{
    return 0;
}

int __real_system(const char*);

// What else comes here is libFuzzer's, which runs itself to compare inputs.
int __wrap_system(const char* command)
{
    if (strncmp(command, "rm ", 3) != 0)
        return __real_system(command);
    DEMAND(command == "rm -rf " + Util::imageFolder());
    return 0;
}

int __wrap_fsync(int)
{
    return 0;
}

void __wrap_sync() {}

// Enumerations in the library's own declarations; what va_start() is given must not be promoted.
CURLcode __real_curl_easy_setopt(CURL*, unsigned option, ...);

CURLcode __wrap_curl_easy_setopt(CURL* handle, unsigned option, ...)
{
    va_list arguments;
    va_start(arguments, option);
    CURLcode code = CURLE_OK;
    if (option < CURLOPTTYPE_OBJECTPOINT) {
        code = __real_curl_easy_setopt(handle, option, va_arg(arguments, long));
    } else if (option > CURLOPTTYPE_FUNCTIONPOINT) {
        const auto function = va_arg(arguments, WriteFunction*);
        if (option == CURLOPT_WRITEFUNCTION)
            transfers().write = function;
        code = __real_curl_easy_setopt(handle, option, function);
    } else {
        void* const value = va_arg(arguments, void*);
        noteOption(option, value);
        code = __real_curl_easy_setopt(handle, option, value);
    }
    va_end(arguments);
    return code;
}

CURLcode __wrap_curl_easy_perform(CURL*)
{
    Transfers& all = transfers();
    all.performed.push_back(std::exchange(all.next, {}));
    if (all.code == CURLE_OK && !all.body.empty())
        DEMAND(all.write(all.body.data(), 1, all.body.size(), all.writeData) == all.body.size());
    return all.code;
}

CURLcode __wrap_curl_easy_getinfo(CURL*, unsigned info, ...)
{
    DEMAND(info == CURLINFO_RESPONSE_CODE);
    va_list arguments;
    va_start(arguments, info);
    *va_arg(arguments, long*) = transfers().status;
    va_end(arguments);
    return CURLE_OK;
}

JsonParser* __real_json_parser_new();

JsonParser* __wrap_json_parser_new()
{
    JsonParser* const parser = __real_json_parser_new();
    nesting = 0;
    for (const char* signal : {"object-start", "array-start"})
        g_signal_connect(parser, signal, G_CALLBACK(enter), nullptr);
    for (const char* signal : {"object-end", "array-end"})
        g_signal_connect(parser, signal, G_CALLBACK(leave), nullptr);
    return parser;
}

}  // extern "C"
