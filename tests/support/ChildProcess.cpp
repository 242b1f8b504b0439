#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "ScratchRoot.h"

namespace TestSupport {

namespace {

using Clock = std::chrono::steady_clock;

int remaining(Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

std::string readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string newFolder()
{
    std::string path = ScratchRoot::file("child-XXXXXX");
    if (!mkdtemp(path.data()))
        throw std::runtime_error("no folder for a child process");
    return path;
}

std::vector<std::string> environment(const ChildProcess::Variables& added)
{
    std::vector<std::string> all;
    for (char** variable = environ; *variable; ++variable)
        all.emplace_back(*variable);
    for (const auto& [name, value] : added) {
        const std::string prefix = name + "=";
        for (auto it = all.begin(); it != all.end();)
            it = it->compare(0, prefix.size(), prefix) == 0 ? all.erase(it) : it + 1;
        all.push_back(prefix + value);
    }
    return all;
}

std::vector<char*> pointers(const std::vector<std::string>& texts)
{
    std::vector<char*> result;
    for (const std::string& text : texts)
        result.push_back(const_cast<char*>(text.c_str()));
    result.push_back(nullptr);
    return result;
}

int openForWriting(const std::string& path)
{
    return open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, const Variables& added)
    : folder_(newFolder())
{
    const std::vector<std::string> variables = environment(added);
    const std::vector<char*> argv = pointers(command);
    const std::vector<char*> envp = pointers(variables);
    const int out = openForWriting(folder_ + "/out");
    const int err = openForWriting(folder_ + "/err");
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent || dup2(out, STDOUT_FILENO) < 0 || dup2(err, STDERR_FILENO) < 0)
            _exit(127);
        execvpe(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    close(out);
    close(err);
    if (pid_ < 0)
        throw std::runtime_error("fork failed");
    handle_ = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
}

ChildProcess::~ChildProcess()
{
    if (!wait(std::chrono::milliseconds(0)).inTime) {
        signal(SIGKILL);
        wait();
    }
    close(handle_);
}

void ChildProcess::signal(int number) const
{
    if (!ended_)
        kill(pid_, number);
}

ProcessEnd ChildProcess::wait(std::chrono::milliseconds limit)
{
    if (ended_)
        return end_;
    const Clock::time_point deadline = Clock::now() + limit;
    pollfd watch{handle_, POLLIN, 0};
    while (poll(&watch, 1, remaining(deadline)) < 0 && errno == EINTR) {
    }
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) != pid_)
        return {false, -1, 0};
    ended_ = true;
    end_ = {true, WIFEXITED(status) ? WEXITSTATUS(status) : -1, WIFSIGNALED(status) ? WTERMSIG(status) : 0};
    return end_;
}

bool ChildProcess::waitForOutput(const std::string& text, std::chrono::milliseconds limit)
{
    return waitForText("/out", text, limit);
}

bool ChildProcess::waitForErrors(const std::string& text, std::chrono::milliseconds limit)
{
    return waitForText("/err", text, limit);
}

bool ChildProcess::waitForText(const char* stream, const std::string& text, std::chrono::milliseconds limit)
{
    const std::string file = folder_ + stream;
    const auto isThere = [&] { return readFile(file).find(text) != std::string::npos; };
    const Clock::time_point deadline = Clock::now() + limit;
    const int notifier = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    inotify_add_watch(notifier, file.c_str(), IN_MODIFY);
    bool found = isThere();
    pollfd watches[] = {{notifier, POLLIN, 0}, {handle_, POLLIN, 0}};
    while (!found && poll(watches, 2, remaining(deadline)) > 0) {
        char events[4096];
        const bool written = read(notifier, events, sizeof events) > 0;
        found = isThere();
        if (!written && watches[1].revents)
            break;
    }
    close(notifier);
    return found;
}

std::string ChildProcess::output() const
{
    return readFile(folder_ + "/out");
}

std::string ChildProcess::errors() const
{
    return readFile(folder_ + "/err");
}

}  // namespace TestSupport
