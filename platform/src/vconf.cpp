#include "vconf.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "appliance_root.h"

namespace {

namespace fs = std::filesystem;

// "-2147483648\n" takes 12 bytes.
constexpr std::size_t kLongestNumber = 12;

thread_local int lastError = VCONF_OK;

int finish(int code)
{
    lastError = code;
    return code == VCONF_OK ? VCONF_OK : VCONF_ERROR;
}

// "a/b/c" without the empty, "." and ".." segments that would name another file than the key says.
bool hasPlainSegments(std::string_view path)
{
    while (true) {
        const std::size_t end = path.find('/');
        const std::string_view segment = path.substr(0, end);
        if (segment.empty() || segment == "." || segment == "..")
            return false;
        if (end == std::string_view::npos)
            return true;
        path.remove_prefix(end + 1);
    }
}

bool isKey(const char* key)
{
    if (key == nullptr)
        return false;
    const std::string_view text(key);
    for (const std::string_view prefix : {"db/", "file/", "memory/"})
        if (text.substr(0, prefix.size()) == prefix)
            return hasPlainSegments(text.substr(prefix.size()));
    return false;
}

fs::path fileOf(const char* key)
{
    return fs::path(HostPlatform::applianceRoot()) / "vconf" / key;
}

// Whether a key must exist before it can be set, as on appliances whose keys are declared by packages.
bool isStrict()
{
    const char* strict = std::getenv("APPLIANCE_VCONF_STRICT");
    return strict != nullptr && *strict != '\0' && std::strcmp(strict, "0") != 0;
}

bool writeAll(int descriptor, std::string_view text)
{
    // A few bytes into a regular file: they are taken whole or refused.
    return ::write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

bool replaceFile(const fs::path& file, const std::string& text)
{
    std::string unfinished = (file.parent_path() / ("." + file.filename().string() + ".XXXXXX")).string();
    const int descriptor = ::mkostemp(unfinished.data(), O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool written = writeAll(descriptor, text) && ::fchmod(descriptor, 0644) == 0;
    const bool closed = ::close(descriptor) == 0;
    if (written && closed && ::rename(unfinished.c_str(), file.c_str()) == 0)
        return true;
    ::unlink(unfinished.c_str());
    return false;
}

int setInt(const char* key, int value)
{
    if (!isKey(key))
        return VCONF_ERROR_WRONG_PREFIX;
    const auto file = fileOf(key);
    if (isStrict() && !fs::is_regular_file(file))
        return VCONF_ERROR;
    fs::create_directories(file.parent_path());
    return replaceFile(file, std::to_string(value) + "\n") ? VCONF_OK : VCONF_ERROR;
}

std::optional<int> parseInt(std::string_view text)
{
    if (!text.empty() && text.back() == '\n')
        text.remove_suffix(1);
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

int getInt(const char* key, int* value)
{
    if (!isKey(key))
        return VCONF_ERROR_WRONG_PREFIX;
    if (value == nullptr)
        return VCONF_ERROR_WRONG_VALUE;
    const auto path = fileOf(key);
    if (!fs::is_regular_file(path))
        return VCONF_ERROR;
    std::ifstream file(path, std::ios::binary);
    char text[kLongestNumber + 1];
    file.read(text, sizeof text);
    if (file.bad() || !file.is_open())
        return VCONF_ERROR;
    const auto length = static_cast<std::size_t>(file.gcount());
    const auto number = parseInt({text, length});
    if (length > kLongestNumber || !number)
        return VCONF_ERROR_WRONG_TYPE;
    *value = *number;
    return VCONF_OK;
}

}  // namespace

int vconf_set_int(const char* key, const int value)
try {
    return finish(setInt(key, value));
} catch (const std::bad_alloc&) {
    return finish(VCONF_ERROR_NO_MEM);
} catch (const std::exception&) {
    return finish(VCONF_ERROR);
}

int vconf_get_int(const char* key, int* value)
try {
    return finish(getInt(key, value));
} catch (const std::bad_alloc&) {
    return finish(VCONF_ERROR_NO_MEM);
} catch (const std::exception&) {
    return finish(VCONF_ERROR);
}

int vconf_get_ext_errno(void)
{
    return lastError;
}
