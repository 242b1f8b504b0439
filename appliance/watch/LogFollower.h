// Reads a growing file line by line.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "FolderWatch.h"

namespace Appliance {

// Main loop only. The file may appear later; its folder must exist.
class LogFollower {
  public:
    using LineHandler = std::function<void(const std::string& line)>;

    // From the byte `offset` on. Lines that are there already come with the first readOn() or change.
    LogFollower(const std::filesystem::path& file, std::uintmax_t offset, LineHandler onLine);
    ~LogFollower();
    LogFollower(const LogFollower&) = delete;
    LogFollower& operator=(const LogFollower&) = delete;

    // Hands out every whole line written so far.
    void readOn();

  private:
    bool openFile();

    std::filesystem::path file_;
    LineHandler onLine_;
    std::uintmax_t offset_;
    int fd_ = -1;
    std::string rest_;  // a line without its end yet
    FolderWatch watch_;
};

// The file's size; 0 where there is none.
std::uintmax_t endOf(const std::filesystem::path& file);

// Whether a line counts. It is given the line's first LineHeadBytes bytes, without its newline.
using LineJudge = std::function<bool(const std::string& head)>;
inline constexpr std::size_t LineHeadBytes = 4096;

// The offset at which the last `lines` lines of the file start, or the last of those that count; 0 where
// there are fewer. A line that has no newline yet is a line. Keeps no more in memory than a block of the
// file.
std::uintmax_t startOfLastLines(const std::filesystem::path& file, std::size_t lines,
                                const LineJudge& counts = nullptr);

// The last lines as text, each with its newline.
std::string lastLines(const std::filesystem::path& file, std::size_t lines);

}  // namespace Appliance
