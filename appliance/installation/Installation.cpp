#include "Installation.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace Appliance {

namespace {

namespace fs = std::filesystem;

const char Programs[] = "libexec/carvoy-appliance";

fs::path prefix()
{
    const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
    return folder.parent_path().filename() == "libexec" ? folder.parent_path().parent_path()
                                                        : folder.parent_path();
}

bool isBuildFolder(const fs::path& folder)
{
    return fs::exists(folder / "CMakeCache.txt");
}

fs::path home()
{
    const char* variable = std::getenv("HOME");
    if (variable != nullptr && *variable != '\0') {
        return fs::absolute(variable);
    }
    const passwd* entry = getpwuid(getuid());
    return entry == nullptr ? "/" : entry->pw_dir;
}

// The same as the host platform's root, for which nobody but the platform can ask.
fs::path userState()
{
    const char* variable = std::getenv("XDG_STATE_HOME");
    const fs::path state = variable == nullptr ? "" : variable;
    return (state.is_absolute() ? state : home() / ".local" / "state") / "carvoy-appliance";
}

}  // namespace

fs::path programFile(const std::string& name)
{
    const fs::path installed = prefix() / Programs / name;
    return fs::exists(installed) ? installed : prefix() / "bin" / name;
}

fs::path shareFolder(const std::string& program)
{
    return prefix() / "share" / "carvoy-appliance" / program;
}

State state()
{
    const fs::path here = prefix();
    if (isBuildFolder(here)) {
        return {here, here / "appliance", here / "run"};
    }
    const fs::path folder = userState();
    return {folder, folder, folder / "run"};
}

}  // namespace Appliance
