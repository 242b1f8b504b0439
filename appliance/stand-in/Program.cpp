// The signals are waited for, not handled: nothing runs in a signal handler.
#include "Program.h"

#include "Trouble.h"

#include <csignal>
#include <cstdio>
#include <exception>

namespace Appliance::StandIn {
namespace {

constexpr int cannotStart = 1;
constexpr int wrongUsage = 2;

sigset_t endSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

}  // namespace

std::string footer(const std::string& readyLine, const std::string& causesOfFailure)
{
    return "\nWhen it is ready it prints one line of JSON: " + readyLine +
           "\nIt serves until SIGTERM or SIGINT.\n\n"
           "Trouble words, to be put into the search term and to be combined:\n" +
           troubleHelp() +
           "\nExit status:\n"
           "  0  stopped by a signal\n"
           "  1  could not start: " +
           causesOfFailure +
           "; standard error says which\n"
           "  2  wrong usage\n";
}

void holdEndSignals()
{
    const sigset_t signals = endSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void waitForEndSignal()
{
    const sigset_t signals = endSignals();
    int signal = 0;
    sigwait(&signals, &signal);
}

int run(CLI::App& app, int argc, char** argv, const std::function<void()>& serve)
{
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : wrongUsage;
    }
    try {
        serve();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", app.get_name().c_str(), error.what());
        return cannotStart;
    }
}

}  // namespace Appliance::StandIn
