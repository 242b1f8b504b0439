#include <voice_control_command.h>

#include <algorithm>
#include <new>

#include "Text.h"
#include "VoiceCommand.h"

namespace {

constexpr std::size_t MaxNluBytes = 10'000'000;

template <typename Object>
int create(Object** out)
{
    if (!out)
        return VC_ERROR_INVALID_PARAMETER;
    Object* const object = new (std::nothrow) Object;
    if (!object)
        return VC_ERROR_OUT_OF_MEMORY;
    *out = object;
    return VC_ERROR_NONE;
}

int setNumber(vc_cmd_h command, int vc_cmd_s::*member, int value)
{
    if (!command)
        return VC_ERROR_INVALID_PARAMETER;
    command->*member = value;
    return VC_ERROR_NONE;
}

int getNumber(vc_cmd_h command, int vc_cmd_s::*member, int* value)
{
    if (!command || !value)
        return VC_ERROR_INVALID_PARAMETER;
    *value = command->*member;
    return VC_ERROR_NONE;
}

bool contains(const vc_cmd_list_s& list, vc_cmd_h command)
{
    return std::find(list.commands.begin(), list.commands.end(), command) != list.commands.end();
}

}  // namespace

int vc_cmd_list_create(vc_cmd_list_h* vc_cmd_list)
{
    return create(vc_cmd_list);
}

int vc_cmd_list_destroy(vc_cmd_list_h vc_cmd_list, bool free_command)
{
    if (!vc_cmd_list)
        return VC_ERROR_INVALID_PARAMETER;
    if (free_command) {
        for (const vc_cmd_h command : vc_cmd_list->commands)
            delete command;
    }
    delete vc_cmd_list;
    return VC_ERROR_NONE;
}

int vc_cmd_list_get_count(vc_cmd_list_h vc_cmd_list, int* count)
{
    if (!vc_cmd_list || !count)
        return VC_ERROR_INVALID_PARAMETER;
    *count = static_cast<int>(vc_cmd_list->commands.size());
    return VC_ERROR_NONE;
}

int vc_cmd_list_add(vc_cmd_list_h vc_cmd_list, vc_cmd_h vc_command)
{
    if (!vc_cmd_list || !vc_command || contains(*vc_cmd_list, vc_command))
        return VC_ERROR_INVALID_PARAMETER;
    try {
        vc_cmd_list->commands.push_back(vc_command);
    } catch (const std::bad_alloc&) {
        return VC_ERROR_OUT_OF_MEMORY;
    }
    return VC_ERROR_NONE;
}

int vc_cmd_list_foreach_commands(vc_cmd_list_h vc_cmd_list, vc_cmd_list_cb callback, void* user_data)
{
    if (!vc_cmd_list || !callback)
        return VC_ERROR_INVALID_PARAMETER;
    if (vc_cmd_list->commands.empty())
        return VC_ERROR_EMPTY;
    for (const vc_cmd_h command : vc_cmd_list->commands) {
        if (!callback(command, user_data))
            break;
    }
    return VC_ERROR_NONE;
}

int vc_cmd_create(vc_cmd_h* vc_command)
{
    return create(vc_command);
}

int vc_cmd_destroy(vc_cmd_h vc_command)
{
    if (!vc_command)
        return VC_ERROR_INVALID_PARAMETER;
    delete vc_command;
    return VC_ERROR_NONE;
}

int vc_cmd_set_command(vc_cmd_h vc_command, const char* command)
{
    if (!vc_command)
        return VC_ERROR_INVALID_PARAMETER;
    try {
        vc_command->text = command ? std::optional<std::string>(command) : std::nullopt;
    } catch (const std::bad_alloc&) {
        return VC_ERROR_OUT_OF_MEMORY;
    }
    return VC_ERROR_NONE;
}

int vc_cmd_get_command(vc_cmd_h vc_command, char** command)
{
    if (!vc_command || !command)
        return VC_ERROR_INVALID_PARAMETER;
    return vc_command->text ? HostPlatform::handOut(vc_command->text->c_str(), command) : VC_ERROR_NONE;
}

int vc_cmd_set_type(vc_cmd_h vc_command, int type)
{
    return setNumber(vc_command, &vc_cmd_s::type, type);
}

int vc_cmd_get_type(vc_cmd_h vc_command, int* type)
{
    return getNumber(vc_command, &vc_cmd_s::type, type);
}

int vc_cmd_set_format(vc_cmd_h vc_command, int format)
{
    return setNumber(vc_command, &vc_cmd_s::format, format);
}

int vc_cmd_get_format(vc_cmd_h vc_command, int* format)
{
    return getNumber(vc_command, &vc_cmd_s::format, format);
}

int vc_cmd_get_nlu_json(vc_cmd_h vc_command, char** json)
{
    if (!vc_command || !json)
        return VC_ERROR_INVALID_PARAMETER;
    if (vc_command->format != VC_CMD_FORMAT_ACTION)
        return VC_ERROR_NOT_SUPPORTED;
    if (vc_command->nlu.empty() || vc_command->nlu.size() > MaxNluBytes)
        return VC_ERROR_OPERATION_FAILED;
    return HostPlatform::handOut(vc_command->nlu.c_str(), json);
}
