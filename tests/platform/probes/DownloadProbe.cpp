// Ends while a download is under way, in one of several manners, and tells what the end left behind:
// MANNER [URL FOLDER].
#include <download.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "Latch.h"
#include "ThreadStartFault.h"

namespace {

void say(const char* text)
{
    std::puts(text);
    std::fflush(stdout);
}

// Made before the first download, and therefore destroyed after the download service has ended.
struct LastObject {
    std::string folder;
    int id = 0;
    bool usesDownloads = false;

    ~LastObject()
    {
        if (!folder.empty())
            say(std::filesystem::is_empty(folder) ? "empty" : "not empty");
        if (usesDownloads)
            useDownloads();
    }

    void useDownloads() const
    {
        download_state_e state = DOWNLOAD_STATE_NONE;
        download_get_state(id, &state);
        const bool isCanceled = download_cancel(id) == DOWNLOAD_ERROR_NONE;
        if (state == DOWNLOAD_STATE_DOWNLOADING && isCanceled &&
            download_start(id) == DOWNLOAD_ERROR_SYSTEM_DOWN && download_destroy(id) == DOWNLOAD_ERROR_NONE)
            say("cannot be started");
    }
};

LastObject last;
Latch came;
Latch over;
bool exitsInCallback = false;

void onProgress(int, unsigned long long received, void*)
{
    if (received == 0)
        return;
    if (exitsInCallback) {
        say("exits");
        std::exit(EXIT_SUCCESS);
    }
    came.open();
}

void onState(int id, download_state_e state, void*)
{
    download_error_e error = DOWNLOAD_ERROR_NONE;
    download_get_error(id, &error);
    if (state == DOWNLOAD_STATE_COMPLETED)
        say("completed");
    if (state == DOWNLOAD_STATE_FAILED)
        say(("failed " + std::to_string(error)).c_str());
    if (state == DOWNLOAD_STATE_COMPLETED || state == DOWNLOAD_STATE_FAILED)
        over.open();
}

void start(const char* url, const char* folder)
{
    download_create(&last.id);
    download_set_url(last.id, url);
    download_set_destination(last.id, folder);
    download_set_progress_cb(last.id, onProgress, nullptr);
    download_set_state_changed_cb(last.id, onState, nullptr);
    download_start(last.id);
}

// A first start for which there is no thread, and a second one.
int startWithoutThread(const char* url)
{
    download_create(&last.id);
    download_set_url(last.id, url);
    int result = DOWNLOAD_ERROR_NONE;
    {
        const ThreadStartFault none;
        result = download_start(last.id);
    }
    download_state_e state = DOWNLOAD_STATE_NONE;
    download_get_state(last.id, &state);
    if (result == DOWNLOAD_ERROR_SYSTEM_DOWN && state == DOWNLOAD_STATE_READY)
        say("cannot be started");
    if (download_start(last.id) == DOWNLOAD_ERROR_NONE)
        say("started");
    return EXIT_SUCCESS;
}

}  // namespace

int main(int, char** arguments)
{
    const std::string manner = arguments[1];
    if (manner == "no-thread")
        return startWithoutThread(arguments[2]);
    if (manner == "unused") {
        download_create(&last.id);
        say("ends");
        return EXIT_SUCCESS;
    }
    exitsInCallback = manner == "exit-in-callback";
    last.usesDownloads = manner == "use-at-the-end";
    start(arguments[2], arguments[3]);
    if (manner == "fetch")
        return over.wait() ? EXIT_SUCCESS : EXIT_FAILURE;
    // Not by waiting for an object, which the other thread's exit would destroy.
    while (exitsInCallback)
        pause();
    last.folder = arguments[3];
    if (!came.wait())
        return EXIT_FAILURE;
    say("ends");
    return EXIT_SUCCESS;
}
