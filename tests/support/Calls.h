// What the sources under test ask of the platform and its libraries: noted, and made to fail.
#pragma once

#include <app_control.h>
#include <sys/types.h>

#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

namespace TestSupport {

/** One call of an observed function. */
struct Call {
    std::string name;
    std::vector<std::string> arguments;  // those that tell calls apart, as texts; see the wraps' sources
    pid_t thread;                        // the kernel's id
};

/** One entry for the platform's log. */
struct LogEntry {
    int priority;
    std::string tag;
    std::string format;
    std::string text;  // what the format made of the arguments
    pid_t thread;      // the kernel's id
};

/** A message handed to the platform to be sent. Texts that were not set are empty. */
struct Launch {
    std::string appId;
    std::string operation;
    std::string uri;
    std::map<std::string, std::string> extras;
    std::map<std::string, std::vector<std::string>> lists;
    std::vector<std::string> keys;  // of both maps, in the order in which they were added
    app_control_reply_cb callback;  // null: no reply is wanted
    void* userData;
    int code;  // what the sender was told

    /** Calls the callback as the platform does when the other app replies; on the calling thread. */
    void answer(app_control_result_e result) const;
};

/** A reply handed to the platform. */
struct Reply {
    Launch message;  // its extras and lists
    app_control_h request;
    app_control_result_e result;
};

/**
 * Notes every call that the linked objects make of the functions listed in this folder's CMakeLists.txt, in
 * the order in which the calls began. What the platform calls while it serves one of them is its own matter:
 * neither noted nor made to fail. Calls are forwarded, except messages to other apps, which are kept here
 * until sendForReal(). Any thread may call, at any time, static construction and destruction included.
 */
class Calls {
  public:
    /** Forgets all calls, log entries, launches and replies, every fault and every step. */
    static void reset();

    static std::vector<Call> all();
    static std::vector<Call> of(const std::string& name);
    static std::size_t count(const std::string& name);

    /** The names of the calls of these functions, in order. */
    static std::vector<std::string> order(std::initializer_list<const char*> names);

    /** Waits until the function was called so often; false when the time is over. */
    static bool waitFor(const std::string& name, std::size_t count);

    /**
     * Makes the @p nth call from now on of the function do nothing but fail with @p code: its return value;
     * for functions that return a pointer null, with @p code in errno; for POSIX functions their failure with
     * @p code in errno. A code of 0 makes a function report a success that writes nothing.
     */
    static void fail(const std::string& name, int code, std::size_t nth = 1);
    static void failAlways(const std::string& name, int code);

    /** Runs @p step on the calling thread at each call of the function, after it was noted. */
    static void before(const std::string& name, std::function<void()> step);

    /** Text lists that the platform hands out come with this length from now on, and no element above it. */
    static void cutLists(int length);

    static std::vector<LogEntry> log();

    /** Messages go to the bus from now on; they are noted all the same. */
    static void sendForReal();
    static std::vector<Launch> launches();
    static std::vector<Reply> replies();

    /** Waits until so many messages were handed over; false when the time is over. */
    static bool waitForLaunches(std::size_t count);
};

}  // namespace TestSupport
