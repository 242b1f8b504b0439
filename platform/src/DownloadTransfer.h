// One download on its way, with libcurl.
#pragma once

#include <curl/curl.h>
#include <download.h>

#include <memory>
#include <string>

#include "DownloadFile.h"
#include "DownloadOrder.h"

namespace HostPlatform {

/**
 * Fetches a file in one stretch, or in several with pauses between them: what came before a pause is not
 * asked for again, unless the server has something else by then or knows no parts, in which case the file
 * starts anew. Destroying the object ends the transfer and removes its file, unless that was kept.
 *
 * One thread, which runs the libcurl multi handle.
 */
class DownloadTransfer {
  public:
    explicit DownloadTransfer(DownloadOrder order);
    ~DownloadTransfer();
    DownloadTransfer(const DownloadTransfer&) = delete;
    DownloadTransfer& operator=(const DownloadTransfer&) = delete;

    /** Begins a stretch in @p multi, which from then on reports its end with this object as CURLINFO_PRIVATE.
     */
    download_error_e go(CURLM* multi);
    bool isGoing() const { return handle_ != nullptr; }

    /** Ends the stretch. May wait for libcurl's look-up of the server's name. */
    void halt();

    /** To be called when libcurl reports the stretch's end: ends it, and tells what came of it. */
    download_error_e finish(CURLcode result);

    /** The file is there from its first to its last byte: no further stretch is needed. */
    bool isWhole() const { return isWhole_; }

    /** Whether the file is where it was made; somebody may have removed it since it became whole. */
    bool isStillThere() const { return file_.isStillThere(); }

    /** The file is the user's now. */
    void keepFile() { file_.keep(); }

    /** Whether something of the file has come in the current stretch, or all of it before. */
    bool hasBegun() const { return hasBegun_ || isWhole_; }
    std::size_t received() const { return received_; }
    std::size_t contentSize() const { return contentSize_; }
    int httpStatus() const { return static_cast<int>(httpStatus_); }
    const std::string& path() const { return file_.path(); }

  private:
    struct FreeHandle {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    };
    struct FreeList {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    bool isNothingMissing() const;
    download_error_e seal();
    bool setUp();
    bool askForTheRest();
    static std::size_t onBytes(char* bytes, std::size_t one, std::size_t count, void* self);
    download_error_e take(const char* bytes, std::size_t count);
    download_error_e begin();
    void beginAnew();
    bool beginRest();
    std::string header(const char* name) const;
    std::string mark() const;
    bool wasAsked() const;
    download_error_e errorOf(CURLcode result) const;

    const DownloadOrder order_;
    DownloadFile file_;
    std::unique_ptr<curl_slist, FreeList> headers_;
    std::unique_ptr<CURL, FreeHandle> handle_;
    CURLM* multi_ = nullptr;                          // where the stretch is
    download_error_e failure_ = DOWNLOAD_ERROR_NONE;  // ours, which libcurl only knows as a write error
    bool hasBegun_ = false;
    bool isWhole_ = false;
    std::size_t from_ = 0;  // where the stretch starts
    std::size_t received_ = 0;
    std::size_t contentSize_ = 0;  // 0: not told
    long httpStatus_ = 0;
    std::string mark_;  // by which the server knows the version that the file is of; empty: it has none
};

}  // namespace HostPlatform
