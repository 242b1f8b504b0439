// The voice-control object of one connection to the bus.
#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "MainLoop.h"

namespace HostPlatform {

/** What the recogniser made of something that was said. */
struct VoiceResult {
    int event;  // a vc_result_event_e, or anything else that was sent
    std::optional<std::string> text;
    std::vector<std::string> nlu;  // one JSON text for each command; empty: the command has none
};

/** Takes what the recogniser's side says, on the main loop. Numbers come as they were sent. */
class VoiceListener {
  public:
    virtual ~VoiceListener() = default;

    virtual void onResult(const VoiceResult& result) = 0;
    virtual void onClientState(std::int32_t state) = 0;
    virtual void onServiceState(std::int32_t state) = 0;
    virtual void onError(std::int32_t reason) = 0;
    virtual void onLanguage(const std::string& language) = 0;
};

/** What others see of a client of voice control. */
struct VoiceProperties {
    std::int32_t state = 0;  // a vc_state_e, or anything else that was sent
    std::string invocationName;
    std::vector<std::string> commands;
};

/**
 * Speaks org.tizen.VoiceControl1 on a connection while the process has a client of voice control. Only the
 * thread that processes the connection may use it. What throws sdbus::Error ends the session: only a
 * connection that is lost, or in an unknown state, fails here.
 */
class VoicePort {
  public:
    VoicePort(sdbus::IConnection& connection, MainLoop& mainLoop);

    /** Exports the object. What arrives goes to @p listener for as long as there is one. */
    void open(std::weak_ptr<VoiceListener> listener, VoiceProperties properties);

    /** Puts other properties in place and tells the bus which of them changed. */
    void show(VoiceProperties properties);

    /** Takes the object off the bus. */
    void close();

  private:
    using Event = std::function<void(VoiceListener&)>;

    void exportObject();
    void addProperties();
    template <typename Argument>
    void addMethod(const char* name, const char* parameter, void (VoiceListener::*handler)(Argument));
    void onResult(sdbus::MethodCall call) const;
    void deliver(const sdbus::MethodCall& call, Event event) const;

    sdbus::IConnection& connection_;
    MainLoop& mainLoop_;
    std::weak_ptr<VoiceListener> listener_;
    VoiceProperties properties_;
    std::unique_ptr<sdbus::IObject> object_;  // null: there is no client
};

}  // namespace HostPlatform
