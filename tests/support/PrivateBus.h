// A session bus of the test's own.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "ChildProcess.h"

namespace TestSupport {

/**
 * Runs a message bus that only this test process and its children know, and makes it their session bus
 * (DBUS_SESSION_BUS_ADDRESS) until the object is destroyed. One thread.
 */
class PrivateBus {
  public:
    struct Options {
        std::string serviceFolder;                // where activation files lie; empty: none
        std::chrono::milliseconds replyLimit{0};  // the bus itself gives up on a call; 0: never
        std::string policy{};                     // rules that come last, as in a bus configuration
    };

    /** Throws std::runtime_error where the bus does not start. */
    PrivateBus();
    explicit PrivateBus(const Options& options);
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    const std::string& address() const { return address_; }

    /** Makes it the session bus of this process and its later children again, where there is more than one.
     */
    void use() const;

    /** Ends the bus under its clients. */
    void kill();

    /** Writes an activation file: the bus starts @p command when @p name is called. */
    static void writeActivationFile(const std::string& folder, const std::string& name,
                                    const std::string& command);

  private:
    std::unique_ptr<ChildProcess> daemon_;
    std::string address_;
};

/** Waits until somebody owns @p name on the session bus (or, with false, nobody does). Any thread. */
bool waitForName(const std::string& name, bool owned = true, std::chrono::milliseconds limit = Patience);

}  // namespace TestSupport
