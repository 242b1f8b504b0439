// Voice control as the sources under test meet it where Calls observes them: the test plays its part.
#pragma once

#include <voice_control.h>

#include <optional>
#include <string>
#include <vector>

namespace TestSupport {

/**
 * Clients of voice control get to no bus here: what they ask for succeeds, is noted by Calls, and leads to
 * nothing but what the test says. Each function calls the callback that was set last, on the calling thread,
 * with the user data that came with it; false where none is set.
 */
class VoiceStandIn {
  public:
    /** What the assistant answers for a command: a text, or the code of a failure. */
    struct Command {
        std::optional<std::string> nlu;
        int code = VC_ERROR_NONE;
    };

    /** Forgets all callbacks. */
    static void reset();

    static bool changeState(int from, int to);
    static bool changeServiceState(int from, int to);
    static bool changeLanguage(const char* from, const char* to);
    static bool fail(int reason);

    /** Gives a result with these commands, which live during the callback only. */
    static bool giveResult(int event, const char* text, const std::vector<Command>& commands);
};

}  // namespace TestSupport
