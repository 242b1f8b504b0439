// Voice commands: the service's place in the platform's voice control, and what it makes of the results.
#pragma once

#include <voice_control.h>

namespace Carvoy {

/**
 * Registers the service with voice control as the background application "Carvoy" while it lives, and turns
 * what the voice assistant understood into requests to the partner app: add to cart, check out, show the
 * cart, show one of the products that were found last.
 *
 * One object lives in the process (Util::Singleton). All of it runs on the main loop, which also calls the
 * callbacks. None comes once the object is gone: it lives until that loop has ended. Failures are logged and
 * leave the service without voice, or a single command without an effect; nothing is tried again. No
 * exception leaves it but for memory that runs out.
 */
class VoiceControl {
  public:
    VoiceControl();
    virtual ~VoiceControl();
    VoiceControl(const VoiceControl&) = delete;
    VoiceControl& operator=(const VoiceControl&) = delete;

  private:
    /** Stops at the first step that fails and leaves those before it in place. */
    void initVoiceControl();

    /** Makes all its steps, whichever fails. */
    void deinitVoiceControl();

    /** Fills the command list, which is handed over when voice control is ready. 0, or -1 if it failed. */
    int _vc_create_command_list();

    static void _vc_state_changed_cb(vc_state_e from, vc_state_e to, void* data);
    static void _vc_service_state_changed_cb(vc_service_state_e from, vc_service_state_e to, void* data);
    static void _vc_result_cb(vc_result_event_e event, vc_cmd_list_h list, const char* text, void* data);
    static void _vc_error_cb(vc_error_e reason, void* data);
    static void _vc_language_changed_cb(const char* from, const char* to, void* data);

    /** Does what one command of a result asks for. `nlu` is the assistant's answer, a JSON text. */
    static void _handle_nlu_result(const char* nlu, void* data);

    vc_cmd_list_h mCommandList;
};

}  // namespace Carvoy
