// One page's stream of server-sent events.
#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <utility>

#include "Timeline.h"

namespace Screen {

// Used by the thread that serves the connection.
class EventStream {
  public:
    // How long a stream is silent at most.
    static constexpr std::chrono::milliseconds Beat{2000};

    // Counts one of the streams that are open, while it lives.
    class Seat {
      public:
        explicit Seat(std::atomic<std::size_t>& taken) : taken_(taken), number_(++taken_) {}
        ~Seat() { --taken_; }
        Seat(const Seat&) = delete;
        Seat& operator=(const Seat&) = delete;

        // How many there were with this one when it was taken.
        std::size_t number() const { return number_; }

      private:
        std::atomic<std::size_t>& taken_;
        const std::size_t number_;
    };

    // The timeline outlives this.
    EventStream(const Timeline& timeline, std::unique_ptr<Seat> seat)
        : timeline_(timeline), seat_(std::move(seat))
    {
    }
    // Waits for what is next and sends it. False where the stream is over.
    bool sendNext(httplib::DataSink& sink);

  private:
    bool sendWhole(httplib::DataSink& sink);

    const Timeline& timeline_;
    const std::unique_ptr<Seat> seat_;
    bool begun_ = false;
    std::uint64_t last_ = 0;
};

}  // namespace Screen
