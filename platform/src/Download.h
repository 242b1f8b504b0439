// A download as apps see it.
#pragma once

#include <download.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "DownloadOrder.h"

namespace HostPlatform {

template <typename Function>
struct DownloadCallback {
    Function function = nullptr;  // null: nobody listens
    void* userData = nullptr;
};

struct Download {
    explicit Download(int number) : id(number) {}

    const int id;
    DownloadOrder order;
    download_network_type_e networkType = DOWNLOAD_NETWORK_ALL;
    DownloadCallback<download_state_changed_cb> stateChanged;
    DownloadCallback<download_progress_cb> progress;
    download_state_e state = DOWNLOAD_STATE_READY;
    download_error_e error = DOWNLOAD_ERROR_NONE;
    int httpStatus = 0;
    std::size_t received = 0;
    std::size_t contentSize = 0;
    std::string path;           // in COMPLETED
    std::uint64_t attempt = 0;  // counts the starts from scratch
    bool isDestroyed = false;
};

}  // namespace HostPlatform
