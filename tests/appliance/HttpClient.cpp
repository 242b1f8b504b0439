#include "HttpClient.h"

#include "Patience.h"

#include <memory>
#include <stdexcept>
#include <utility>

namespace ApplianceTest {
namespace {

struct Deleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

using Handle = std::unique_ptr<CURL, Deleter>;
using List = std::unique_ptr<curl_slist, Deleter>;

void append(List& list, const std::string& text)
{
    list.reset(curl_slist_append(list.release(), text.c_str()));
}

struct Transfer {
    const HttpClient& client;
    Reply reply;
};

// Giving back another number than was given makes libcurl abort; that is how a client leaves early.
std::size_t receive(const char* data, std::size_t size, std::size_t count, Transfer* transfer)
{
    transfer->reply.body.append(data, size * count);
    try {
        if (transfer->client.onData)
            transfer->client.onData(transfer->reply.body);
    } catch (const std::exception&) {
        return 0;
    }
    return size * count;
}

}  // namespace

HttpClient::HttpClient(std::string usedHost, int usedPort) : host(std::move(usedHost)), port(usedPort) {}

HttpClient::HttpClient(std::string usedHost, int usedPort, std::string usedCaFile)
    : host(std::move(usedHost)), port(usedPort), caFile(std::move(usedCaFile))
{
}

Reply HttpClient::get(const std::string& target) const
{
    const Handle handle(curl_easy_init());
    return perform(handle.get(), target);
}

Reply HttpClient::post(const std::string& target, const std::string& body) const
{
    const Handle handle(curl_easy_init());
    curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
    curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDS, body.c_str());
    return perform(handle.get(), target);
}

Reply HttpClient::perform(CURL* handle, const std::string& target) const
{
    Transfer transfer{*this, {}};
    List headerList;
    List connectTo;
    for (const std::string& header : headers)
        append(headerList, header);
    append(connectTo, host + "::127.0.0.1:" + std::to_string(port));

    curl_easy_setopt(handle, CURLOPT_URL,
                     ((caFile.empty() ? "http://" : "https://") + host + target).c_str());
    curl_easy_setopt(handle, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headerList.get());
    curl_easy_setopt(handle, CURLOPT_CONNECT_TO, connectTo.get());
    if (!caFile.empty())
        setUpTls(handle);
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, followsRedirects ? 1L : 0L);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, receive);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &transfer);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_TIMEOUT, static_cast<long>(TestSupport::Patience.count()));
    transfer.reply.result = curl_easy_perform(handle);
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &transfer.reply.status);
    const char* type = nullptr;
    curl_easy_getinfo(handle, CURLINFO_CONTENT_TYPE, &type);
    transfer.reply.contentType = type ? type : "";
    return transfer.reply;
}

void HttpClient::setUpTls(CURL* handle) const
{
    curl_easy_setopt(handle, CURLOPT_CAINFO, caFile.c_str());
    curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
}

std::string HttpClient::escape(const std::string& text)
{
    const std::unique_ptr<char, decltype(&curl_free)> escaped(
        curl_easy_escape(nullptr, text.data(), static_cast<int>(text.size())), curl_free);
    return escaped.get();
}

}  // namespace ApplianceTest
