// What the service does with the platform's lifecycle events and requests.
#pragma once

#include <app_control.h>

namespace Util {
class AppControlData;
}

namespace Carvoy {

/**
 * The one service object of the process (Util::Singleton). All of it runs on the main loop. It makes the
 * long-lived controllers and deletes them at the end.
 */
class Service {
  public:
    Service();
    virtual ~Service();

    /**
     * Registers with voice control and writes the first status record. Always true: nothing that fails here
     * keeps the service from starting.
     */
    bool onCreate();

    /** Deletes the controllers. A picture that is on its way keeps it waiting until its own time limit. */
    void onTerminate();

    /**
     * Does what the request's operation asks for, before it returns: a `search` blocks until the merchant has
     * answered. Other operations than `search` and `result` are ignored. No request is ever replied to.
     * `request` stays the caller's.
     */
    void onAppControl(app_control_h& request);

  private:
    void search(Util::AppControlData& request);
    void sendResult();
};

}  // namespace Carvoy
