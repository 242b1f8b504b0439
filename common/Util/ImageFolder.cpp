#include "ImageFolder.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>

#include "PlatformPath.h"

namespace Util {

namespace {

constexpr mode_t DIRECTORY_MODE = 0755;

const std::string imageDirectory = platformPath(TZ_USER_CONTENT, "tmp");

/** The first kind of picture whose name stands anywhere in the URL; else what follows its last dot,
 * uncleaned. */
std::string extensionOf(const std::string& url)
{
    std::string lowerCase = url;
    std::transform(url.begin(), url.end(), lowerCase.begin(), [](unsigned char c) { return tolower(c); });
    auto contains = [&](const char* text) { return lowerCase.find(text) != std::string::npos; };

    if (contains("gif"))
        return "gif";
    if (contains("png"))
        return "png";
    if (contains("jpg") || contains("jpeg"))
        return "jpg";
    return url.substr(url.rfind('.') + 1);
}

/** True if a shell takes the path for one word that means itself. */
bool isPlainPath(const std::string& path)
{
    auto isPlain = [](unsigned char c) { return isalnum(c) || c >= 0x80 || strchr("/._-+,:@%=", c); };
    return path.size() > 1 && path[0] == '/' && std::all_of(path.begin(), path.end(), isPlain);
}

}  // namespace

const std::string& imageFolder()
{
    return imageDirectory;
}

void makeImageFolder()
{
    mkdir(imageDirectory.c_str(), DIRECTORY_MODE);
}

bool isImageFolderLink()
{
    struct stat found {};
    return lstat(imageDirectory.c_str(), &found) == 0 && S_ISLNK(found.st_mode);
}

int removeImageFolder()
{
    std::string command = "rm -rf " + imageDirectory;
    // A command that would be cut, or that a shell would read as something else, removes what it must not.
    if (command.size() > MAX_IMAGE_TEXT || !isPlainPath(imageDirectory))
        return -1;
    return system(command.c_str());
}

std::string imageFileName(int id, const std::string& url)
{
    return (std::to_string(id) + "." + extensionOf(url)).substr(0, MAX_IMAGE_TEXT);
}

}  // namespace Util
