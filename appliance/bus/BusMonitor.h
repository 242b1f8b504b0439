// Shows the messages of apps to one another as they pass on the bus (docs/bus-contract.md).
#pragma once

#include <systemd/sd-bus.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "BusMessage.h"
#include "BusOwners.h"
#include "BusPoll.h"
#include "Recent.h"

namespace Appliance {

// Main loop only, while Ecore is initialised. It only listens: it answers nothing, and the bus does not let
// it send. The handlers are called from the main loop, in the order in which the bus passes the messages on;
// what they throw is kept for takeCallbackError(). They must not destroy the monitor.
//
// A message is shown as it was sent, whether it is well-formed or not; of arguments of another signature
// nothing is shown. A reply is paired with the launch of its request id when it comes from the connection
// that got the launch. The oldest of more than MostRemembered launches, and of as many calls without an
// answer yet, are forgotten: what answers them has `answers` 0, and a refusal of a forgotten call is not
// shown.
class BusMonitor {
  public:
    static constexpr std::size_t MostRemembered = 4096;

    using MessageHandler = std::function<void(const BusMessage&)>;
    // Whether somebody owns the name from now on.
    using AppsHandler = std::function<void(const std::string& appId, bool isThere)>;

    // Tells of the apps that are there before it returns. Waits for the bus's answers. `onLost` is called
    // once, when the bus has gone away; all apps have gone then, of which nothing else tells. Throws
    // std::system_error where the bus cannot be reached, std::runtime_error where it does not let anybody
    // watch.
    BusMonitor(const std::string& address, MessageHandler onMessage, AppsHandler onApp,
               std::function<void()> onLost);
    ~BusMonitor();
    BusMonitor(const BusMonitor&) = delete;
    BusMonitor& operator=(const BusMonitor&) = delete;

  private:
    struct Closer {
        void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    };

    // A message that waits for the bus's or the receiver's answer.
    struct Call {
        std::uint64_t number = 0;
        std::string operation;
        std::string from;
        std::optional<std::uint32_t> requestId;  // of a launch that wants a reply
    };

    struct Launch {
        std::uint64_t number = 0;
        std::string operation;
        std::string from;
        std::string receiver;  // the connection; the app id while the bus starts it
    };

    using CallKey = std::pair<std::string, std::uint64_t>;    // connection, its message's cookie
    using LaunchKey = std::pair<std::string, std::uint32_t>;  // connection, request id

    void listenToOwners();
    void watchAll();

    BusPoll::Wish wish() const;
    void work();
    int workOnce();
    void lose();

    void take(sd_bus_message* message);
    void takeCall(sd_bus_message* call);
    void takeLaunch(sd_bus_message* call);
    void takeReply(sd_bus_message* call);
    void takeVoice(sd_bus_message* call);
    void takeReturn(sd_bus_message* answer);
    void takeError(sd_bus_message* answer);
    void takeSignal(sd_bus_message* signal);

    BusMessage begin(BusMessage::Kind kind, sd_bus_message* message);
    void show(const BusMessage& message, sd_bus_message* call, std::optional<std::uint32_t> requestId = {});
    Launch* launchOf(const std::string& connection, const Call& call);

    void forgetConnection(const std::string& connection);

    MessageHandler onMessage_;
    AppsHandler onApp_;
    std::function<void()> onLost_;
    std::unique_ptr<sd_bus, Closer> bus_;
    BusOwners owners_;
    std::uint64_t lastNumber_ = 0;
    Recent<CallKey, Call> calls_{MostRemembered};
    Recent<LaunchKey, Launch> launches_{MostRemembered};
    std::optional<BusPoll> poll_;
};

}  // namespace Appliance
