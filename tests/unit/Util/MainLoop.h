// Ecore's main loop, run by a test on its own thread.
#pragma once

#include <Ecore.h>
#include <signal.h>

#include "Patience.h"

/** Ecore is up while it lives. One at a time, on the thread that is to be the main loop's. */
class MainLoop {
  public:
    MainLoop()
    {
        // Ecore's handler for children that end would take them from the test.
        struct sigaction onChild {};
        sigaction(SIGCHLD, nullptr, &onChild);
        ecore_app_no_system_modules();
        ecore_init();
        sigaction(SIGCHLD, &onChild, nullptr);
    }

    ~MainLoop() { ecore_shutdown(); }

    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;

    /** Runs the loop until something in it calls quit(); false when the time is over before. */
    bool run()
    {
        isOver_ = false;
        const double seconds = static_cast<double>(TestSupport::Patience.count());
        Ecore_Timer* const limit = ecore_timer_add(seconds, onLimit, this);
        ecore_main_loop_begin();
        if (!isOver_)
            ecore_timer_del(limit);
        return !isOver_;
    }

    static void quit() { ecore_main_loop_quit(); }

  private:
    static Eina_Bool onLimit(void* self)
    {
        static_cast<MainLoop*>(self)->isOver_ = true;
        quit();
        return ECORE_CALLBACK_CANCEL;
    }

    bool isOver_ = false;
};
