// What a vc_cmd_h and a vc_cmd_list_h point to.
#pragma once

#include <voice_control_command_expand.h>

#include <optional>
#include <string>
#include <vector>

struct vc_cmd_s {
    std::optional<std::string> text;
    int type = 0;
    int format = VC_CMD_FORMAT_FIXED;
    std::string nlu;  // the assistant's answer, a JSON text; empty: none
};

struct vc_cmd_list_s {
    std::vector<vc_cmd_h> commands;  // owned where the caller says so
};
