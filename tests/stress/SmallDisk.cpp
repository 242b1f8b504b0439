#include "SmallDisk.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace ServiceTest {

namespace {

void require(bool condition, const char* what)
{
    if (!condition)
        throw std::system_error(errno, std::generic_category(), what);
}

std::string fillerOf(const std::string& folder)
{
    return folder + "/filler";
}

}  // namespace

SmallDisk::SmallDisk(std::string folder, std::size_t bytes, std::size_t files) : folder_(std::move(folder))
{
    std::string options = "mode=755,size=" + std::to_string(bytes);
    if (files > 0)
        options += ",nr_inodes=" + std::to_string(files);
    require(mount("none", folder_.c_str(), "tmpfs", 0, options.c_str()) == 0, "mount");
}

SmallDisk::~SmallDisk()
{
    umount2(folder_.c_str(), MNT_DETACH);
}

void SmallDisk::fill(std::size_t left)
{
    struct statvfs room {};
    require(statvfs(folder_.c_str(), &room) == 0, "statvfs");
    const std::size_t pagesLeft = (left + room.f_bsize - 1) / room.f_bsize;
    const std::size_t pages = room.f_bavail - pagesLeft;
    const int file = open(fillerOf(folder_).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    require(file >= 0, "open");
    const int error = posix_fallocate(file, 0, static_cast<off_t>(pages * room.f_bsize));
    close(file);
    errno = error;
    require(error == 0, "posix_fallocate");
}

void SmallDisk::makeRoom()
{
    require(unlink(fillerOf(folder_).c_str()) == 0, "unlink");
}

void SmallDisk::makeReadOnly()
{
    remount(MS_RDONLY);
}

void SmallDisk::makeWritable()
{
    remount(0);
}

void SmallDisk::remount(unsigned long flags)
{
    require(mount(nullptr, folder_.c_str(), nullptr, MS_REMOUNT | flags, nullptr) == 0, "remount");
}

}  // namespace ServiceTest
