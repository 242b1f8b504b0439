// A UI app that answers by itself, for tests that look elsewhere.
#pragma once

#include <thread>

#include "RawPeer.h"

namespace ServiceTest {

/** Answers product lists on its own thread: mostly yes, now and then no, or not at all. */
class LivelyUi {
  public:
    /** @p answers is where its five kinds of answers begin. */
    explicit LivelyUi(unsigned answers) : answers_(answers), peer_(UiId), thread_([this] { run(); }) {}
    ~LivelyUi()
    {
        TestSupport::RawPeer().launch(UiId, Stop);
        thread_.join();
    }
    LivelyUi(const LivelyUi&) = delete;
    LivelyUi& operator=(const LivelyUi&) = delete;

  private:
    static constexpr const char* UiId = "org.tizen.carvoy";
    static constexpr const char* Stop = "http://tizen.org/appcontrol/operation/stop";

    void run()
    {
        while (const auto message = peer_.nextLaunch()) {
            if (message->operation == Stop)
                return;
            if (message->id != 0)
                answer(*message);
        }
    }

    // The service may have ended meanwhile: what comes back does not matter.
    void answer(const TestSupport::RawMessage& message)
    {
        const unsigned choice = answers_++ % 5;
        if (choice != 0)
            peer_.reply(message.sender, message.id, choice == 1 ? -1 : 0);
    }

    unsigned answers_;
    TestSupport::RawPeer peer_;
    std::thread thread_;
};

}  // namespace ServiceTest
