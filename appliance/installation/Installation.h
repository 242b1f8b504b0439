// Where this system's programs and their data lie, in a build folder as well as installed. Found from the
// place of the running program, so that the whole can be moved:
//
//   build folder: bin/ with every program           share/carvoy-appliance/PROGRAM/   CMakeCache.txt
//   installed:    bin/, libexec/carvoy-appliance/   share/carvoy-appliance/PROGRAM/
#pragma once

#include <filesystem>
#include <string>

namespace Appliance {

// The program of that name; it need not be there. Throws std::filesystem::filesystem_error without /proc, as
// do the others.
std::filesystem::path programFile(const std::string& name);

// Where the program of that name looks for its stock.
std::filesystem::path shareFolder(const std::string& program);

// Where appliances live that were given no folder of their own: the build folder; installed, the folder
// carvoy-appliance in $XDG_STATE_HOME or ~/.local/state. It need not be there.
struct State {
    std::filesystem::path folder;     // of which runs lock the whole
    std::filesystem::path appliance;  // the appliance that is not named
    std::filesystem::path runs;       // those of one run each
};
State state();

}  // namespace Appliance
