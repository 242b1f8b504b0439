// Files, commands, threads and time.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <memory>
#include <new>
#include <string>
#include <system_error>
#include <thread>

#include "AppPoints.h"
#include "Point.h"

using Faults::errorOf;
using Faults::plan;
using Faults::Point;
using Faults::tell;

POINT2(lstat, errorOf(EIO, -1))
POINT2(fopen, errorOf(EACCES, nullptr))
POINT4(fread, errorOf(EIO, size_t{0}))
POINT4(fwrite, errorOf(ENOSPC, size_t{0}))
POINT3(fseek, errorOf(ESPIPE, -1))
POINT1(ftell, errorOf(ESPIPE, -1L))
POINT1(fflush, errorOf(ENOSPC, EOF))
END1(fclose, errorOf(ENOSPC, EOF))
POINT1(unlink, errorOf(EACCES, -1))
POINT2(mkdir, errorOf(ENOSPC, -1))
POINT2(fstat, errorOf(EIO, -1))
POINT1(system, errorOf(EAGAIN, -1))

// What these promise is seen by nobody here, and the disk is everybody's.
extern "C" int faulty_fsync(int descriptor);
extern "C" void faulty_sync();

int faulty_fsync(int)
{
    static Point point("fsync");
    return point.call(
        FAULTS_SITE, [] { return errorOf(EIO, -1); }, [] { return 0; });
}

void faulty_sync() {}

extern "C" int faulty_printf(const char* format, ...) __attribute__((format(printf, 1, 2)));

int faulty_printf(const char* format, ...)
{
    static Point point("printf");
    va_list arguments;
    va_start(arguments, format);
    const int result = point.call(
        FAULTS_SITE, [] { return errorOf(ENOSPC, -1); }, [&] { return vprintf(format, arguments); });
    va_end(arguments);
    return result;
}

extern "C" long faulty_syscall(long number, ...);

// Asked for the thread's number only, which takes no argument.
long faulty_syscall(long number, ...)
{
    static Point point("syscall");
    return point.call(
        FAULTS_SITE, [] { return errorOf(ENOSYS, -1L); }, [&] { return syscall(number); });
}

extern "C" int faulty_nanosleep(const timespec* time, timespec* rest);

// Only the sender's worker sleeps here, between two looks at its queue. Its pace costs the tests' time.
int faulty_nanosleep(const timespec*, timespec* rest)
{
    if (!Faults::hasSent.exchange(false))
        tell(plan().polls);
    const timespec brief{0, 1'000'000};
    return nanosleep(&brief, rest);
}

extern "C" void* faulty__ZnamRKSt9nothrow_t(size_t size, const std::nothrow_t& tag);

void* faulty__ZnamRKSt9nothrow_t(size_t size, const std::nothrow_t& tag)
{
    static Point point("new (std::nothrow)");
    return point.call(
        FAULTS_SITE, []() -> void* { return nullptr; }, [&] { return operator new[](size, tag); });
}

// std::ifstream, by the functions that the compiler leaves of it at its levels: opening, and reading a line.
#define OPEN _ZNSt13basic_filebufIcSt11char_traitsIcEE4openEPKcSt13_Ios_Openmode
#define CONSTRUCT \
    _ZNSt14basic_ifstreamIcSt11char_traitsIcEEC1ERKNSt7__cxx1112basic_stringIcS1_SaIcEEESt13_Ios_Openmode
#define GETLINE \
    _ZSt7getlineIcSt11char_traitsIcESaIcEERSt13basic_istreamIT_T0_ES7_RNSt7__cxx1112basic_stringIS4_S5_T1_EE
#define GETLINE_UP_TO \
    _ZSt7getlineIcSt11char_traitsIcESaIcEERSt13basic_istreamIT_T0_ES7_RNSt7__cxx1112basic_stringIS4_S5_T1_EES4_
#define FAULTS_JOIN_(one, other) one##other
#define FAULTS_JOIN(one, other) FAULTS_JOIN_(one, other)
#define FAULTY(symbol) FAULTS_JOIN(faulty_, symbol)

namespace {

using Buffer = std::basic_filebuf<char>;

bool openingFails(const void* site)
{
    static Point point("std::ifstream::open");
    return point.fails(site);
}

std::istream& getline(const void* site, std::istream& stream, std::string& line, char end)
{
    static Point point("std::getline");
    const auto failure = [&]() -> std::istream& {
        line.clear();
        stream.setstate(std::ios_base::badbit);
        return stream;
    };
    return point.call(site, failure, [&]() -> std::istream& { return std::getline(stream, line, end); });
}

}  // namespace

extern "C" Buffer* FAULTY(OPEN)(Buffer* self, const char* path, std::ios_base::openmode mode);
extern "C" void FAULTY(CONSTRUCT)(void* self, const std::string& path, std::ios_base::openmode mode);
extern "C" std::istream& FAULTY(GETLINE)(std::istream& stream, std::string& line);
extern "C" std::istream& FAULTY(GETLINE_UP_TO)(std::istream& stream, std::string& line, char end);

Buffer* FAULTY(OPEN)(Buffer* self, const char* path, std::ios_base::openmode mode)
{
    return openingFails(FAULTS_SITE) ? errorOf(EACCES, nullptr) : self->open(path, mode);
}

void FAULTY(CONSTRUCT)(void* self, const std::string& path, std::ios_base::openmode mode)
{
    auto* const stream = new (self) std::ifstream;
    if (openingFails(FAULTS_SITE))
        stream->setstate(std::ios_base::failbit);
    else
        stream->open(path, mode);
}

std::istream& FAULTY(GETLINE)(std::istream& stream, std::string& line)
{
    return getline(FAULTS_SITE, stream, line, '\n');
}

std::istream& FAULTY(GETLINE_UP_TO)(std::istream& stream, std::string& line, char end)
{
    return getline(FAULTS_SITE, stream, line, end);
}

// Threads: one that cannot start, and how many run.
namespace {

using State = std::thread::_State;

class Counted : public State {
  public:
    explicit Counted(std::unique_ptr<State> state) : state_(std::move(state)) { tell(plan().threads); }
    void _M_run() override
    {
        state_->_M_run();
        state_.reset();
        tell(plan().threads, -1);
    }

  private:
    std::unique_ptr<State> state_;
};

}  // namespace

#define START_THREAD _ZNSt6thread15_M_start_threadESt10unique_ptrINS_6_StateESt14default_deleteIS1_EEPFvvE

extern "C" void START_THREAD(std::thread* self, std::unique_ptr<State> state, void (*needed)());
extern "C" void FAULTY(START_THREAD)(std::thread* self, std::unique_ptr<State> state, void (*needed)());

void FAULTY(START_THREAD)(std::thread* self, std::unique_ptr<State> state, void (*needed)())
{
    static Point point("std::thread");
    if (point.fails(FAULTS_SITE))
        throw std::system_error(EAGAIN, std::generic_category());
    START_THREAD(self, std::make_unique<Counted>(std::move(state)), needed);
}
