// The download service as the sources under test meet it where Calls observes them: a test can speak for it.
#pragma once

namespace TestSupport {

/**
 * Each function calls the callback that was set last for the download, on the calling thread, with the user
 * data that came with it; false where none is set. The service's own calls go on beside them.
 */
class DownloadStandIn {
  public:
    /** Forgets all callbacks. */
    static void reset();

    static bool changeState(int id, int state);
    static bool progress(int id, unsigned long long received);
};

}  // namespace TestSupport
