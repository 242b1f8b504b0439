#include "DownloadTransfer.h"

#include <charconv>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace HostPlatform {

namespace {

constexpr long ConnectSeconds = 30;
constexpr long StallSeconds = 60;  // without a byte
constexpr long MostRedirects = 20;
constexpr const char* Protocols = "http,https";

constexpr long HttpPartialContent = 206;
constexpr long HttpRangeNotSatisfiable = 416;

bool isSuccess(long httpStatus)
{
    return httpStatus >= 200 && httpStatus < 300;
}

struct ContentRange {
    std::size_t first = 0;
    std::size_t last = 0;
    std::size_t total = 0;  // 0: not told
};

// These two take off what the text begins with; false where that is something else.

bool takeWord(std::string_view& text, std::string_view word)
{
    if (text.substr(0, word.size()) != word)
        return false;
    text.remove_prefix(word.size());
    return true;
}

bool takeNumber(std::string_view& text, std::size_t& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc();
}

// "bytes 100-299/300", or "/*" for a total that the server does not know.
std::optional<ContentRange> contentRangeOf(std::string_view text)
{
    ContentRange range;
    const bool isRead = takeWord(text, "bytes ") && takeNumber(text, range.first) && takeWord(text, "-") &&
                        takeNumber(text, range.last) && takeWord(text, "/") &&
                        (takeWord(text, "*") || takeNumber(text, range.total)) && text.empty();
    return isRead ? std::optional<ContentRange>(range) : std::nullopt;
}

}  // namespace

DownloadTransfer::DownloadTransfer(DownloadOrder order) : order_(std::move(order)) {}

DownloadTransfer::~DownloadTransfer()
{
    halt();
}

download_error_e DownloadTransfer::go(CURLM* multi)
try {
    if (!file_.isOpen()) {
        const download_error_e opened = file_.open(folderOf(order_), nameOf(order_));
        if (opened != DOWNLOAD_ERROR_NONE)
            return opened;
    }
    failure_ = DOWNLOAD_ERROR_NONE;
    hasBegun_ = false;
    from_ = received_;
    handle_.reset(curl_easy_init());
    if (!handle_ || !setUp() || !askForTheRest() || curl_multi_add_handle(multi, handle_.get()) != CURLM_OK) {
        handle_.reset();
        return DOWNLOAD_ERROR_OUT_OF_MEMORY;
    }
    multi_ = multi;
    return DOWNLOAD_ERROR_NONE;
} catch (const std::bad_alloc&) {
    handle_.reset();
    return DOWNLOAD_ERROR_OUT_OF_MEMORY;
}

void DownloadTransfer::halt()
{
    if (!isGoing())
        return;
    curl_multi_remove_handle(multi_, handle_.get());
    handle_.reset();
    hasBegun_ = false;
}

download_error_e DownloadTransfer::finish(CURLcode result)
try {
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &httpStatus_);
    // A file without bytes begins with its end.
    if (result == CURLE_OK && !hasBegun_)
        failure_ = begin();
    if (failure_ == DOWNLOAD_ERROR_NONE && !isNothingMissing())
        failure_ = errorOf(result);
    // Where the length of what came is not the connection's, only this tells.
    if (failure_ == DOWNLOAD_ERROR_NONE && contentSize_ != 0 && received_ != contentSize_)
        failure_ = DOWNLOAD_ERROR_CANNOT_RESUME;
    halt();
    return failure_ == DOWNLOAD_ERROR_NONE ? seal() : failure_;
} catch (const std::bad_alloc&) {
    halt();
    return DOWNLOAD_ERROR_OUT_OF_MEMORY;
}

// The server has nothing behind what came before the pause: all that was missing was its word for that.
bool DownloadTransfer::isNothingMissing() const
{
    return from_ > 0 && (contentSize_ == 0 || contentSize_ == from_) &&
           httpStatus_ == HttpRangeNotSatisfiable &&
           header("Content-Range") == "bytes */" + std::to_string(from_);
}

download_error_e DownloadTransfer::seal()
{
    const download_error_e error = file_.finish(received_);
    isWhole_ = error == DOWNLOAD_ERROR_NONE;
    if (isWhole_)
        contentSize_ = received_;
    return error;
}

bool DownloadTransfer::setUp()
{
    CURL* const handle = handle_.get();
    const auto set = [handle](CURLoption option, auto value) {
        return curl_easy_setopt(handle, option, value) == CURLE_OK;
    };
    return set(CURLOPT_URL, order_.url.c_str()) && set(CURLOPT_PRIVATE, this) &&
           set(CURLOPT_WRITEFUNCTION, onBytes) && set(CURLOPT_WRITEDATA, this) &&
           set(CURLOPT_PROTOCOLS_STR, Protocols) && set(CURLOPT_REDIR_PROTOCOLS_STR, Protocols) &&
           set(CURLOPT_FORBID_REUSE, 1L) && set(CURLOPT_NOSIGNAL, 1L) && set(CURLOPT_FAILONERROR, 1L) &&
           set(CURLOPT_FOLLOWLOCATION, 1L) && set(CURLOPT_MAXREDIRS, MostRedirects) &&
           set(CURLOPT_CONNECTTIMEOUT, ConnectSeconds) && set(CURLOPT_LOW_SPEED_LIMIT, 1L) &&
           set(CURLOPT_LOW_SPEED_TIME, StallSeconds);
}

bool DownloadTransfer::askForTheRest()
{
    if (from_ == 0)
        return true;
    const std::string range = std::to_string(from_) + "-";
    if (curl_easy_setopt(handle_.get(), CURLOPT_RANGE, range.c_str()) != CURLE_OK)
        return false;
    if (mark_.empty())
        return true;
    headers_.reset(curl_slist_append(nullptr, ("If-Range: " + mark_).c_str()));
    return headers_ && curl_easy_setopt(handle_.get(), CURLOPT_HTTPHEADER, headers_.get()) == CURLE_OK;
}

std::size_t DownloadTransfer::onBytes(char* bytes, std::size_t one, std::size_t count, void* self)
{
    auto* const transfer = static_cast<DownloadTransfer*>(self);
    transfer->failure_ = transfer->take(bytes, one * count);
    return transfer->failure_ == DOWNLOAD_ERROR_NONE ? one * count : 0;
}

download_error_e DownloadTransfer::take(const char* bytes, std::size_t count)
try {
    if (!hasBegun_) {
        const download_error_e begun = begin();
        if (begun != DOWNLOAD_ERROR_NONE)
            return begun;
    }
    const download_error_e written = file_.write(received_, bytes, count);
    if (written == DOWNLOAD_ERROR_NONE)
        received_ += count;
    return written;
} catch (const std::bad_alloc&) {
    return DOWNLOAD_ERROR_OUT_OF_MEMORY;
}

download_error_e DownloadTransfer::begin()
{
    curl_easy_getinfo(handle_.get(), CURLINFO_RESPONSE_CODE, &httpStatus_);
    const bool isPart = httpStatus_ == HttpPartialContent;
    if (!isSuccess(httpStatus_) || (isPart && from_ == 0))
        return DOWNLOAD_ERROR_UNHANDLED_HTTP_CODE;
    if (isPart && !beginRest())
        return DOWNLOAD_ERROR_CANNOT_RESUME;
    if (!isPart)
        beginAnew();
    mark_ = mark();
    hasBegun_ = true;
    return DOWNLOAD_ERROR_NONE;
}

void DownloadTransfer::beginAnew()
{
    curl_off_t coming = -1;
    curl_easy_getinfo(handle_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &coming);
    received_ = 0;
    contentSize_ = coming < 0 ? 0 : static_cast<std::size_t>(coming);
}

// Another size than the one that was told before is that of another file.
bool DownloadTransfer::beginRest()
{
    const std::optional<ContentRange> range = contentRangeOf(header("Content-Range"));
    if (!range || range->first != from_)
        return false;
    const std::size_t total = range->total != 0 ? range->total : contentSize_;
    if (total == 0 || range->last != total - 1 || (contentSize_ != 0 && contentSize_ != total))
        return false;
    contentSize_ = total;
    return true;
}

std::string DownloadTransfer::header(const char* name) const
{
    curl_header* found = nullptr;
    const CURLHcode code = curl_easy_header(handle_.get(), name, 0, CURLH_HEADER, -1, &found);
    return code == CURLHE_OK ? found->value : "";
}

// A weak tag does not vouch for single bytes.
std::string DownloadTransfer::mark() const
{
    const std::string tag = header("ETag");
    return tag.empty() || tag.rfind("W/", 0) == 0 ? header("Last-Modified") : tag;
}

// The server was there to be asked, whether or not it answered.
bool DownloadTransfer::wasAsked() const
{
    curl_off_t untilConnected = 0;
    curl_easy_getinfo(handle_.get(), CURLINFO_PRETRANSFER_TIME_T, &untilConnected);
    return untilConnected > 0;
}

// What goes wrong before there is a connection counts as one that did not come in time, whatever the cause.
download_error_e DownloadTransfer::errorOf(CURLcode result) const
{
    switch (result) {
        case CURLE_OK:
            return DOWNLOAD_ERROR_NONE;
        case CURLE_HTTP_RETURNED_ERROR:
            return from_ > 0 && httpStatus_ == HttpRangeNotSatisfiable ? DOWNLOAD_ERROR_CANNOT_RESUME
                                                                       : DOWNLOAD_ERROR_UNHANDLED_HTTP_CODE;
        case CURLE_TOO_MANY_REDIRECTS:
            return DOWNLOAD_ERROR_TOO_MANY_REDIRECTS;
        case CURLE_URL_MALFORMAT:
        case CURLE_UNSUPPORTED_PROTOCOL:
            return DOWNLOAD_ERROR_INVALID_URL;
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_COULDNT_CONNECT:
            return DOWNLOAD_ERROR_CONNECTION_TIMED_OUT;
        case CURLE_OPERATION_TIMEDOUT:
            return wasAsked() ? DOWNLOAD_ERROR_RESPONSE_TIMEOUT : DOWNLOAD_ERROR_CONNECTION_TIMED_OUT;
        case CURLE_OUT_OF_MEMORY:
            return DOWNLOAD_ERROR_OUT_OF_MEMORY;
        default:
            return DOWNLOAD_ERROR_CONNECTION_FAILED;
    }
}

}  // namespace HostPlatform
