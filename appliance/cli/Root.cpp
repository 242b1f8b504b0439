#include "Root.h"

#include <cstdlib>
#include <utility>

#include "Exit.h"
#include "Installation.h"

namespace Tool {

namespace {

constexpr std::size_t LongestPictureFolder = 100;

bool isPlain(char byte)
{
    const std::string plain = "_./+,:@%=-";
    const bool letter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    return letter || (byte >= '0' && byte <= '9') || plain.find(byte) != std::string::npos;
}

}  // namespace

std::optional<std::string> whyUnfit(const std::filesystem::path& root)
{
    const std::string path = root.string();
    for (const char byte : path) {
        if (!isPlain(byte)) {
            return "it has a character other than A-Z a-z 0-9 _ . / + , : @ % = -";
        }
    }
    const std::size_t length = (root / "media" / "tmp").string().size();
    if (length > LongestPictureFolder) {
        return "its picture folder's path would be " + std::to_string(length) +
               " characters long, and more than " + std::to_string(LongestPictureFolder) + " do not fit";
    }
    return std::nullopt;
}

void requireFit(const std::filesystem::path& root)
{
    if (const auto why = whyUnfit(root)) {
        throw Failure(Exit::Usage, root.string() + " cannot be the appliance's folder: " + *why);
    }
}

Root chosenRoot(const std::string& option)
{
    const char* variable = std::getenv("APPLIANCE_ROOT");
    if (!option.empty()) {
        return {std::filesystem::absolute(option).lexically_normal()};
    }
    if (variable != nullptr && *variable != '\0') {
        return {std::filesystem::absolute(variable).lexically_normal()};
    }
    return {Appliance::state().appliance};
}

std::optional<RootLock> RootLock::take(const Root& root)
{
    std::filesystem::create_directories(root.path);
    std::optional<FileLock> lock = FileLock::take(root.lockFile());
    return lock ? std::optional<RootLock>(RootLock(std::move(*lock))) : std::nullopt;
}

RootLock RootLock::claim(const Root& root)
{
    requireFit(root.path);
    std::optional<RootLock> lock = take(root);
    if (!lock) {
        throw Failure(Exit::Failed, "an appliance already runs in " + root.path.string());
    }
    return std::move(*lock);
}

bool RootLock::isTaken(const Root& root)
{
    return FileLock::isTaken(root.lockFile());
}

}  // namespace Tool
