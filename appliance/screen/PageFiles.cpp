#include "PageFiles.h"

#include <array>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace Screen {

namespace {

const char Index[] = "/index.html";

// Empty for what is no part of a page.
std::string typeOf(const std::filesystem::path& file)
{
    static const std::array<std::pair<const char*, const char*>, 4> types = {{
        {".html", "text/html; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".svg", "image/svg+xml"},
    }};
    for (const auto& [extension, type] : types) {
        if (file.extension() == extension) {
            return type;
        }
    }
    return "";
}

}  // namespace

PageFiles::PageFiles(const std::filesystem::path& folder)
{
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator at(folder, error), end; !error && at != end;
         at.increment(error)) {
        if (at->is_regular_file() && !typeOf(at->path()).empty()) {
            files_["/" + at->path().lexically_relative(folder).string()] = at->path();
        }
    }
    if (files_.count(Index) == 0) {
        throw std::runtime_error("there is no page in " + folder.string());
    }
}

bool PageFiles::has(const std::string& path) const
{
    return path == "/" || files_.count(path) > 0;
}

std::optional<PageFiles::File> PageFiles::find(const std::string& path) const
{
    const auto found = files_.find(path == "/" ? Index : path);
    if (found == files_.end()) {
        return std::nullopt;
    }
    std::ifstream in(found->second, std::ios::binary);
    if (!in) {
        return std::nullopt;
    }
    return File{{std::istreambuf_iterator<char>(in), {}}, typeOf(found->second)};
}

}  // namespace Screen
