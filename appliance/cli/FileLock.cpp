#include "FileLock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace Tool {

namespace {

// Open-file locks: held by one descriptor, and asking for the holder does not take them for a moment.
struct flock wholeFile()
{
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

int opened(const std::filesystem::path& file, int flags)
{
    return open(file.c_str(), flags | O_CLOEXEC, 0600);
}

}  // namespace

std::optional<FileLock> FileLock::take(const std::filesystem::path& file)
{
    const int fd = opened(file, O_RDWR | O_CREAT);
    if (fd < 0) {
        throw std::system_error(errno, std::generic_category(), file.string());
    }
    FileLock lock(fd);
    struct flock whole = wholeFile();
    if (fcntl(fd, F_OFD_SETLK, &whole) == 0) {
        return lock;
    }
    if (errno != EAGAIN && errno != EACCES) {
        throw std::system_error(errno, std::generic_category(), file.string());
    }
    return std::nullopt;
}

bool FileLock::isTaken(const std::filesystem::path& file)
{
    const int fd = opened(file, O_RDWR);
    if (fd < 0) {
        return false;
    }
    struct flock whole = wholeFile();
    const bool taken = fcntl(fd, F_OFD_GETLK, &whole) == 0 && whole.l_type != F_UNLCK;
    close(fd);
    return taken;
}

FileLock::FileLock(FileLock&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

FileLock::~FileLock()
{
    if (fd_ >= 0) {
        close(fd_);
    }
}

}  // namespace Tool
