#include "appliance_root.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>

namespace HostPlatform {

namespace {

namespace fs = std::filesystem;

std::optional<fs::path> folderFromEnvironment(const char* variable)
{
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == '\0')
        return std::nullopt;
    return fs::path(value);
}

fs::path homeOfThisUser()
{
    std::array<char, 4096> texts{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found) != 0 || found == nullptr)
        return "/";
    return found->pw_dir;
}

fs::path chooseRoot()
{
    if (const auto root = folderFromEnvironment("APPLIANCE_ROOT"))
        return fs::absolute(*root);
    const auto state = folderFromEnvironment("XDG_STATE_HOME");
    if (state && state->is_absolute())
        return *state / "carvoy-appliance";
    return fs::absolute(folderFromEnvironment("HOME").value_or(homeOfThisUser())) /
           ".local/state/carvoy-appliance";
}

void makeFolders(const std::string& root)
{
    for (const char* folder : {kUserAppFolder, kUserContentFolder}) {
        std::error_code error;
        fs::create_directories(fs::path(root) / folder, error);
        if (error)
            std::fprintf(stderr, "host platform: cannot make %s/%s: %s\n", root.c_str(), folder,
                         error.message().c_str());
    }
}

std::string withoutFinalSlash(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string resolveRoot()
{
    const std::string root = withoutFinalSlash(chooseRoot().lexically_normal().string());
    makeFolders(root);
    return root;
}

}  // namespace

const std::string& applianceRoot()
{
    // Never destroyed: apps ask for paths in their own static destructors.
    static const std::string* const root = new std::string(resolveRoot());
    return *root;
}

}  // namespace HostPlatform
