#include "Progress.h"

#include <unistd.h>

#include <array>
#include <cstdio>

#include "Terminal.h"

namespace Tool {

namespace {

using namespace std::chrono_literals;

constexpr std::array<const char*, 10> Frames = {"⠋", "⠙", "⠹", "⠸", "⠼", "⠴", "⠦", "⠧", "⠇", "⠏"};

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

Progress::Progress(bool quiet) : quiet_(quiet), live_(!quiet && isTerminal(STDERR_FILENO)) {}

void Progress::show(const std::string& text)
{
    if (quiet_ || text == text_) {
        return;
    }
    text_ = text;
    if (!live_) {
        std::fprintf(stderr, "%s\n", text.c_str());
        return;
    }
    if (!ticker_) {
        since_ = std::chrono::steady_clock::now();
        ticker_.emplace(100ms, [this] { draw(); });
    }
    draw();
}

void Progress::clear()
{
    if (!live_) {
        return;  // the line stays, and need not be repeated
    }
    ticker_.reset();
    if (!text_.empty()) {
        std::fputs("\r\x1B[K", stderr);
    }
    text_.clear();
}

void Progress::draw()
{
    std::fprintf(stderr, "\r%s %s  %.1f s\x1B[K", Frames[frame_++ % Frames.size()], text_.c_str(),
                 secondsSince(since_));
    std::fflush(stderr);
}

}  // namespace Tool
