// Reading a log back: the text of a file, its lines, and the process id as the brief format writes it.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace LogText {

inline std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

inline std::vector<std::string> linesOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

inline std::string pid(int process = getpid())
{
    char text[16];
    std::snprintf(text, sizeof text, "(%5d): ", process);
    return text;
}

}  // namespace LogText
