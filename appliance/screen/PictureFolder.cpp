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

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor()
    {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }

  private:
    const int number_;
};

// The folder itself, never what a link in its place leads to.
int openFolder(const std::filesystem::path& folder)
{
    return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

// Of a plain file in the folder; nothing for anything else.
std::optional<struct stat> statusOf(const Descriptor& folder, const std::string& name)
{
    struct stat status = {};
    const bool isFile = folder.number() >= 0 &&
                        fstatat(folder.number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                        S_ISREG(status.st_mode);
    return isFile ? std::optional<struct stat>(status) : std::nullopt;
}

std::optional<struct stat> statusOf(const Descriptor& file)
{
    struct stat status = {};
    const bool isFile = file.number() >= 0 && fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode);
    return isFile ? std::optional<struct stat>(status) : std::nullopt;
}

std::optional<std::string> bytesOf(const Descriptor& file, std::size_t size)
{
    if (size > PictureFolder::BytesRead) {
        return std::nullopt;
    }
    std::string all(size, '\0');
    for (std::size_t done = 0; done < size;) {
        const ssize_t count = ::read(file.number(), all.data() + done, size - done);
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

std::vector<Entry> entriesOf(const std::filesystem::path& path)
{
    std::vector<Entry> entries;
    const Descriptor folder(openFolder(path));
    std::error_code error;
    std::filesystem::directory_iterator at(path, error);
    for (const std::filesystem::directory_iterator end;
         !error && at != end && entries.size() < PictureFolder::FilesRead; at.increment(error)) {
        const std::string name = at->path().filename();
        const auto status = isPlainName(name) ? statusOf(folder, name) : std::nullopt;
        if (status) {
            entries.push_back({numberIn(name), name, versionOf(*status), status->st_size});
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
    const auto status = statusOf(Descriptor(openFolder(folder_)), name);
    return status ? escaped(name) + "?v=" + versionOf(*status) : "";
}

std::optional<std::string> PictureFolder::read(const std::string& name, const std::string& version) const
{
    if (!isPlainName(name)) {
        return std::nullopt;
    }
    const Descriptor folder(openFolder(folder_));
    if (!statusOf(folder, name)) {
        return std::nullopt;
    }
    const Descriptor file(
        openat(folder.number(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    const auto status = statusOf(file);
    if (!status || versionOf(*status) != version) {
        return std::nullopt;
    }
    auto bytes = bytesOf(file, static_cast<std::size_t>(status->st_size));
    const auto after = statusOf(file);  // it may have been written to meanwhile
    return after && versionOf(*after) == version ? bytes : std::nullopt;
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
