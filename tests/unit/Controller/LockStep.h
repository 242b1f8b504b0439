// Comes between two critical sections of one thread.
#pragma once

#include <functional>

/**
 * While it lives, `step` runs once on the thread that made it, right before that thread locks a mutex for the
 * `nth` time, counted from 1.
 */
class LockStep {
  public:
    LockStep(int nth, std::function<void()> step);
    ~LockStep();
    LockStep(const LockStep&) = delete;
    LockStep& operator=(const LockStep&) = delete;

    /** Called for each lock of the thread. */
    void count();

  private:
    int left_;
    std::function<void()> step_;
};
