// Reading what a program under test wrote or serves.
#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace ApplianceTest {

// All bytes; none for a file that cannot be read.
inline std::string readFile(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace ApplianceTest
