#include "tzplatform_config.h"

#include <mutex>
#include <new>
#include <string>
#include <unordered_set>

#include "appliance_root.h"

namespace {

// Strings that live as long as the process; set elements never move.
class InternedStrings {
  public:
    const char* intern(std::string text)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return texts.insert(std::move(text)).first->c_str();
    }

  private:
    std::mutex mutex;
    std::unordered_set<std::string> texts;
};

InternedStrings& interned()
{
    // Never destroyed: its strings are promised to outlive every static object.
    static InternedStrings* const strings = new InternedStrings;
    return *strings;
}

const char* folderOf(tzplatform_variable id)
{
    switch (id) {
        case TZ_USER_APP:
            return HostPlatform::kUserAppFolder;
        case TZ_USER_CONTENT:
            return HostPlatform::kUserContentFolder;
        case _TZPLATFORM_VARIABLES_INVALID_:
            break;
    }
    return nullptr;
}

std::string relative(const std::string& path)
{
    const std::size_t start = path.find_first_not_of('/');
    return start == std::string::npos ? std::string() : path.substr(start);
}

const char* makePath(tzplatform_variable id, const std::string& path)
{
    const char* folder = folderOf(id);
    const std::string& root = HostPlatform::applianceRoot();
    if (folder == nullptr)
        return nullptr;
    const std::string base = (root == "/" ? "" : root) + "/" + folder;
    const std::string rest = relative(path);
    return interned().intern(rest.empty() ? base : base + "/" + rest);
}

}  // namespace

const char* tzplatform_getenv(enum tzplatform_variable id)
{
    return tzplatform_mkpath(id, "");
}

const char* tzplatform_mkpath(enum tzplatform_variable id, const char* path)
try {
    return path == nullptr ? nullptr : makePath(id, path);
} catch (const std::exception&) {
    return nullptr;
}
