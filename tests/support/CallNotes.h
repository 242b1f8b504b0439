// How the wraps report to Calls.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Calls.h"

namespace TestSupport::CallNotes {

using Texts = std::vector<std::string>;

/** Notes a call and runs its step. Returns the code that it must fail with, if it must. */
std::optional<int> note(const char* name, Texts arguments = {});

/** Notes a call that returns a code, and makes it unless it must fail. */
template <typename Real>
auto observe(const char* name, Texts arguments, Real real) -> decltype(real())
{
    const std::optional<int> code = note(name, std::move(arguments));
    return code ? static_cast<decltype(real())>(*code) : real();
}

/** The same for a POSIX function, which returns -1 and tells the code in errno. */
int observePosix(const char* name, Texts arguments, const std::function<int()>& real);

/** The same for a function that returns a pointer. */
bool mustFail(const char* name, Texts arguments = {});

/** While it lives, what this thread calls is the platform's own matter. */
class PlatformsOwn {
  public:
    PlatformsOwn();
    ~PlatformsOwn();
    PlatformsOwn(const PlatformsOwn&) = delete;
    PlatformsOwn& operator=(const PlatformsOwn&) = delete;

    static bool isActive();
};

void keep(LogEntry entry);
void keep(Launch launch);
void keep(Reply reply);
bool sendsForReal();

/** The length set by Calls::cutLists(). */
std::optional<int> listLength();

/** A text, also where there is none. */
std::string text(const char* bytes);
std::string text(const void* pointer);

}  // namespace TestSupport::CallNotes
