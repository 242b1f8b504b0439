// A file that one holder at a time can lock.
#pragma once

#include <filesystem>
#include <optional>

namespace Tool {

// The lock is free when the object is gone, or its process. Any thread.
class FileLock {
  public:
    // Makes the file where needed, in a folder that is there. Nothing when somebody holds the lock.
    // Throws std::system_error when the file cannot be opened or locked.
    static std::optional<FileLock> take(const std::filesystem::path& file);

    // Whether somebody holds the lock, this process included.
    static bool isTaken(const std::filesystem::path& file);

    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&&) = delete;
    ~FileLock();

  private:
    explicit FileLock(int fd) : fd_(fd) {}

    int fd_;
};

}  // namespace Tool
