// The file that a download fills.
#pragma once

#include <download.h>

#include <cstddef>
#include <string>

namespace HostPlatform {

/**
 * A new file under a name that nobody had: it is there, under that name, from open() on. Unless keep() is
 * called it goes with the object. One thread.
 */
class DownloadFile {
  public:
    DownloadFile() = default;
    ~DownloadFile();
    DownloadFile(const DownloadFile&) = delete;
    DownloadFile& operator=(const DownloadFile&) = delete;

    /**
     * Makes the file @p name in @p folder, or, where there is one already, with a number in front of the
     * extension: "name_1.png". INVALID_DESTINATION: the folder is not there.
     */
    download_error_e open(const std::string& folder, const std::string& name);
    bool isOpen() const { return descriptor_ >= 0; }

    download_error_e write(std::size_t offset, const char* bytes, std::size_t count);

    /** Cuts the file to its @p size and closes it. IO_ERROR where somebody removed it in the meantime. */
    download_error_e finish(std::size_t size);

    /** Whether the path still leads to this file. */
    bool isStillThere() const;

    /** The file is the user's now. */
    void keep() { isKept_ = true; }

    /** Absolute where the folder is. */
    const std::string& path() const { return path_; }

  private:
    int descriptor_ = -1;
    bool isKept_ = false;
    std::string path_;
};

}  // namespace HostPlatform
