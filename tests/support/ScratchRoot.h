// A fresh folder for everything that the appliance of this test process keeps.
#pragma once

#include <string>

namespace TestSupport {

/**
 * The process's own folder, which APPLIANCE_ROOT names. It is there before any static object is
 * constructed and gone after the last one is destroyed. Any thread.
 */
class ScratchRoot {
  public:
    static const std::string& path();

    /** A path below the folder; does not create it. */
    static std::string file(const std::string& name);
};

}  // namespace TestSupport
