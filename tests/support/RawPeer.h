// A program on the bus that is no app of this platform: it makes and takes the bare messages.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

using Extras = std::map<std::string, sdbus::Variant>;

/** A Launch or Reply as it came over the bus. */
struct RawMessage {
    std::string sender;
    std::string caller;  // of a Launch
    std::uint32_t id = 0;
    std::string operation;    // of a Launch
    std::string uri;          // of a Launch
    std::int32_t result = 0;  // of a Reply
    Extras extras;
};

/** One connection of its own, without or with a name. Ends before the bus does. One thread. */
class RawPeer {
  public:
    /** Called on the peer's own thread before a Launch is answered; may throw an sdbus::Error to refuse. */
    using LaunchHook = std::function<void(const RawMessage&)>;

    explicit RawPeer(const std::string& name = "", LaunchHook hook = {});
    ~RawPeer();

    std::string uniqueName() const { return connection_->getUniqueName(); }

    /** Each makes the call and gives the name of the error that it was answered with; empty for none. */
    std::string launch(const std::string& app, const std::string& operation, std::uint32_t id = 0,
                       const Extras& extras = {}, const std::string& caller = "org.example.raw",
                       const std::string& uri = "");
    std::string reply(const std::string& connection, std::uint32_t id, std::int32_t result = 0,
                      const Extras& extras = {});

    /** The same as launch(), without a reply, for many: makes the call and does not wait for its answer. */
    void launchInABurst(const std::string& app, const std::string& operation, const Extras& extras = {});

    /** Waits until the whole burst is answered, and returns the names of the errors; nothing where that takes
     * too long. */
    std::optional<std::vector<std::string>> answersToTheBurst();

    /** The next message that arrived; nothing when none comes in time. */
    std::optional<RawMessage> nextLaunch();
    std::optional<RawMessage> nextReply();

  private:
    using Queue = std::deque<RawMessage>;

    void exportObject();
    void arrived(Queue& queue, RawMessage message);
    std::optional<RawMessage> next(Queue& queue);
    void answered(const sdbus::Error* error);

    LaunchHook hook_;
    std::mutex mutex_;
    std::condition_variable changed_;
    Queue launches_;
    Queue replies_;
    std::size_t unanswered_ = 0;  // of the burst, as are the errors
    std::vector<std::string> burstErrors_;
    std::unique_ptr<sdbus::IConnection> connection_;
    std::unique_ptr<sdbus::IObject> object_;
    std::map<std::string, std::unique_ptr<sdbus::IProxy>> burstTargets_;
    std::vector<sdbus::PendingAsyncCall> burstCalls_;
};

}  // namespace TestSupport
