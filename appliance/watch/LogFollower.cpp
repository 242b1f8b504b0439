#include "LogFollower.h"

#include <fcntl.h>
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
    : file_(file),
      onLine_(std::move(onLine)),
      offset_(offset),
      watch_(file.parent_path(), [this](const std::string& name) {
          if (name.empty() || name == file_.filename()) {
              readOn();
          }
      })
{
}

LogFollower::~LogFollower()
{
    if (fd_ >= 0) {
        close(fd_);
    }
}

bool LogFollower::openFile()
{
    if (fd_ < 0) {
        fd_ = open(file_.c_str(), O_RDONLY | O_CLOEXEC);
    }
    return fd_ >= 0;
}

void LogFollower::readOn()
{
    if (!openFile()) {
        return;
    }
    char buffer[8192];
    for (ssize_t length = 0; (length = pread(fd_, buffer, sizeof buffer, static_cast<off_t>(offset_))) > 0;) {
        offset_ += static_cast<std::uintmax_t>(length);
        rest_.append(buffer, static_cast<std::size_t>(length));
        for (std::size_t end = 0; (end = rest_.find('\n')) != std::string::npos;) {
            const std::string line = rest_.substr(0, end);
            rest_.erase(0, end + 1);
            onLine_(line);
        }
    }
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
