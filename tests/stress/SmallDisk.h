// A real file system that is small enough to be filled, and can be made read-only.
#pragma once

#include <cstddef>
#include <string>

namespace ServiceTest {

/**
 * Lies over a folder, in memory, as long as the object lives; where whyNoMounts() says nothing only. All of
 * it throws std::system_error where the system refuses. One thread.
 */
class SmallDisk {
  public:
    /** Room for so many bytes, in whole pages, and, where given, for so many files and folders, itself one.
     */
    SmallDisk(std::string folder, std::size_t bytes, std::size_t files = 0);
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    /** Puts a file there that leaves room for that much, in whole pages. */
    void fill(std::size_t left = 0);

    /** Removes that file. */
    void makeRoom();

    /** Nobody may have a file open for writing. */
    void makeReadOnly();
    void makeWritable();

  private:
    void remount(unsigned long flags);

    std::string folder_;
};

}  // namespace ServiceTest
