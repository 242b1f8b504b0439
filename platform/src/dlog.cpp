#include "dlog.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

// The place of the call would be a line of this file.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>

namespace {

constexpr std::size_t kMessageLimit = 4076;
constexpr std::size_t kTagLimit = 128;
constexpr std::size_t kPrefixLimit = kTagLimit + 32;
// An entry as written, prefixes included; lines that no longer fit are left out.
constexpr std::size_t kEntryLimit = 16 * 1024;

constexpr char kJournalField[] = "MESSAGE=";
constexpr std::size_t kJournalFieldLength = sizeof kJournalField - 1;

// What one call hands over. Lives on the caller's stack: logging allocates nothing.
struct Entry {
    log_priority priority;
    std::string_view tag;
    char text[kJournalFieldLength + kMessageLimit + 1];  // kJournalField, the message and a zero byte
    std::size_t length;                                  // of the message

    std::string_view message() const { return {text + kJournalFieldLength, length}; }
};

// A stream may lose its reader; a regular file may not.
enum class Output { File, Stream, Journal };

struct Sink {
    Output output;
    int descriptor;
};

bool aJournalListens()
{
    // sd_journal_sendv() reports success when nobody listens.
    const int probe = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (probe < 0)
        return false;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "/run/systemd/journal/socket");
    const bool listens = ::connect(probe, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    ::close(probe);
    return listens;
}

Sink descriptorSink(int descriptor)
{
    struct stat status {};
    const bool regular = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    return {regular ? Output::File : Output::Stream, descriptor};
}

Sink openSink()
{
    const char* path = std::getenv("APPLIANCE_DLOG");
    if (path == nullptr || *path == '\0')
        return aJournalListens() ? Sink{Output::Journal, -1} : descriptorSink(STDERR_FILENO);
    const int file = ::open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, 0644);
    if (file >= 0)
        return descriptorSink(file);
    std::fprintf(stderr, "dlog: cannot open %s: %s; the log goes to standard error\n", path,
                 std::strerror(errno));
    return descriptorSink(STDERR_FILENO);
}

const Sink& sink()
{
    // Has no destructor and its file is never closed: static destructors may still log.
    static const Sink chosen = openSink();
    return chosen;
}

// Whether the bytes from `start` up to `end` begin a UTF-8 character that needs more bytes than that.
bool isCutCharacter(const char* start, const char* end)
{
    const auto lead = static_cast<unsigned char>(*start);
    const int needed = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    return end - start < needed;
}

// The length without a character that the cut at `length` split.
std::size_t withoutCutCharacter(const char* text, std::size_t length)
{
    std::size_t start = length;
    while (start > 0 && length - start < 4) {
        --start;
        const bool continues = (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80;
        if (!continues)
            return isCutCharacter(text + start, text + length) ? start : length;
    }
    return length;
}

__attribute__((format(printf, 2, 0))) bool formatMessage(Entry& entry, const char* fmt, va_list ap)
{
    std::memcpy(entry.text, kJournalField, kJournalFieldLength);
    char* message = entry.text + kJournalFieldLength;
    const int length = std::vsnprintf(message, kMessageLimit + 1, fmt, ap);
    if (length < 0)
        return false;
    entry.length = static_cast<std::size_t>(length);
    if (entry.length > kMessageLimit)
        entry.length = withoutCutCharacter(message, kMessageLimit);
    return true;
}

char letterOf(log_priority priority)
{
    constexpr char kLetters[] = "??VDIWEFS";
    return kLetters[priority];
}

int syslogLevelOf(log_priority priority)
{
    constexpr int kLevels[] = {7, 7, 7, 7, 6, 4, 3, 2, 7};
    return kLevels[priority];
}

// The bytes of one entry, gathered for one write.
class Lines {
  public:
    bool append(std::string_view prefix, std::string_view line)
    {
        if (length + prefix.size() + line.size() + 1 > sizeof bytes)
            return false;
        put(prefix);
        put(line);
        put("\n");
        return true;
    }

    std::string_view text() const { return {bytes, length}; }

  private:
    void put(std::string_view text)
    {
        std::memcpy(bytes + length, text.data(), text.size());
        length += text.size();
    }

    char bytes[kEntryLimit];
    std::size_t length = 0;
};

void fillBrief(Lines& lines, const Entry& entry)
{
    char prefix[kPrefixLimit];
    const int length = std::snprintf(prefix, sizeof prefix, "%c/%-8.*s(%5d): ", letterOf(entry.priority),
                                     static_cast<int>(entry.tag.size()), entry.tag.data(), ::getpid());
    std::string_view rest = entry.message();
    while (true) {
        const std::size_t end = rest.find('\n');
        const bool fits = lines.append({prefix, static_cast<std::size_t>(length)}, rest.substr(0, end));
        if (!fits || end == std::string_view::npos || end + 1 == rest.size())
            return;
        rest.remove_prefix(end + 1);
    }
}

// Keeps a reader that went away from ending the process: SIGPIPE waits while this lives and is then dropped.
class SigpipeHeldBack {
  public:
    SigpipeHeldBack()
    {
        sigemptyset(&sigpipe);
        sigaddset(&sigpipe, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        wasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &sigpipe, &before);
    }

    ~SigpipeHeldBack()
    {
        const timespec now{};
        if (!wasPending)
            sigtimedwait(&sigpipe, nullptr, &now);
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }

    SigpipeHeldBack(const SigpipeHeldBack&) = delete;
    SigpipeHeldBack& operator=(const SigpipeHeldBack&) = delete;

  private:
    sigset_t sigpipe{};
    sigset_t before{};
    bool wasPending = false;
};

ssize_t writeUninterrupted(int descriptor, std::string_view text)
{
    while (true) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written >= 0 || errno != EINTR)
            return written;
    }
}

ssize_t writeTo(const Sink& out, std::string_view text)
{
    if (out.output == Output::File)
        return writeUninterrupted(out.descriptor, text);
    const SigpipeHeldBack held;
    return writeUninterrupted(out.descriptor, text);
}

int writeBrief(const Sink& out, const Entry& entry)
{
    Lines lines;
    fillBrief(lines, entry);
    const ssize_t written = writeTo(out, lines.text());
    return written < 0 ? DLOG_ERROR_NOT_PERMITTED : static_cast<int>(written);
}

int sendToJournal(Entry& entry)
{
    char priority[16];
    char identifier[kPrefixLimit];
    const int priorityLength =
        std::snprintf(priority, sizeof priority, "PRIORITY=%d", syslogLevelOf(entry.priority));
    const int identifierLength = std::snprintf(identifier, sizeof identifier, "SYSLOG_IDENTIFIER=%.*s",
                                               static_cast<int>(entry.tag.size()), entry.tag.data());
    const iovec fields[] = {{entry.text, kJournalFieldLength + entry.length},
                            {priority, static_cast<std::size_t>(priorityLength)},
                            {identifier, static_cast<std::size_t>(identifierLength)}};
    const int sent = sd_journal_sendv(fields, 3);
    return sent < 0 ? DLOG_ERROR_NOT_PERMITTED : static_cast<int>(entry.length);
}

__attribute__((format(printf, 3, 0))) int logEntry(log_priority prio, const char* tag, const char* fmt,
                                                   va_list ap)
{
    if (prio < DLOG_VERBOSE || prio >= DLOG_PRIO_MAX || fmt == nullptr)
        return DLOG_ERROR_INVALID_PARAMETER;
    Entry entry;
    entry.priority = prio;
    entry.tag = tag == nullptr ? std::string_view() : std::string_view(tag, ::strnlen(tag, kTagLimit));
    if (!formatMessage(entry, fmt, ap))
        return DLOG_ERROR_INVALID_PARAMETER;
    const Sink& out = sink();
    return out.output == Output::Journal ? sendToJournal(entry) : writeBrief(out, entry);
}

}  // namespace

int dlog_vprint(log_priority prio, const char* tag, const char* fmt, va_list ap)
{
    const int before = errno;
    const int result = logEntry(prio, tag, fmt, ap);
    errno = before;
    return result;
}

int dlog_print(log_priority prio, const char* tag, const char* fmt, ...)
{
    va_list ap;
    va_start(ap, fmt);
    const int result = dlog_vprint(prio, tag, fmt, ap);
    va_end(ap);
    return result;
}
