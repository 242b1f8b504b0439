#include "Asking.h"

#include <memory>
#include <optional>
#include <string>

#include "Exit.h"

namespace Tool {

namespace {

void throwUnlessSent(int code, const std::string& appId)
{
    if (code == APP_CONTROL_ERROR_NONE) {
        return;
    }
    Exit status = Exit::Failed;
    if (code == APP_CONTROL_ERROR_APP_NOT_FOUND || code == APP_CONTROL_ERROR_IO_ERROR) {
        status = Exit::NotRunning;
    } else if (code == APP_CONTROL_ERROR_TIMED_OUT) {
        status = Exit::TimedOut;
    }
    throw Failure(status, appId + ": " + Appliance::reasonOf(code));
}

}  // namespace

Answer ask(EventLoop& loop, const Appliance::Request& request, std::chrono::milliseconds limit,
           const std::function<void()>& check)
{
    // The reply may come after we have given up, so the answer's place is shared with its handler.
    const auto answer = std::make_shared<std::optional<Answer>>();
    const int code =
        Appliance::send(request, [answer](app_control_result_e result, const Appliance::Extras& extras) {
            *answer = Answer{result, extras};
        });
    throwUnlessSent(code, request.appId);
    const auto isAnswered = [&answer, &check] {
        if (!answer->has_value()) {
            check();
        }
        return answer->has_value();
    };
    switch (loop.runUntil(isAnswered, limit)) {
        case EventLoop::Outcome::Done:
            break;
        case EventLoop::Outcome::TimedOut:
            throw Failure(Exit::TimedOut, request.appId + " did not reply in time");
        case EventLoop::Outcome::Interrupted:
            throw Failure(Exit::Interrupted, "interrupted");
    }
    return **answer;
}

void tell(const Appliance::Request& request)
{
    throwUnlessSent(Appliance::send(request), request.appId);
}

}  // namespace Tool
