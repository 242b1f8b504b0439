// The address of a product's picture, from a merchant's answer to the file that it is written into.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "Demand.h"
#include "ImageCurlDownloader.h"
#include "ImageFolder.h"
#include "Singleton.h"
#include "Surroundings.h"

namespace {

namespace fs = std::filesystem;
using Util::ImageCurlDownloader;

constexpr int ID = 10;
const char* const PICTURE = "as if it were a picture";

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return tolower(c); });
    return text;
}

// The kind that the address names, by the order in which they count; empty where it names none.
std::string kindOf(const std::string& url)
{
    const std::string text = lowerCase(url);
    for (const auto& [word, kind] :
         {std::pair{"gif", "gif"}, {"png", "png"}, {"jpg", "jpg"}, {"jpeg", "jpg"}}) {
        if (text.find(word) != std::string::npos)
            return kind;
    }
    return "";
}

// A plain file, directly in the folder, by a name that begins with the id.
void checkFile(const std::string& path, const std::string& url)
{
    const fs::path file(path);
    DEMAND(path.size() <= Util::MAX_IMAGE_TEXT);
    DEMAND(file.parent_path() == Util::imageFolder());
    DEMAND(file.filename().string().rfind(std::to_string(ID) + ".", 0) == 0);
    DEMAND(kindOf(url).empty() || file.filename() == std::to_string(ID) + "." + kindOf(url));
    DEMAND(fs::symlink_status(file).type() == fs::file_type::regular);
    std::ifstream written(file, std::ios::binary);
    DEMAND(std::string(std::istreambuf_iterator<char>(written), {}) == PICTURE);
}

size_t filesBelow(const std::string& folder)
{
    return static_cast<size_t>(
        std::distance(fs::recursive_directory_iterator(folder), fs::recursive_directory_iterator()));
}

// Each run begins with an empty folder; the shell that would have emptied it is stood in for.
void emptyFolder()
{
    fs::remove_all(Util::imageFolder());
    fs::create_directories(Util::imageFolder());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // The text of a JSON member ends at its first zero byte.
    const std::string url = std::string(reinterpret_cast<const char*>(data), size).c_str();
    ImageCurlDownloader* const downloader = Util::Singleton<ImageCurlDownloader>::getInstance();
    emptyFolder();

    const bool isFound = size % 4 != 3;
    Fuzz::answerTransfers(CURLE_OK, isFound ? 200 : 404, PICTURE);
    const bool isRecorded = downloader->startDownload(ID, url.c_str());
    const std::vector<Fuzz::Request> requests = Fuzz::takeRequests();

    // A name that cannot be a file's leads to no request; every other one to a file, and only that.
    DEMAND(requests.size() == filesBelow(Util::imageFolder()));
    DEMAND(requests.size() <= 1 && (requests.empty() || requests[0].url == url));
    DEMAND(isRecorded == (isFound && !requests.empty()));
    DEMAND(downloader->downloaded.size() == (isRecorded ? 1 : 0));
    if (isRecorded)
        checkFile(downloader->downloaded.at(ID), url);
    if (!kindOf(url).empty())
        DEMAND(requests.size() == 1);
    downloader->deinitDownload(ID);
    DEMAND(downloader->downloaded.empty());
    return 0;
}
