// Tells what is being waited for, while it is being waited for.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "EventLoop.h"

namespace Tool {

// On a terminal one line that is rewritten and leaves no trace; elsewhere a plain line for each new text.
// Goes to standard error, so that standard output holds the result alone. Main loop only.
class Progress {
  public:
    // Quiet: shows nothing at all.
    explicit Progress(bool quiet = false);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(const std::string& text);

    // Takes the line away, so that something else can be printed.
    void clear();

  private:
    void draw();

    bool quiet_;
    bool live_;
    std::string text_;
    std::size_t frame_ = 0;
    std::chrono::steady_clock::time_point since_;
    std::optional<Appliance::Ticker> ticker_;
};

}  // namespace Tool
