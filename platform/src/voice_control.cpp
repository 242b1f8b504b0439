#include <voice_control.h>

#include <memory>
#include <new>
#include <string>
#include <utility>

#include "AppBus.h"
#include "BusCalls.h"
#include "Text.h"
#include "VoiceClient.h"

namespace {

using HostPlatform::VoiceCallback;
using HostPlatform::VoiceCallbacks;
using HostPlatform::VoiceClient;
namespace BusCalls = HostPlatform::BusCalls;

// Null before vc_initialize(). Never destroyed: the app's static objects may use the client to the last.
std::shared_ptr<VoiceClient>& client()
{
    static auto* const client = new std::shared_ptr<VoiceClient>;
    return *client;
}

VoiceClient* clientIn(vc_state_e state)
{
    VoiceClient* const current = client().get();
    return current && current->state() == state ? current : nullptr;
}

// Runs a step that allocates.
template <typename Step>
int guarded(Step step)
{
    try {
        return step();
    } catch (const std::bad_alloc&) {
        return VC_ERROR_OUT_OF_MEMORY;
    }
}

int initialize()
{
    HostPlatform::MainLoop::instance().openForTool();
    std::shared_ptr<HostPlatform::AppSession> session = HostPlatform::AppBus::instance().session();
    if (!session)
        return VC_ERROR_OPERATION_FAILED;
    const auto created = std::make_shared<VoiceClient>(std::move(session));
    const int result = created->open();
    if (result == VC_ERROR_NONE)
        client() = created;
    return result;
}

template <typename Function>
int setCallback(VoiceCallback<Function> VoiceCallbacks::*slot, Function callback, void* userData)
{
    if (!callback)
        return VC_ERROR_INVALID_PARAMETER;
    VoiceClient* const current = clientIn(VC_STATE_INITIALIZED);
    if (!current)
        return VC_ERROR_INVALID_STATE;
    current->callbacks().*slot = {callback, userData};
    return VC_ERROR_NONE;
}

template <typename Function>
int unsetCallback(VoiceCallback<Function> VoiceCallbacks::*slot)
{
    VoiceClient* const current = clientIn(VC_STATE_INITIALIZED);
    if (!current)
        return VC_ERROR_INVALID_STATE;
    current->callbacks().*slot = {};
    return VC_ERROR_NONE;
}

bool isCommandType(int type)
{
    return type == VC_COMMAND_TYPE_FOREGROUND || type == VC_COMMAND_TYPE_BACKGROUND;
}

VoiceClient::Texts textsOf(const vc_cmd_list_s& list)
{
    VoiceClient::Texts texts;
    for (const vc_cmd_h command : list.commands) {
        if (command->text)
            texts.push_back(*command->text);
    }
    return texts;
}

// Whether the texts can be shown on the bus.
int check(const VoiceClient::Texts& texts)
{
    std::size_t size = 0;
    for (const std::string& text : texts) {
        if (!HostPlatform::isUtf8(text))
            return VC_ERROR_INVALID_PARAMETER;
        size += text.size();
    }
    const bool fits = size <= BusCalls::MaxTextBytes && texts.size() <= BusCalls::MaxTexts;
    return fits ? VC_ERROR_NONE : VC_ERROR_OPERATION_FAILED;
}

int setInvocationName(VoiceClient& current, const std::string& name)
{
    const int checked = check({name});
    return checked == VC_ERROR_NONE ? current.setInvocationName(name) : checked;
}

int setCommands(VoiceClient& current, int type, const VoiceClient::Texts& texts)
{
    const int checked = check(texts);
    return checked == VC_ERROR_NONE ? current.setCommands(type, texts) : checked;
}

}  // namespace

int vc_initialize(void)
{
    return client() ? VC_ERROR_INVALID_STATE : guarded(initialize);
}

int vc_deinitialize(void)
{
    if (!client())
        return VC_ERROR_INVALID_STATE;
    if (client()->isCalling())
        return VC_ERROR_OPERATION_FAILED;
    return guarded([] {
        client()->close();
        client().reset();
        return VC_ERROR_NONE;
    });
}

int vc_prepare(void)
{
    VoiceClient* const current = clientIn(VC_STATE_INITIALIZED);
    return current ? guarded([&] { return current->prepare(); }) : VC_ERROR_INVALID_STATE;
}

int vc_unprepare(void)
{
    VoiceClient* const current = clientIn(VC_STATE_READY);
    if (!current)
        return VC_ERROR_INVALID_STATE;
    return guarded([&] {
        current->unprepare();
        return VC_ERROR_NONE;
    });
}

int vc_get_state(vc_state_e* state)
{
    if (!state)
        return VC_ERROR_INVALID_PARAMETER;
    *state = static_cast<vc_state_e>(client() ? client()->state() : VC_STATE_NONE);
    return VC_ERROR_NONE;
}

int vc_get_service_state(vc_service_state_e* state)
{
    if (!state)
        return VC_ERROR_INVALID_PARAMETER;
    if (!client())
        return VC_ERROR_INVALID_STATE;
    *state = static_cast<vc_service_state_e>(client()->serviceState());
    return VC_ERROR_NONE;
}

int vc_set_invocation_name(const char* name)
{
    VoiceClient* const current = clientIn(VC_STATE_READY);
    if (!current)
        return VC_ERROR_INVALID_STATE;
    return guarded([&] { return setInvocationName(*current, name ? name : ""); });
}

int vc_set_command_list(vc_cmd_list_h vc_cmd_list, int type)
{
    if (!vc_cmd_list || !isCommandType(type))
        return VC_ERROR_INVALID_PARAMETER;
    VoiceClient* const current = clientIn(VC_STATE_READY);
    if (!current)
        return VC_ERROR_INVALID_STATE;
    return guarded([&] { return setCommands(*current, type, textsOf(*vc_cmd_list)); });
}

int vc_unset_command_list(int type)
{
    if (!isCommandType(type))
        return VC_ERROR_INVALID_PARAMETER;
    VoiceClient* const current = clientIn(VC_STATE_READY);
    if (!current)
        return VC_ERROR_INVALID_STATE;
    return guarded([&] { return setCommands(*current, type, {}); });
}

int vc_set_result_cb(vc_result_cb callback, void* user_data)
{
    return setCallback(&VoiceCallbacks::result, callback, user_data);
}

int vc_unset_result_cb(void)
{
    return unsetCallback(&VoiceCallbacks::result);
}

int vc_set_state_changed_cb(vc_state_changed_cb callback, void* user_data)
{
    return setCallback(&VoiceCallbacks::stateChanged, callback, user_data);
}

int vc_unset_state_changed_cb(void)
{
    return unsetCallback(&VoiceCallbacks::stateChanged);
}

int vc_set_service_state_changed_cb(vc_service_state_changed_cb callback, void* user_data)
{
    return setCallback(&VoiceCallbacks::serviceStateChanged, callback, user_data);
}

int vc_unset_service_state_changed_cb(void)
{
    return unsetCallback(&VoiceCallbacks::serviceStateChanged);
}

int vc_set_current_language_changed_cb(vc_current_language_changed_cb callback, void* user_data)
{
    return setCallback(&VoiceCallbacks::languageChanged, callback, user_data);
}

int vc_unset_current_language_changed_cb(void)
{
    return unsetCallback(&VoiceCallbacks::languageChanged);
}

int vc_set_error_cb(vc_error_cb callback, void* user_data)
{
    return setCallback(&VoiceCallbacks::error, callback, user_data);
}

int vc_unset_error_cb(void)
{
    return unsetCallback(&VoiceCallbacks::error);
}
