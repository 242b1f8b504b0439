// Voice control and the response parser. Arguments noted: names, texts and numbers; callbacks not.
// The client's calls end here; commands, lists and the parser are the platform's own.
#include <nuvex-da-parser.h>
#include <voice_control_command_expand.h>

#include <cstdlib>
#include <cstring>
#include <map>

#include "CallNotes.h"
#include "VoiceStandIn.h"

#define WRAPPED(function) decltype(function) __real_##function, __wrap_##function
extern "C" {
WRAPPED(vc_initialize);
WRAPPED(vc_deinitialize);
WRAPPED(vc_prepare);
WRAPPED(vc_unprepare);
WRAPPED(vc_set_invocation_name);
WRAPPED(vc_set_command_list);
WRAPPED(vc_unset_command_list);
WRAPPED(vc_set_result_cb);
WRAPPED(vc_unset_result_cb);
WRAPPED(vc_set_state_changed_cb);
WRAPPED(vc_unset_state_changed_cb);
WRAPPED(vc_set_service_state_changed_cb);
WRAPPED(vc_unset_service_state_changed_cb);
WRAPPED(vc_set_current_language_changed_cb);
WRAPPED(vc_unset_current_language_changed_cb);
WRAPPED(vc_set_error_cb);
WRAPPED(vc_unset_error_cb);
WRAPPED(vc_cmd_list_create);
WRAPPED(vc_cmd_list_destroy);
WRAPPED(vc_cmd_list_add);
WRAPPED(vc_cmd_list_foreach_commands);
WRAPPED(vc_cmd_create);
WRAPPED(vc_cmd_destroy);
WRAPPED(vc_cmd_set_command);
WRAPPED(vc_cmd_set_type);
WRAPPED(vc_cmd_set_format);
WRAPPED(vc_cmd_get_nlu_json);
WRAPPED(ndp_response_data_parse);
WRAPPED(ndp_response_data_destroy);
WRAPPED(ndp_response_data_get_action_name);
WRAPPED(ndp_response_data_get_action_data);
WRAPPED(ndp_commerce_action_data_get_representative_commerce_data);
WRAPPED(ndp_commerce_data_get_id);
}

using namespace TestSupport;
using CallNotes::text;

namespace {

template <typename Callback>
struct Slot {
    Callback callback = nullptr;
    void* userData = nullptr;

    template <typename... Arguments>
    bool call(Arguments... arguments) const
    {
        if (callback)
            callback(arguments..., userData);
        return callback != nullptr;
    }
};

struct Client {
    Slot<vc_result_cb> result;
    Slot<vc_state_changed_cb> state;
    Slot<vc_service_state_changed_cb> serviceState;
    Slot<vc_current_language_changed_cb> language;
    Slot<vc_error_cb> error;
    std::map<vc_cmd_h, VoiceStandIn::Command> commands;  // of the result that is being given
};

Client client;

int keep(const char* name, CallNotes::Texts arguments = {})
{
    return CallNotes::observe(name, std::move(arguments), [] { return static_cast<int>(VC_ERROR_NONE); });
}

template <typename Callback>
int keep(const char* name, Slot<Callback>& slot, Callback callback, void* userData)
{
    return CallNotes::observe(name, {text(userData)}, [&] {
        slot = {callback, userData};
        return static_cast<int>(VC_ERROR_NONE);
    });
}

template <typename Real>
int forward(const char* name, CallNotes::Texts arguments, Real real)
{
    return CallNotes::observe(name, std::move(arguments), [&] {
        const CallNotes::PlatformsOwn own;
        return real();
    });
}

/** "text/type/format". */
bool describe(vc_cmd_h command, void* textsPointer)
{
    char* words = nullptr;
    int type = 0;
    int format = 0;
    vc_cmd_get_command(command, &words);
    vc_cmd_get_type(command, &type);
    vc_cmd_get_format(command, &format);
    static_cast<CallNotes::Texts*>(textsPointer)
        ->push_back(text(words) + "/" + std::to_string(type) + "/" + std::to_string(format));
    std::free(words);
    return true;
}

vc_cmd_list_h listOf(const std::vector<VoiceStandIn::Command>& commands)
{
    vc_cmd_list_h list = nullptr;
    __real_vc_cmd_list_create(&list);
    for (const VoiceStandIn::Command& command : commands) {
        vc_cmd_h handle = nullptr;
        __real_vc_cmd_create(&handle);
        __real_vc_cmd_set_format(handle, VC_CMD_FORMAT_ACTION);
        __real_vc_cmd_list_add(list, handle);
        client.commands[handle] = command;
    }
    return list;
}

}  // namespace

void VoiceStandIn::reset()
{
    client = {};
}

bool VoiceStandIn::changeState(int from, int to)
{
    return client.state.call(static_cast<vc_state_e>(from), static_cast<vc_state_e>(to));
}

bool VoiceStandIn::changeServiceState(int from, int to)
{
    return client.serviceState.call(static_cast<vc_service_state_e>(from),
                                    static_cast<vc_service_state_e>(to));
}

bool VoiceStandIn::changeLanguage(const char* from, const char* to)
{
    return client.language.call(from, to);
}

bool VoiceStandIn::fail(int reason)
{
    return client.error.call(static_cast<vc_error_e>(reason));
}

bool VoiceStandIn::giveResult(int event, const char* text, const std::vector<Command>& commands)
{
    const vc_cmd_list_h list = listOf(commands);
    const bool isSet = client.result.call(static_cast<vc_result_event_e>(event), list, text);
    client.commands.clear();
    __real_vc_cmd_list_destroy(list, true);
    return isSet;
}

int __wrap_vc_initialize()
{
    return keep("vc_initialize");
}

int __wrap_vc_deinitialize()
{
    return keep("vc_deinitialize");
}

int __wrap_vc_prepare()
{
    return keep("vc_prepare");
}

int __wrap_vc_unprepare()
{
    return keep("vc_unprepare");
}

int __wrap_vc_set_invocation_name(const char* name)
{
    return keep("vc_set_invocation_name", {text(name)});
}

int __wrap_vc_set_command_list(vc_cmd_list_h list, int type)
{
    CallNotes::Texts arguments = {std::to_string(type)};
    __real_vc_cmd_list_foreach_commands(list, describe, &arguments);
    return keep("vc_set_command_list", std::move(arguments));
}

int __wrap_vc_unset_command_list(int type)
{
    return keep("vc_unset_command_list", {std::to_string(type)});
}

int __wrap_vc_set_result_cb(vc_result_cb callback, void* userData)
{
    return keep("vc_set_result_cb", client.result, callback, userData);
}

int __wrap_vc_unset_result_cb()
{
    return keep("vc_unset_result_cb");
}

int __wrap_vc_set_state_changed_cb(vc_state_changed_cb callback, void* userData)
{
    return keep("vc_set_state_changed_cb", client.state, callback, userData);
}

int __wrap_vc_unset_state_changed_cb()
{
    return keep("vc_unset_state_changed_cb");
}

int __wrap_vc_set_service_state_changed_cb(vc_service_state_changed_cb callback, void* userData)
{
    return keep("vc_set_service_state_changed_cb", client.serviceState, callback, userData);
}

int __wrap_vc_unset_service_state_changed_cb()
{
    return keep("vc_unset_service_state_changed_cb");
}

int __wrap_vc_set_current_language_changed_cb(vc_current_language_changed_cb callback, void* userData)
{
    return keep("vc_set_current_language_changed_cb", client.language, callback, userData);
}

int __wrap_vc_unset_current_language_changed_cb()
{
    return keep("vc_unset_current_language_changed_cb");
}

int __wrap_vc_set_error_cb(vc_error_cb callback, void* userData)
{
    return keep("vc_set_error_cb", client.error, callback, userData);
}

int __wrap_vc_unset_error_cb()
{
    return keep("vc_unset_error_cb");
}

int __wrap_vc_cmd_list_create(vc_cmd_list_h* list)
{
    return forward("vc_cmd_list_create", {}, [&] { return __real_vc_cmd_list_create(list); });
}

// It destroys the list also where it must fail: nobody else could.
int __wrap_vc_cmd_list_destroy(vc_cmd_list_h list, bool freeCommands)
{
    const std::optional<int> code =
        CallNotes::note("vc_cmd_list_destroy", {list ? "list" : "null", freeCommands ? "true" : "false"});
    const CallNotes::PlatformsOwn own;
    const int real = __real_vc_cmd_list_destroy(list, freeCommands);
    return code.value_or(real);
}

int __wrap_vc_cmd_list_add(vc_cmd_list_h list, vc_cmd_h command)
{
    return forward("vc_cmd_list_add", {}, [&] { return __real_vc_cmd_list_add(list, command); });
}

// What it calls back is not the platform's own.
int __wrap_vc_cmd_list_foreach_commands(vc_cmd_list_h list, vc_cmd_list_cb callback, void* userData)
{
    return CallNotes::observe("vc_cmd_list_foreach_commands", {text(userData)},
                              [&] { return __real_vc_cmd_list_foreach_commands(list, callback, userData); });
}

int __wrap_vc_cmd_create(vc_cmd_h* command)
{
    return forward("vc_cmd_create", {}, [&] { return __real_vc_cmd_create(command); });
}

int __wrap_vc_cmd_destroy(vc_cmd_h command)
{
    return forward("vc_cmd_destroy", {}, [&] { return __real_vc_cmd_destroy(command); });
}

int __wrap_vc_cmd_set_command(vc_cmd_h command, const char* words)
{
    return forward("vc_cmd_set_command", {text(words)},
                   [&] { return __real_vc_cmd_set_command(command, words); });
}

int __wrap_vc_cmd_set_type(vc_cmd_h command, int type)
{
    return forward("vc_cmd_set_type", {std::to_string(type)},
                   [&] { return __real_vc_cmd_set_type(command, type); });
}

int __wrap_vc_cmd_set_format(vc_cmd_h command, int format)
{
    return forward("vc_cmd_set_format", {std::to_string(format)},
                   [&] { return __real_vc_cmd_set_format(command, format); });
}

int __wrap_vc_cmd_get_nlu_json(vc_cmd_h command, char** json)
{
    return CallNotes::observe("vc_cmd_get_nlu_json", {}, [&] {
        const VoiceStandIn::Command& answer = client.commands.at(command);
        if (answer.nlu)
            *json = strdup(answer.nlu->c_str());
        return answer.code;
    });
}

int __wrap_ndp_response_data_parse(const char* json, ndp_response_data_h* response)
{
    return forward("ndp_response_data_parse", {text(json)},
                   [&] { return __real_ndp_response_data_parse(json, response); });
}

int __wrap_ndp_response_data_destroy(ndp_response_data_h response)
{
    return forward("ndp_response_data_destroy", {text(response)},
                   [&] { return __real_ndp_response_data_destroy(response); });
}

int __wrap_ndp_response_data_get_action_name(ndp_response_data_h response, char** name)
{
    return forward("ndp_response_data_get_action_name", {},
                   [&] { return __real_ndp_response_data_get_action_name(response, name); });
}

int __wrap_ndp_response_data_get_action_data(ndp_response_data_h response, ndp_action_data_h* data)
{
    return forward("ndp_response_data_get_action_data", {},
                   [&] { return __real_ndp_response_data_get_action_data(response, data); });
}

int __wrap_ndp_commerce_action_data_get_representative_commerce_data(ndp_action_data_h action,
                                                                     ndp_commerce_data_h* commerce)
{
    return forward("ndp_commerce_action_data_get_representative_commerce_data", {}, [&] {
        return __real_ndp_commerce_action_data_get_representative_commerce_data(action, commerce);
    });
}

int __wrap_ndp_commerce_data_get_id(ndp_commerce_data_h commerce, char** id)
{
    return forward("ndp_commerce_data_get_id", {},
                   [&] { return __real_ndp_commerce_data_get_id(commerce, id); });
}
