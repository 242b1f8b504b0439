// Which signals a thread has blocked, as the kernel has it.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

/** The signals that the thread which makes the object has blocked at that moment. */
class SignalMask {
  public:
    SignalMask() : bits_(read()) {}

    bool has(int number) const { return (bits_ >> (number - 1) & 1) != 0; }

  private:
    static std::uint64_t read()
    {
        const std::string name = "SigBlk:";
        std::ifstream file("/proc/thread-self/status");
        for (std::string line; std::getline(file, line);)
            if (line.compare(0, name.size(), name) == 0)
                return std::stoull(line.substr(name.size()), nullptr, 16);
        return 0;
    }

    std::uint64_t bits_;
};
