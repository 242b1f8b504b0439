#include "DownloadFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace HostPlatform {

namespace {

constexpr mode_t FileMode = 0644;
constexpr int MostNames = 10'000;

download_error_e errorOf(int code)
{
    switch (code) {
        case ENOSPC:
        case EDQUOT:
            return DOWNLOAD_ERROR_NO_SPACE;
        case EACCES:
        case EPERM:
        case EROFS:
            return DOWNLOAD_ERROR_PERMISSION_DENIED;
        default:
            return DOWNLOAD_ERROR_IO_ERROR;
    }
}

std::string numbered(const std::string& name, int number)
{
    if (number == 0)
        return name;
    const std::size_t dot = name.rfind('.');
    const std::size_t end = dot == std::string::npos || dot == 0 ? name.size() : dot;
    return name.substr(0, end) + "_" + std::to_string(number) + name.substr(end);
}

bool isSameFile(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

}  // namespace

DownloadFile::~DownloadFile()
{
    if (!isOpen())
        return;
    if (!isKept_ && isStillThere())
        unlink(path_.c_str());
    ::close(descriptor_);
}

download_error_e DownloadFile::open(const std::string& folder, const std::string& name)
{
    const std::string start = folder.back() == '/' ? folder : folder + "/";
    for (int number = 0; number < MostNames; ++number) {
        path_ = start + numbered(name, number);
        descriptor_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, FileMode);
        if (isOpen())
            return DOWNLOAD_ERROR_NONE;
        if (errno == ENOENT || errno == ENOTDIR)
            return DOWNLOAD_ERROR_INVALID_DESTINATION;
        if (errno != EEXIST)
            return errorOf(errno);
    }
    return DOWNLOAD_ERROR_FILE_ALREADY_EXISTS;
}

download_error_e DownloadFile::write(std::size_t offset, const char* bytes, std::size_t count)
{
    while (count > 0) {
        const ssize_t written = pwrite(descriptor_, bytes, count, static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return errorOf(errno);
        offset += static_cast<std::size_t>(written);
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return DOWNLOAD_ERROR_NONE;
}

download_error_e DownloadFile::finish(std::size_t size)
{
    if (ftruncate(descriptor_, static_cast<off_t>(size)) != 0)
        return errorOf(errno);
    return isStillThere() ? DOWNLOAD_ERROR_NONE : DOWNLOAD_ERROR_IO_ERROR;
}

// Whoever wiped the folder may have put another file in our place.
bool DownloadFile::isStillThere() const
{
    struct stat ours {};
    struct stat there {};
    return fstat(descriptor_, &ours) == 0 && stat(path_.c_str(), &there) == 0 && isSameFile(ours, there);
}

}  // namespace HostPlatform
