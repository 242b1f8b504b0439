#include "FileHelper.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include <sys/stat.h>
#include <unistd.h>

#include "Log.h"

namespace Util {

namespace {

struct FileCloser {
    void operator()(FILE* file) const { fclose(file); }
};

using File = std::unique_ptr<FILE, FileCloser>;
using Bytes = std::unique_ptr<char[]>;

File openFile(const FileContent& content, const char* mode)
{
    return File(fopen(content.path.c_str(), mode));
}

/** Null where there is no memory. */
Bytes allocate(int count)
{
    return Bytes(new (std::nothrow) char[static_cast<size_t>(count)]);
}

/** A folder opens for reading like a file; its length is 0 on some file systems and huge on others. */
bool isFolder(FILE* file)
{
    struct stat status = {};
    return fstat(fileno(file), &status) == 0 && S_ISDIR(status.st_mode);
}

/** Bytes from start to end, the position being at the start again; -1 where no content can hold them. */
int lengthOf(FILE* file)
{
    if (isFolder(file) || fseek(file, 0, SEEK_END) != 0)
        return -1;
    const long length = ftell(file);
    return length <= INT_MAX && fseek(file, 0, SEEK_SET) == 0 ? static_cast<int>(length) : -1;
}

/** The next `length` bytes; null where there are fewer, where `length` is negative or there is no memory. */
Bytes readBytes(FILE* file, int length)
{
    Bytes bytes = length < 0 ? nullptr : allocate(length);
    if (!bytes)
        return nullptr;
    const size_t count = static_cast<size_t>(length);
    return fread(bytes.get(), 1, count, file) == count ? std::move(bytes) : nullptr;
}

}  // namespace

FileContent::FileContent(const char* filePath) : path(filePath ? filePath : "") {}

FileContent::~FileContent()
{
    delete[] data;
}

void FileContent::setCopiedData(const char* bytes, int count)
{
    Bytes copy = bytes && count > 0 ? allocate(count) : nullptr;
    if (!copy) {
        LOG_E("Data set fail , filepath : %s", path.c_str());
        return;
    }
    memcpy(copy.get(), bytes, static_cast<size_t>(count));
    delete[] data;
    data = copy.release();
    size = count;
}

bool FileHelper::write(FileContent& content)
{
    if (!content.data) {
        LOG_E("Data is not set");
        return false;
    }
    File file = openFile(content, "wb");
    if (!file) {
        LOG_E("file open error");
        return false;
    }
    fwrite(content.data, 1, static_cast<size_t>(content.size), file.get());
    if (content.nullTerminate)
        fwrite("", 1, 1, file.get());
    file.reset();
    sync();
    return true;
}

bool FileHelper::read(FileContent& content)
{
    File file = openFile(content, "rb");
    if (!file) {
        LOG_E("File open fail, path = %s", content.path.c_str());
        return false;
    }
    const int length = lengthOf(file.get());
    const Bytes bytes = readBytes(file.get(), length);
    if (!bytes) {
        LOG_E("file read fail , path = %s", content.path.c_str());
        return false;
    }
    file.reset();
    const char* before = content.data;
    content.setCopiedData(bytes.get(), length);
    // The copy is made before the old data is freed: where the pointer stays, there was no memory for it.
    return length == 0 || content.data != before;
}

bool FileHelper::remove(FileContent& content)
{
    if (unlink(content.path.c_str()) != 0) {
        LOG_E("failed to delete file : %s", content.path.c_str());
        return false;
    }
    return true;
}

}  // namespace Util
