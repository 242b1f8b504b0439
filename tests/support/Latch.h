// A gate that a test opens when it has seen what it waited for.
#pragma once

#include <condition_variable>
#include <mutex>

#include "Patience.h"

/** Closed until open() is called, and open from then on. Any thread. */
class Latch {
  public:
    void open()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        isOpen_ = true;
        opened_.notify_all();
    }

    /** False if it was not opened in the time that a test has. */
    bool wait()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        return opened_.wait_for(lock, TestSupport::Patience, [this] { return isOpen_; });
    }

    bool isOpen()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return isOpen_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool isOpen_ = false;
};
