// A downloader over the platform's download service, its main loop, and a server with pictures.
#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "AsyncThread.h"
#include "DownloadStandIn.h"
#include "HttpServer.h"
#include "ImageDownloader.h"
#include "ImageFolder.h"
#include "Latch.h"
#include "MainLoop.h"
#include "ObservedTest.h"
#include "Singleton.h"

class PlatformDownload : public ObservedTest {
  protected:
    using State = Util::ImageDownloader::State;
    using Holder = Util::Singleton<Util::AsyncThread>;

    PlatformDownload()
    {
        server.answer("/missing.png", 404, "no such picture");
        halves(server, released);
        server.Get(".*", [this](const httplib::Request&, httplib::Response& response) {
            response.set_content(picture, "image/png");
        });
        server.start();
        TestSupport::DownloadStandIn::reset();
    }

    ~PlatformDownload() override
    {
        released.open();
        for (const int id : ids)
            download_destroy(id);
        if (Holder::mInstance) {
            letEverythingComplete();
            delete Holder::mInstance;
            Holder::mInstance = nullptr;
        }
        downloader = std::make_unique<Util::ImageDownloader>();
        downloader->clearAllDownloadedImages();
    }

    // A picture of which the second half comes when the latch is opened.
    void halves(HttpServer& from, Latch& latch)
    {
        from.Get("/halves.png", [this, &latch](const httplib::Request&, httplib::Response& response) {
            response.set_content_provider(picture.size(), "image/png",
                                          [this, &latch](size_t offset, size_t, httplib::DataSink& sink) {
                                              const size_t half = picture.size() / 2;
                                              if (offset >= half)
                                                  latch.wait();
                                              const size_t end = offset < half ? half : picture.size();
                                              return sink.write(picture.data() + offset, end - offset);
                                          });
        });
    }

    int init()
    {
        ids.push_back(downloader->initDownload());
        EXPECT_GT(ids.back(), 0);
        return ids.back();
    }

    // Notes what is told and ends the loop with the download.
    int start(int id, const std::string& url, void* userData = nullptr)
    {
        return downloader->startDownload(
            id, url.c_str(), [this](int of, State state, void* data) { noteState(of, state, data); },
            [this](int, uint64_t received, void*) { progress.push_back(received); }, userData);
    }

    void noteState(int id, State state, void* userData)
    {
        states.push_back(state);
        idsTold.push_back(id);
        userDataTold.push_back(userData);
        threads.push_back(gettid());
        if (state == quitAt || state == State::COMPLETED || state == State::FAILED)
            MainLoop::quit();
    }

    // Runs the loop until everything that was queued before has been completed.
    void letEverythingComplete()
    {
        Holder::getInstance()->asyncCall([] { return true; }, [] { MainLoop::quit(); });
        EXPECT_TRUE(loop.run());
    }

    // The platform's calls of that name so far, as texts.
    static List callsOf(const std::string& name)
    {
        List texts;
        for (const TestSupport::Call& call : TestSupport::Calls::of(name)) {
            std::string text;
            for (const std::string& argument : call.arguments)
                text += (text.empty() ? "" : " ") + argument;
            texts.push_back(text);
        }
        return texts;
    }

    static std::string textOf(const void* pointer)
    {
        return std::to_string(reinterpret_cast<uintptr_t>(pointer));
    }

    const std::string picture = std::string("\x89PNG\r\n\x1A\n\0\0", 10) + std::string(100'000, '\xA5');
    Latch released;
    MainLoop loop;
    HttpServer server;
    std::unique_ptr<Util::ImageDownloader> downloader = std::make_unique<Util::ImageDownloader>();
    std::vector<int> ids;  // destroyed with the test

    std::vector<State> states;
    std::vector<uint64_t> progress;
    std::vector<int> idsTold;
    std::vector<void*> userDataTold;
    std::vector<pid_t> threads;
    State quitAt = State::COMPLETED;
};
