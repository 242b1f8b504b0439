// A machine that has no thread left.
#pragma once

/** While it lives, the thread that made it can start no other. */
class ThreadStartFault {
  public:
    ThreadStartFault();
    ~ThreadStartFault();
    ThreadStartFault(const ThreadStartFault&) = delete;
    ThreadStartFault& operator=(const ThreadStartFault&) = delete;
};
