// file-probe write|read|remove PATH [LIMIT]: one file operation with the rights of a user, whoever runs it,
// and with files limited to LIMIT bytes. Ends with 0 for true, 1 for false, 2 where it cannot be tried.
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "FileHelper.h"

namespace {

bool dropCapabilities()
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[2] = {};
    return syscall(SYS_capset, &header, none) == 0;
}

bool limitFiles(rlim_t bytes)
{
    const rlimit limit = {bytes, bytes};
    return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

/** Writes 100,000 times the letter x. */
bool operate(const std::string& operation, Util::FileContent& content)
{
    if (operation == "read")
        return Util::FileHelper::read(content);
    if (operation == "remove")
        return Util::FileHelper::remove(content);
    const std::string bytes(100'000, 'x');
    content.setCopiedData(bytes.data(), static_cast<int>(bytes.size()));
    return Util::FileHelper::write(content);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 3 || !dropCapabilities() || (argc > 3 && !limitFiles(std::stoul(argv[3]))))
        return 2;
    Util::FileContent content(argv[2]);
    return operate(argv[1], content) ? 0 : 1;
}
