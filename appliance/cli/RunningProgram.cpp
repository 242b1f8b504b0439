#include "RunningProgram.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>
#include <utility>

namespace Tool {

namespace {

[[noreturn]] void throwErrno(int error, const std::string& what)
{
    throw std::system_error(error, std::generic_category(), what);
}

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& added)
{
    std::vector<std::string> entries;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (added.count(text.substr(0, text.find('='))) == 0) {
            entries.push_back(text);
        }
    }
    for (const auto& [name, value] : added) {
        entries.push_back(name + "=" + value);
    }
    return entries;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

struct Prepared {
    int output;
    int errorPipe;
    pid_t parent;
    char* const* arguments;
    char* const* environment;
};

[[noreturn]] void giveUp(const Prepared& prepared)
{
    const int error = errno;
    (void)!write(prepared.errorPipe, &error, sizeof error);
    _exit(1);
}

// Between fork and exec: nothing but async-signal-safe calls.
[[noreturn]] void becomeProgram(const Prepared& prepared)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != prepared.parent) {
        _exit(1);  // the parent died before the kernel knew of our wish
    }
    setpgid(0, 0);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int nothing = open("/dev/null", O_RDONLY);
    if (nothing < 0) {
        giveUp(prepared);
    }
    dup2(nothing, STDIN_FILENO);
    dup2(prepared.output, STDOUT_FILENO);
    dup2(prepared.output, STDERR_FILENO);
    const unsigned int firstOther = 3;
    syscall(SYS_close_range, firstOther, ~0U, 1U << 2 /* CLOSE_RANGE_CLOEXEC */);
    execvpe(prepared.arguments[0], prepared.arguments, prepared.environment);
    giveUp(prepared);
}

int openOutput(const std::filesystem::path& file)
{
    const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0) {
        throwErrno(errno, file.string());
    }
    return fd;
}

// The pipe ends without a byte when exec closed it, and with the error number when exec failed.
int execError(int pipe)
{
    int error = 0;
    const ssize_t length = read(pipe, &error, sizeof error);
    return length == sizeof error ? error : 0;
}

pid_t start(const Program& program)
{
    std::vector<std::string> arguments = program.command;
    std::vector<std::string> environment = environmentWith(program.environment);
    const std::vector<char*> argumentPointers = pointersTo(arguments);
    const std::vector<char*> environmentPointers = pointersTo(environment);
    const int output = openOutput(program.output);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        const int pipeError = errno;
        close(output);
        throwErrno(pipeError, "pipe");
    }
    const Prepared prepared = {output, ends[1], getpid(), argumentPointers.data(),
                               environmentPointers.data()};
    const pid_t pid = fork();
    if (pid == 0) {
        becomeProgram(prepared);
    }
    close(output);
    close(ends[1]);
    const int error = pid < 0 ? errno : execError(ends[0]);
    close(ends[0]);
    if (error != 0) {
        if (pid > 0) {
            waitpid(pid, nullptr, 0);
        }
        throwErrno(error, "cannot start " + program.command[0]);
    }
    return pid;
}

}  // namespace

RunningProgram::RunningProgram(Program program, std::function<void(RunningProgram&)> onEnd)
    : program_(std::move(program)), onEnd_(std::move(onEnd)), pid_(start(program_))
{
    pidFd_ = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
    if (pidFd_ < 0) {
        const int error = errno;
        killNow();
        throwErrno(error, "pidfd_open");
    }
    watch_.emplace(pidFd_, [this] { reap(); });
}

RunningProgram::~RunningProgram()
{
    watch_.reset();
    if (running()) {
        killNow();
    }
    close(pidFd_);
}

void RunningProgram::killNow() const
{
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

void RunningProgram::reap()
{
    int status = 0;
    if (running() && waitpid(pid_, &status, WNOHANG) == pid_) {
        status_ = status;
        watch_.reset();
        onEnd_(*this);
    }
}

bool RunningProgram::endedWell() const
{
    return status_ && WIFEXITED(*status_) && WEXITSTATUS(*status_) == 0;
}

std::string RunningProgram::endText() const
{
    if (!status_) {
        return "still running";
    }
    if (WIFSIGNALED(*status_)) {
        const int number = WTERMSIG(*status_);
        return "killed by signal " + std::to_string(number) + " (" + strsignal(number) + ")";
    }
    return "exit status " + std::to_string(WEXITSTATUS(*status_));
}

void RunningProgram::signal(int number) const
{
    if (running()) {
        kill(pid_, number);
    }
}

}  // namespace Tool
