// What the bus hands to the app's main loop.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace HostPlatform {

/**
 * The process's way onto its main loop: items run there one after the other, in the order in which they
 * were posted, and after each of them the loop handles signals: none runs after the signal that ends the
 * app. While the loop is closed they wait. There is one object, and it is never destroyed: a
 * thread may still post while the process exits.
 */
class MainLoop {
  public:
    using Item = std::function<void()>;
    enum class End { None, Asked, BusLost };

    static MainLoop& instance();

    /** Any thread; needs no Ecore. */
    void post(Item item);

    /** Any thread. How many items wait. */
    std::size_t waiting() const;

    /**
     * Makes the main loop of a process without service_app_main() run items, and keeps Ecore up for as
     * long as the process lives; what the process does on signals stays as it is. Does nothing where the
     * loop is open already, and on any thread other than the process's first: Ecore takes the thread that
     * initialises it for the main one.
     */
    void openForTool();

    /** Announces an app: the loop is closed until run(), and requestEnd() counts from here on. */
    void prepare();

    /** Runs Ecore's loop until requestEnd(), on the thread that initialised Ecore; then closes it. */
    End run();

    /** The app is gone: drops what waits, unrun. Same thread as run(). */
    void finish();

    /** Any thread. Ends run(), or the next one after prepare(). The first reason counts. */
    void requestEnd(End reason);

  private:
    void open();
    void close();
    void wake();
    void runOne();
    bool takeItem(Item& item);
    bool mayRun() const;
    static void onWake(void* self);
    static void onTurn(void* self);
    static void onItem(void* self);

    mutable std::mutex mutex_;
    std::deque<Item> items_;
    bool open_ = false;   // Ecore may be called and items may run
    bool awake_ = false;  // a wake-up is on its way to the loop
    bool app_ = false;    // between prepare() and finish()
    End end_ = End::None;
};

}  // namespace HostPlatform
