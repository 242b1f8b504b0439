// Reads a growing file line by line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "FolderWatch.h"

namespace Appliance {

// Main loop only. The file may appear later; its folder must exist.
//
// Where another file has taken the name, it goes on at that one's start, after what the old one has until
// then. Where the file has become shorter than what was read of it, it starts over; one that has grown past
// that place again before anybody looked passes for the same. A line without its end is handed out as it is
// when that happens.
class LogFollower {
  public:
    // What a line may have, without its newline; of a longer one the rest is left out. The cut may lie within
    // a character. It keeps no more than that in memory.
    static constexpr std::size_t MostLineBytes = 1'048'576;

    using LineHandler = std::function<void(const std::string& line)>;

    // From the byte `offset` on, or from the start of a file that is not there yet. Lines that are there
    // already come with the first readOn() or change. Throws std::system_error where the folder is not there.
    LogFollower(const std::filesystem::path& file, std::uintmax_t offset, LineHandler onLine);
    ~LogFollower();
    LogFollower(const LogFollower&) = delete;
    LogFollower& operator=(const LogFollower&) = delete;

    // Hands out every whole line written so far. What the handler throws comes out of it, and the next call
    // goes on behind that line.
    void readOn();

    // Hands out a last line that has no end yet. For whoever does not read on.
    void finish();

  private:
    bool isReplaced() const;
    bool reopen();
    void startOverWhereItIsShorter();
    void readToEnd();
    void take(const char* begin, const char* end);
    void handOut();
    void startOver();

    std::filesystem::path file_;
    LineHandler onLine_;
    std::uintmax_t offset_ = 0;
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
