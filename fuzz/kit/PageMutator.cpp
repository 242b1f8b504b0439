// How libFuzzer changes SQLite's files: within one page, so that all others stay where they belong. Most of
// the time it leaves the file's header alone, without which nothing behind it is read.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace {

constexpr size_t HEADER = 100;
constexpr size_t PAGE = 512;  // of the files that are kept here; a larger one is a number of these

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed)
{
    std::minstd_rand dice(seed);
    if (size <= HEADER || dice() % 8 == 0)
        return LLVMFuzzerMutate(data, size, maxSize);
    const size_t page = dice() % ((size + PAGE - 1) / PAGE) * PAGE;
    const size_t begin = page == 0 ? HEADER : page;
    const size_t length = std::min(page + PAGE, size) - begin;

    // What gets longer pushes its end out of the page, what gets shorter leaves its old end.
    std::vector<uint8_t> bytes(data + begin, data + begin + length);
    LLVMFuzzerMutate(bytes.data(), length, length);
    memcpy(data + begin, bytes.data(), length);
    return size;
}
