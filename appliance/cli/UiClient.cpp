#include "UiClient.h"

#include <cstdlib>
#include <memory>

#include "CardStore.h"
#include "Exit.h"
#include "Names.h"

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

Answer ask(EventLoop& loop, const Appliance::Request& request, std::chrono::milliseconds limit)
{
    // The reply may come after we have given up, so the answer's place is shared with its handler.
    const auto answer = std::make_shared<std::optional<Answer>>();
    const int code =
        Appliance::send(request, [answer](app_control_result_e result, const Appliance::Extras& extras) {
            *answer = Answer{result, extras};
        });
    throwUnlessSent(code, request.appId);
    switch (loop.runUntil([&answer] { return answer->has_value(); }, limit)) {
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

CardMark askUi(EventLoop& loop, const std::string& operation, const Appliance::Extras& extras,
               std::chrono::milliseconds limit)
{
    const Answer answer = ask(loop, {Appliance::UiAppId, operation, "", extras}, limit);
    if (answer.result != APP_CONTROL_RESULT_SUCCEEDED) {
        throw Failure(Exit::Failed, "the UI app could not reach the service");
    }
    const std::string sequence = answer.extras.text(Appliance::KeyCardSequence);
    const std::string results = answer.extras.text(Appliance::KeyCardResults);
    return {std::atoi(sequence.c_str()), std::atoi(results.c_str())};
}

std::optional<Ui::CardContent> currentCard(const Root& root)
{
    return Ui::CardStore(root.cardFile()).read();
}

}  // namespace Tool
