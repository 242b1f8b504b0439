// A worker, and the main loop that its completions come back to.
#pragma once

#include <sys/types.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "AsyncThread.h"
#include "MainLoop.h"
#include "ObservedTest.h"

// What functions hold on to; when nobody but the test does, they were destroyed.
using Held = std::shared_ptr<int>;

class Async : public ObservedTest {
  protected:
    // Runs the loop until everything queued so far was run and completed.
    bool finish(Util::AsyncThread& worker)
    {
        worker.asyncCall([] { return true; }, [] { MainLoop::quit(); });
        return loop.run();
    }

    // What a thread did, out of `names`, in order.
    static List orderOn(pid_t thread, const List& names)
    {
        List found;
        for (const TestSupport::Call& call : TestSupport::Calls::all())
            if (call.thread == thread && std::find(names.begin(), names.end(), call.name) != names.end())
                found.push_back(call.name);
        return found;
    }

    MainLoop loop;
};
