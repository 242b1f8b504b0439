// Where something is left behind on purpose.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>

/** What is allocated while it lives may stay allocated. */
class NoLeakCheck {
    __lsan::ScopedDisabler disabler_;
};
#else
class NoLeakCheck {
  public:
    NoLeakCheck() {}
};
#endif
