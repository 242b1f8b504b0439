#include "PictureFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <sstream>
#include <vector>

namespace Screen {

namespace {

class Opened {
  public:
    explicit Opened(const std::filesystem::path& file)
        : descriptor_(open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC))
    {
        isFile_ = descriptor_ >= 0 && fstat(descriptor_, &status_) == 0 && S_ISREG(status_.st_mode);
    }
    ~Opened()
    {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    bool isFile() const { return isFile_; }
    const struct stat& status() const { return status_; }
    std::optional<std::string> bytes() const;

  private:
    int descriptor_;
    bool isFile_;
    struct stat status_ = {};
};

std::optional<std::string> Opened::bytes() const
{
    const auto size = static_cast<std::size_t>(status_.st_size);
    if (!isFile_ || size > PictureFolder::BytesRead) {
        return std::nullopt;
    }
    std::string all(size, '\0');
    for (std::size_t done = 0; done < size;) {
        const ssize_t count = ::read(descriptor_, all.data() + done, size - done);
        if (count <= 0) {
            return std::nullopt;
        }
        done += static_cast<std::size_t>(count);
    }
    return all;
}

bool isPlainName(const std::string& name)
{
    return !name.empty() && name[0] != '.' && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

std::string versionOf(const struct stat& status)
{
    std::ostringstream text;
    text << std::hex << status.st_ino << '-' << status.st_mtim.tv_sec << '-' << status.st_mtim.tv_nsec << '-'
         << status.st_size;
    return text.str();
}

struct Entry {
    int number;  // that the name begins with
    std::string name;
    std::string version;
    std::int64_t size;
};

int numberIn(const std::string& name)
{
    int number = 0;
    std::from_chars(name.data(), name.data() + name.size(), number);
    return number;
}

std::vector<Entry> entriesOf(const std::filesystem::path& folder)
{
    std::vector<Entry> entries;
    std::error_code error;
    for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end;
         at.increment(error)) {
        const std::string name = at->path().filename();
        const Opened file(at->path());
        if (isPlainName(name) && file.isFile()) {
            entries.push_back({numberIn(name), name, versionOf(file.status()), file.status().st_size});
        }
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return std::tie(a.number, a.name) < std::tie(b.number, b.name);
    });
    return entries;
}

// Only the characters that stand for themselves in an address.
bool standsForItself(char byte)
{
    return std::isalnum(static_cast<unsigned char>(byte)) != 0 ||
           std::string_view("-._~").find(byte) != std::string_view::npos;
}

std::string escaped(const std::string& name)
{
    const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (const char byte : name) {
        const auto value = static_cast<unsigned char>(byte);
        text += standsForItself(byte) ? std::string(1, byte)
                                      : std::string{'%', digits[value >> 4U], digits[value & 0xFU]};
    }
    return text;
}

}  // namespace

nlohmann::json PictureFolder::list() const
{
    nlohmann::json files = nlohmann::json::array();
    for (const Entry& entry : entriesOf(folder_)) {
        if (files.size() == FilesListed) {
            break;
        }
        files.push_back({{"name", entry.name}, {"size", entry.size}, {"version", entry.version}});
    }
    return files;
}

std::string PictureFolder::addressOf(const std::string& path) const
{
    const std::filesystem::path file(path);
    const std::string name = file.filename();
    if (file.parent_path() != folder_ || !isPlainName(name)) {
        return "";
    }
    const Opened opened(file);
    return opened.isFile() ? escaped(name) + "?v=" + versionOf(opened.status()) : "";
}

std::optional<std::string> PictureFolder::read(const std::string& name, const std::string& version) const
{
    if (!isPlainName(name)) {
        return std::nullopt;
    }
    const Opened file(folder_ / name);
    if (!file.isFile() || versionOf(file.status()) != version) {
        return std::nullopt;
    }
    return file.bytes();
}

std::string pictureType(const std::string& bytes)
{
    const auto begins = [&bytes](std::string_view start) {
        return bytes.compare(0, start.size(), start) == 0;
    };
    if (begins("\x89PNG\r\n\x1A\n")) {
        return "image/png";
    }
    if (begins("\xFF\xD8\xFF")) {
        return "image/jpeg";
    }
    return begins("GIF87a") || begins("GIF89a") ? "image/gif" : "application/octet-stream";
}

}  // namespace Screen
