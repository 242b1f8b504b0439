// Downloads of the platform, what they tell, and a server that can be made to wait.
#pragma once

#include <download.h>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "HttpServer.h"
#include "Latch.h"
#include "Patience.h"
#include "ScratchRoot.h"

using States = std::vector<int>;

// What a download told, in order. Any thread.
class Heard {
  public:
    void state(int id, int state)
    {
        note([&] {
            ids_.push_back(id);
            states_.push_back(state);
        });
    }

    void progress(unsigned long long received)
    {
        note([&] {
            progress_.push_back(received);
            statesBefore_.push_back(states_.size());
        });
    }

    // False if the state was not told in the time that a test has.
    bool waitFor(int state)
    {
        return waitUntil([&] { return std::count(states_.begin(), states_.end(), state) > 0; });
    }

    bool waitForProgress(unsigned long long received)
    {
        return waitUntil([&] { return !progress_.empty() && progress_.back() >= received; });
    }

    States states() const { return locked(states_); }
    std::vector<int> ids() const { return locked(ids_); }
    std::vector<unsigned long long> progress() const { return locked(progress_); }
    std::vector<pid_t> threads() const { return locked(threads_); }

    // The state that was told last before each progress.
    States statesBeforeProgress() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        States before;
        for (const std::size_t count : statesBefore_)
            before.push_back(count == 0 ? 0 : states_[count - 1]);
        return before;
    }

    void forget()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        states_.clear();
        progress_.clear();
        statesBefore_.clear();
    }

  private:
    template <typename Step>
    void note(Step step)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        threads_.push_back(gettid());
        step();
        changed_.notify_all();
    }

    template <typename Condition>
    bool waitUntil(Condition condition)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, TestSupport::Patience, condition);
    }

    template <typename List>
    List locked(const List& list) const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return list;
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<int> ids_;
    States states_;
    std::vector<unsigned long long> progress_;
    std::vector<std::size_t> statesBefore_;
    std::vector<pid_t> threads_;
};

// A download that tells everything to `heard`, and is destroyed with the object.
class TestDownload {
  public:
    TestDownload()
    {
        EXPECT_EQ(download_create(&id), DOWNLOAD_ERROR_NONE);
        EXPECT_EQ(download_set_state_changed_cb(id, onState, &heard), DOWNLOAD_ERROR_NONE);
        EXPECT_EQ(download_set_progress_cb(id, onProgress, &heard), DOWNLOAD_ERROR_NONE);
    }
    ~TestDownload() { download_destroy(id); }
    TestDownload(const TestDownload&) = delete;
    TestDownload& operator=(const TestDownload&) = delete;

    int start(const std::string& url, const std::string& folder, const std::string& name) const
    {
        EXPECT_EQ(download_set_url(id, url.c_str()), DOWNLOAD_ERROR_NONE);
        EXPECT_EQ(download_set_destination(id, folder.c_str()), DOWNLOAD_ERROR_NONE);
        EXPECT_EQ(download_set_file_name(id, name.c_str()), DOWNLOAD_ERROR_NONE);
        return download_start(id);
    }

    int state() const
    {
        download_state_e state = DOWNLOAD_STATE_NONE;
        EXPECT_EQ(download_get_state(id, &state), DOWNLOAD_ERROR_NONE);
        return state;
    }

    int error() const
    {
        download_error_e error = DOWNLOAD_ERROR_NONE;
        EXPECT_EQ(download_get_error(id, &error), DOWNLOAD_ERROR_NONE);
        return error;
    }

    int httpStatus() const
    {
        int status = -1;
        EXPECT_EQ(download_get_http_status(id, &status), DOWNLOAD_ERROR_NONE);
        return status;
    }

    unsigned long long contentSize() const
    {
        unsigned long long size = 1;
        EXPECT_EQ(download_get_content_size(id, &size), DOWNLOAD_ERROR_NONE);
        return size;
    }

    // Empty where there is none.
    std::string path() const
    {
        char* path = nullptr;
        const int result = download_get_downloaded_file_path(id, &path);
        EXPECT_EQ(result == DOWNLOAD_ERROR_NONE, path != nullptr);
        const std::string text = path ? path : "";
        std::free(path);
        return text;
    }

    int id = 0;
    Heard heard;

  private:
    static void onState(int id, download_state_e state, void* heard)
    {
        static_cast<Heard*>(heard)->state(id, state);
    }

    static void onProgress(int, unsigned long long received, void* heard)
    {
        static_cast<Heard*>(heard)->progress(received);
    }
};

class Downloads : public testing::Test {
  protected:
    Downloads() : folder(TestSupport::ScratchRoot::file("downloads"))
    {
        // What the test before has given up may just be on its way out of the folder.
        std::error_code error;
        do
            std::filesystem::remove_all(folder, error);
        while (error == std::errc::no_such_file_or_directory);
        std::filesystem::create_directory(folder);
        server.answer("/missing.png", 404, "no such picture");
        server.answer("/empty.png", 200, "");
        server.answer("/part.png", 206, "a part that nobody asked for");
        server.answer("/unmoved.png", 300, "which one?");
        server.breakOff("/broken.png", "half of it");
        server.redirect("/moved.png", "/milk.png");
        server.redirect("/round.png", "/round.png");
        server.redirect("/elsewhere.png", "ftp://localhost/milk.png");
        server.Get("/silent.png", [this](const httplib::Request& request, httplib::Response& response) {
            released.wait();
            answerPicture(request, response);
        });
        halves("/halves.png", true);
        halves("/unmeasured.png", false);
    }

    ~Downloads() override { released.open(); }

    // Every other path gives the picture.
    void SetUp() override
    {
        server.Get(".*", [this](const httplib::Request& request, httplib::Response& response) {
            answerPicture(request, response);
        });
        server.start();
    }

    void answerPicture(const httplib::Request& request, httplib::Response& response)
    {
        noteRange(request);
        response.set_content(picture, "image/png");
    }

    // The path gives the first half of the picture, and the second when it is released.
    void halves(const std::string& path, bool isMeasured)
    {
        server.Get(path, [this, isMeasured](const httplib::Request& request, httplib::Response& response) {
            noteRange(request);
            giveHalves(response, isMeasured);
        });
    }

    void giveHalves(httplib::Response& response, bool isMeasured)
    {
        if (isMeasured)
            response.set_content_provider(
                picture.size(), "image/png",
                [this](size_t offset, size_t, httplib::DataSink& sink) { return give(offset, sink); });
        else
            response.set_chunked_content_provider("image/png",
                                                  [this](size_t offset, httplib::DataSink& sink) {
                                                      const bool goesOn = give(offset, sink);
                                                      if (offset >= picture.size() / 2)
                                                          sink.done();
                                                      return goesOn;
                                                  });
    }

    bool give(size_t offset, httplib::DataSink& sink)
    {
        const size_t half = picture.size() / 2;
        if (offset >= half)
            released.wait();
        const size_t end = offset < half ? half : picture.size();
        return sink.write(picture.data() + offset, end - offset);
    }

    int start(const TestDownload& download, const std::string& path, const std::string& name = "milk.png")
    {
        return download.start(server.url(path), folder, name);
    }

    // Starts a download and waits for how it ends.
    States outcome(TestDownload& download, const std::string& path, int end)
    {
        EXPECT_EQ(start(download, path), DOWNLOAD_ERROR_NONE);
        EXPECT_TRUE(download.heard.waitFor(end));
        return download.heard.states();
    }

    std::vector<std::string> files() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    static std::string contentOf(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    void noteRange(const httplib::Request& request)
    {
        if (request.has_header("Range"))
            note(request.get_header_value("Range"));
    }

    void note(const std::string& range)
    {
        const std::lock_guard<std::mutex> lock(rangesMutex_);
        ranges_.push_back(range);
    }

    std::vector<std::string> ranges()
    {
        const std::lock_guard<std::mutex> lock(rangesMutex_);
        return ranges_;
    }

    const std::string folder;
    const std::string picture = std::string("\x89PNG\r\n\x1A\n\0\0", 10) + std::string(299'990, '\xA5');
    Latch released;

  private:
    std::mutex rangesMutex_;
    std::vector<std::string> ranges_;

  protected:
    HttpServer server;  // last: its threads use all of the above
};

// The callbacks' states in the order of a download that nothing disturbs.
inline const States kGood = {DOWNLOAD_STATE_QUEUED, DOWNLOAD_STATE_DOWNLOADING, DOWNLOAD_STATE_COMPLETED};
inline const States kFailed = {DOWNLOAD_STATE_QUEUED, DOWNLOAD_STATE_FAILED};
