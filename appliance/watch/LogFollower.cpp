#include "LogFollower.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>

namespace Appliance {

namespace {

std::string readBlock(std::ifstream& in, std::uintmax_t from, std::uintmax_t to)
{
    std::string block(to - from, '\0');
    in.seekg(static_cast<std::streamoff>(from));
    in.read(block.data(), static_cast<std::streamsize>(block.size()));
    block.resize(static_cast<std::size_t>(in.gcount()));
    return block;
}

std::string headAt(const std::string& block, std::size_t start)
{
    const std::size_t end = std::min(block.find('\n', start), block.size());
    return block.substr(start, std::min(end - start, LineHeadBytes));
}

}  // namespace

LogFollower::LogFollower(const std::filesystem::path& file, std::uintmax_t offset, LineHandler onLine)
    : file_(file), onLine_(std::move(onLine)), watch_(file.parent_path(), [this](const std::string& name) {
          if (name.empty() || name == file_.filename()) {
              readOn();
          }
      })
{
    if (reopen()) {
        offset_ = offset;
    }
}

LogFollower::~LogFollower()
{
    if (fd_ >= 0) {
        close(fd_);
    }
}

// Nobody writes to the old file any more once its writer has opened the new one: it is read to its end after
// the new one was seen.
void LogFollower::readOn()
{
    const bool replaced = isReplaced();
    startOverWhereItIsShorter();
    readToEnd();
    if (replaced && reopen()) {
        startOver();
        readToEnd();
    }
}

// The old file's number is nobody else's as long as it is open here.
bool LogFollower::isReplaced() const
{
    struct stat named {};
    struct stat opened {};
    if (stat(file_.c_str(), &named) != 0) {
        return false;
    }
    return fstat(fd_, &opened) != 0 || named.st_dev != opened.st_dev || named.st_ino != opened.st_ino;
}

bool LogFollower::reopen()
{
    const int fd = open(file_.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    if (fd_ >= 0) {
        close(fd_);
    }
    fd_ = fd;
    return true;
}

void LogFollower::startOverWhereItIsShorter()
{
    struct stat opened {};
    if (fstat(fd_, &opened) == 0 && static_cast<std::uintmax_t>(opened.st_size) < offset_) {
        startOver();
    }
}

void LogFollower::startOver()
{
    offset_ = 0;
    finish();
}

void LogFollower::finish()
{
    if (!rest_.empty()) {
        handOut();
    }
}

void LogFollower::readToEnd()
{
    char buffer[8192];
    for (ssize_t length = 0; (length = pread(fd_, buffer, sizeof buffer, static_cast<off_t>(offset_))) > 0;) {
        take(buffer, buffer + length);
    }
}

// Moves on line by line, so that nothing is lost or comes twice when a handler throws.
void LogFollower::take(const char* begin, const char* end)
{
    while (begin != end) {
        const char* newline = std::find(begin, end, '\n');
        const auto length = static_cast<std::size_t>(newline - begin);
        rest_.append(begin, std::min(length, MostLineBytes - rest_.size()));
        begin = newline == end ? end : newline + 1;
        offset_ += length + (newline == end ? 0 : 1);
        if (newline != end) {
            handOut();
        }
    }
}

void LogFollower::handOut()
{
    const std::string line = std::exchange(rest_, {});
    onLine_(line);
}

std::uintmax_t endOf(const std::filesystem::path& file)
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    return error ? 0 : size;
}

std::uintmax_t startOfLastLines(const std::filesystem::path& file, std::size_t lines, const LineJudge& counts)
{
    constexpr std::uintmax_t blockSize = 65536;
    std::ifstream in(file, std::ios::binary);
    const std::uintmax_t size = endOf(file);
    std::size_t found = 0;
    if (lines == 0) {
        return size;
    }
    for (std::uintmax_t to = size; to > 0;) {
        const std::uintmax_t from = to - std::min(to, blockSize);
        // What follows is read once more for the line that starts at the block's end.
        const std::string block = readBlock(in, from, counts ? std::min(size, to + LineHeadBytes) : to);
        for (std::size_t i = std::min<std::size_t>(block.size(), to - from); i-- > 0;) {
            const bool endsTheFile = from + i + 1 == size;
            if (block[i] == '\n' && !endsTheFile && (!counts || counts(headAt(block, i + 1))) &&
                ++found == lines) {
                return from + i + 1;
            }
        }
        to = from;
    }
    return 0;
}

std::string lastLines(const std::filesystem::path& file, std::size_t lines)
{
    const std::uintmax_t from = startOfLastLines(file, lines);
    std::ifstream in(file, std::ios::binary);
    in.seekg(static_cast<std::streamoff>(from));
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace Appliance
