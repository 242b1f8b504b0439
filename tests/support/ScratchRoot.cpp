#include "ScratchRoot.h"

#include <ftw.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace TestSupport {

namespace {

char folder[4096];
pid_t owner;

// Priority 101 runs before the static objects of the program, which may already read the variable.
__attribute__((constructor(101))) void makeFolder()
{
    const char* parent = getenv("TMPDIR");
    snprintf(folder, sizeof folder, "%s/appliance-test-XXXXXX", parent ? parent : "/tmp");
    if (!mkdtemp(folder)) {
        perror(folder);
        _exit(EXIT_FAILURE);
    }
    owner = getpid();
    setenv("APPLIANCE_ROOT", folder, 1);
}

int removeEntry(const char* path, const struct stat*, int, struct FTW*)
{
    return remove(path);
}

__attribute__((destructor(101))) void removeFolder()
{
    if (owner == getpid())
        nftw(folder, removeEntry, 16, FTW_DEPTH | FTW_PHYS);
}

}  // namespace

const std::string& ScratchRoot::path()
{
    static const std::string* text = new std::string(folder);
    return *text;
}

std::string ScratchRoot::file(const std::string& name)
{
    return path() + "/" + name;
}

}  // namespace TestSupport
