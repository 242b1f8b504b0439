// An error code that one thread waits for and another one gives.
#pragma once

#include <tizen.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace HostPlatform {

/** The waiting side. The giving side may be on any thread, and may outlive it. */
class Answer {
    struct State {
        std::mutex mutex;
        std::condition_variable given;
        std::optional<int> code;

        void give(int value)
        {
            const std::lock_guard lock(mutex);
            if (!code)
                code = value;
            given.notify_all();
        }
    };

  public:
    /** Gives the code with give(); the first one counts. When the last copy is gone, that is IO_ERROR. */
    using Giver = std::shared_ptr<State>;

    Answer() : state_(std::make_shared<State>()) {}

    Giver giver() const
    {
        return Giver(state_.get(), [state = state_](State*) { state->give(TIZEN_ERROR_IO_ERROR); });
    }

    int wait() const
    {
        std::unique_lock lock(state_->mutex);
        state_->given.wait(lock, [this] { return state_->code.has_value(); });
        return *state_->code;
    }

  private:
    std::shared_ptr<State> state_;
};

}  // namespace HostPlatform
