// One page's stream of server-sent events.
#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <cstdint>

#include "Timeline.h"

namespace Screen {

// Used by the thread that serves the connection.
class EventStream {
  public:
    // How long a stream is silent at most.
    static constexpr std::chrono::milliseconds Beat{2000};

    // `open` counts the streams. Both outlive this.
    EventStream(const Timeline& timeline, std::atomic<std::size_t>& open) : timeline_(timeline), open_(open)
    {
        ++open_;
    }
    ~EventStream() { --open_; }
    EventStream(const EventStream&) = delete;
    EventStream& operator=(const EventStream&) = delete;

    // Waits for what is next and sends it. False where the stream is over.
    bool sendNext(httplib::DataSink& sink);

  private:
    bool sendWhole(httplib::DataSink& sink);

    const Timeline& timeline_;
    std::atomic<std::size_t>& open_;
    bool begun_ = false;
    std::uint64_t last_ = 0;
};

}  // namespace Screen
