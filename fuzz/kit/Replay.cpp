// Runs a fuzzer's function once on every file of the folders that are named, in the order of their names. A
// folder may be missing; that there is no file at all is a failure.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const fs::path& folder)
{
    std::vector<fs::path> files;
    if (!fs::exists(folder))
        return files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

void replay(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    // Of exactly this size, on the heap: what reads beyond it is seen.
    const auto copy = std::make_unique<uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), copy.get());
    // Where it ends badly, the last line tells the input.
    fprintf(stderr, "%s\n", path.c_str());
    LLVMFuzzerTestOneInput(copy.get(), bytes.size());
}

}  // namespace

int main(int count, char** arguments)
{
    size_t replayed = 0;
    for (int i = 1; i < count; ++i) {
        for (const fs::path& file : filesIn(arguments[i])) {
            replay(file);
            ++replayed;
        }
    }
    fprintf(stderr, "%zu inputs\n", replayed);
    return replayed > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
