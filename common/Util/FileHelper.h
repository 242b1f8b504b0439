// Whole files: written, read and removed at one go.
#pragma once

#include <string>

namespace Util {

/**
 * The path of a file, and a copy of some bytes that the object owns: what was set, or what was read. It has
 * data or it has not; without, `data` is null and `size` is 0. Only setCopiedData() changes the two.
 *
 * One thread at a time uses an object. It is not copied: two owners of the same bytes would free them twice.
 */
class FileContent {
  public:
    /** Copies `filePath`, for which there must be memory; null counts as the empty path, at which there is
     * never a file. */
    explicit FileContent(const char* filePath);
    virtual ~FileContent();
    FileContent(const FileContent&) = delete;
    FileContent& operator=(const FileContent&) = delete;

    /**
     * Replaces the bytes with a copy of `count` bytes from `bytes`, which may lie in the object's own data.
     * Where `bytes` is null, `count` is below 1, or there is no memory for them, that is logged and the
     * object keeps what it has.
     */
    void setCopiedData(const char* bytes, int count);

    const std::string path;
    int size = 0;          // bytes in `data`
    char* data = nullptr;  // the object's own
    /** Whether FileHelper::write() puts one zero byte behind the data. Set it at will. */
    bool nullTerminate = false;
};

/**
 * Any thread, also several at once, each with a content of its own. All calls block on the disk. Nothing is
 * thrown: a failure is logged as one error, and the result is false.
 */
class FileHelper {
  public:
    /**
     * Makes the data the whole of the file, which need not be there, and waits until it is on the disk. False
     * where there is no data or the file cannot be opened. Whether the disk took all of it is not checked.
     */
    static bool write(FileContent& content);

    /**
     * Makes the whole file the content's data. An empty file is read, but as no data can be set the content
     * keeps what it has, and that is logged. False, with the earlier data in place, for what is no file or
     * cannot be measured, for a file of 2 GiB or more, for one that shrinks in the meantime, and where there
     * is no memory.
     */
    static bool read(FileContent& content);

    /** Deletes the file. The content's data stays. */
    static bool remove(FileContent& content);
};

}  // namespace Util
