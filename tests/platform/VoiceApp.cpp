// An app with a client of voice control; the first argument says how it ends the client.
#include <service_app.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <voice_control.h>

#include <string>

namespace {

constexpr int WaitReason = 77;  // an error that keeps the main loop until SIGUSR1

std::string mode;
vc_cmd_list_h commands;

void say(const std::string& line)
{
    printf("%s\n", line.c_str());
    fflush(stdout);
}

void say(const std::string& what, int number)
{
    say(what + " " + std::to_string(number));
}

// Until the test sends SIGUSR1, which main() has blocked.
void waitForGo()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    say("waiting");
    int number = 0;
    sigwait(&signals, &number);
}

void blockGo()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void onState(vc_state_e previous, vc_state_e current, void*)
{
    say("state " + std::to_string(previous) + " " + std::to_string(current));
    if (current != VC_STATE_READY)
        return;
    say("name", vc_set_invocation_name("Carvoy"));
    say("commands", vc_set_command_list(commands, VC_COMMAND_TYPE_BACKGROUND));
}

void onError(vc_error_e reason, void*)
{
    if (reason == WaitReason)
        waitForGo();
    say("error", reason);
}

void makeCommands()
{
    vc_cmd_h command = nullptr;
    vc_cmd_list_create(&commands);
    vc_cmd_create(&command);
    vc_cmd_set_command(command, "#org.tizen.commerce");
    vc_cmd_list_add(commands, command);
}

void endClient()
{
    say("unset", vc_unset_command_list(VC_COMMAND_TYPE_BACKGROUND));
    say("unprepare", vc_unprepare());
    say("deinitialize", vc_deinitialize());
}

// Ends the client when the process exits, as an app's singleton does.
struct StaticEnd {
    ~StaticEnd()
    {
        if (mode == "at exit")
            endClient();
        vc_cmd_list_destroy(commands, true);
    }
} staticEnd;

bool onCreate(void*)
{
    makeCommands();
    say("initialize", vc_initialize());
    vc_set_state_changed_cb(onState, nullptr);
    vc_set_error_cb(onError, nullptr);
    say("prepare", vc_prepare());
    waitForGo();
    return mode != "refuse";
}

void onTerminate(void*)
{
    say("terminate");
    if (mode == "in terminate" || mode == "refuse")
        endClient();
}

}  // namespace

int main(int argc, char** argv)
{
    mode = argc > 1 ? argv[1] : "";
    blockGo();
    service_app_lifecycle_callback_s callbacks = {onCreate, onTerminate, nullptr};
    const int result = service_app_main(argc, argv, &callbacks, nullptr);
    say("result", result);
    return result == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
