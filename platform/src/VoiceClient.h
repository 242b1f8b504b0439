// The process's client of voice control.
#pragma once

#include <voice_control.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "AppSession.h"
#include "VoiceCommand.h"

namespace HostPlatform {

/** A callback of the app; null: none is set. */
template <typename Function>
struct VoiceCallback {
    Function function = nullptr;
    void* userData = nullptr;
};

struct VoiceCallbacks {
    VoiceCallback<vc_result_cb> result;
    VoiceCallback<vc_state_changed_cb> stateChanged;
    VoiceCallback<vc_service_state_changed_cb> serviceStateChanged;
    VoiceCallback<vc_current_language_changed_cb> languageChanged;
    VoiceCallback<vc_error_cb> error;
};

/**
 * An initialised client, from vc_initialize() to vc_deinitialize(): its state, what is in force, and its
 * object on the bus. Main loop's thread only. It is created by std::make_shared: what waits on the main loop
 * for a client that is gone is dropped. Codes are vc_error_e; states are checked by the caller.
 */
class VoiceClient : public VoiceListener, public std::enable_shared_from_this<VoiceClient> {
  public:
    using Texts = std::vector<std::string>;

    explicit VoiceClient(std::shared_ptr<AppSession> session);

    /** Puts the client on the bus. Blocks until it is there. OPERATION_FAILED: no bus. */
    int open();

    /** Takes the client off the bus. Blocks until it is gone. */
    void close();

    /** A vc_state_e, or what the recogniser's side made it. */
    int state() const { return state_; }
    int serviceState() const { return serviceState_; }

    /** Whether a callback of the app is running. */
    bool isCalling() const { return calls_ > 0; }

    VoiceCallbacks& callbacks() { return callbacks_; }

    /** See vc_prepare(). OPERATION_FAILED: no bus. */
    int prepare();
    void unprepare();

    /** Each puts something in force, and blocks until it is seen on the bus. OPERATION_FAILED: no bus. */
    int setInvocationName(const std::string& name);
    int setCommands(int type, const Texts& commands);

  private:
    struct InForce {
        std::string invocationName;
        std::map<int, Texts> commands;  // by type
    };

    void onResult(const VoiceResult& result) override;
    void onClientState(std::int32_t state) override;
    void onServiceState(std::int32_t state) override;
    void onError(std::int32_t reason) override;
    void onLanguage(const std::string& language) override;

    void finishPreparation(unsigned preparation);
    void enter(int state);
    void tellState(int previous, int current);
    int put(InForce inForce);
    int show();
    int onBus(const std::function<void(VoicePort&)>& action);
    VoiceProperties properties() const;
    vc_cmd_s commandOf(const std::string& nlu) const;
    void post(const std::function<void(VoiceClient&)>& item);
    template <typename Function, typename... Arguments>
    void call(const VoiceCallback<Function>& callback, Arguments... arguments);

    const std::shared_ptr<AppSession> session_;
    int state_ = VC_STATE_INITIALIZED;
    int serviceState_ = VC_SERVICE_STATE_NONE;
    std::string language_ = "en_US";
    InForce inForce_;
    VoiceCallbacks callbacks_;
    bool preparing_ = false;
    unsigned preparation_ = 0;  // number of the last one; one that is given up has another number
    int calls_ = 0;             // of the app's callbacks that are running
};

}  // namespace HostPlatform
