// What the retailer's service does with the platform's lifecycle events and requests.
#pragma once

#include <app_control.h>

namespace Util {
class AppControlData;
}

namespace Carvoy {

/**
 * Routes requests to the retailer's search controller, as Service does to the merchant bridge's: the
 * controller is made by the first request that needs it, and lives in the process (Util::Singleton). All of
 * it runs on the main loop.
 */
class RetailerService {
  public:
    /** Deletes the controller. A picture that is on its way keeps it waiting until its own time limit. */
    void onTerminate();

    /**
     * Does what the request's operation asks for, before it returns: a `search` blocks until the retailer has
     * answered. Other operations than `search` and `result` are ignored. No request is ever replied to.
     * `request` stays the caller's.
     */
    void onAppControl(app_control_h& request);

  private:
    void search(Util::AppControlData& request);
    void sendResult();
};

}  // namespace Carvoy
