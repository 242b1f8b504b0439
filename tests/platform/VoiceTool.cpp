#include "VoiceTool.h"

#include <voice_control_command_expand.h>

#include <cstdlib>

#include "RawPeer.h"

namespace TestSupport {

namespace {

std::string text(int number)
{
    return std::to_string(number);
}

std::string quoted(const char* bytes)
{
    return bytes ? "'" + std::string(bytes) + "'" : "null";
}

std::string take(char* bytes)
{
    std::string copy = quoted(bytes);
    free(bytes);
    return copy;
}

bool describe(vc_cmd_h command, void* line)
{
    int type = -1;
    int format = -1;
    char* spoken = nullptr;
    char* nlu = nullptr;
    vc_cmd_get_type(command, &type);
    vc_cmd_get_format(command, &format);
    vc_cmd_get_command(command, &spoken);
    const int code = vc_cmd_get_nlu_json(command, &nlu);
    *static_cast<std::string*>(line) += " | " + text(type) + " " + text(format) + " " + take(spoken) + " " +
                                        (code == VC_ERROR_NONE ? take(nlu) : text(code));
    return true;
}

// The unique name of this process's connection, which no app name stands for.
std::string nameOfConnection()
{
    RawPeer peer(PeerId);
    if (Request(PeerId).send() != APP_CONTROL_ERROR_NONE)
        return "";
    return peer.nextLaunch()->sender;
}

}  // namespace

VoiceTool::VoiceTool() : name(nameOfConnection()), recogniser(std::make_unique<Recogniser>(name)) {}

VoiceTool::~VoiceTool()
{
    vc_deinitialize();
    recogniser.reset();
}

void VoiceTool::initialize()
{
    ASSERT_EQ(vc_initialize(), VC_ERROR_NONE);
    ASSERT_EQ(vc_set_result_cb(onResult, this), VC_ERROR_NONE);
    ASSERT_EQ(vc_set_state_changed_cb(onState, this), VC_ERROR_NONE);
    ASSERT_EQ(vc_set_service_state_changed_cb(onServiceState, this), VC_ERROR_NONE);
    ASSERT_EQ(vc_set_current_language_changed_cb(onLanguage, this), VC_ERROR_NONE);
    ASSERT_EQ(vc_set_error_cb(onError, this), VC_ERROR_NONE);
}

void VoiceTool::makeReady()
{
    initialize();
    ASSERT_EQ(vc_prepare(), VC_ERROR_NONE);
    ASSERT_EQ(hear(1), Heard{"state 1 2"});
    heard.clear();
}

Heard VoiceTool::hear(std::size_t count)
{
    loopUntil([&] { return heard.size() >= count; });
    return heard;
}

// A reply to a request of our own goes the same way as everything else that arrives.
void VoiceTool::settle()
{
    RawPeer peer(PeerId);
    Replies& replies = lastingReplies();
    ASSERT_EQ(Request(PeerId).send(onReply, &replies), APP_CONTROL_ERROR_NONE);
    const auto launch = peer.nextLaunch();
    ASSERT_EQ(peer.reply(launch->sender, launch->id), "");
    ASSERT_TRUE(loopUntil([&] { return replies.count == 1; }));
}

vc_state_e VoiceTool::state()
{
    vc_state_e state = VC_STATE_NONE;
    EXPECT_EQ(vc_get_state(&state), VC_ERROR_NONE);
    return state;
}

void VoiceTool::note(std::string line)
{
    EXPECT_EQ(std::this_thread::get_id(), thread_);
    heard.push_back(std::move(line));
    const std::function<void()> step = inCallback;
    if (step)
        step();
}

void VoiceTool::onResult(vc_result_event_e event, vc_cmd_list_h list, const char* bytes, void* data)
{
    std::string line = "result " + text(event) + " " + quoted(bytes);
    const int code = vc_cmd_list_foreach_commands(list, describe, &line);
    if (code != VC_ERROR_NONE)
        line += " " + text(code);
    static_cast<VoiceTool*>(data)->note(line);
}

void VoiceTool::onState(vc_state_e previous, vc_state_e current, void* data)
{
    EXPECT_EQ(state(), current);
    static_cast<VoiceTool*>(data)->note("state " + text(previous) + " " + text(current));
}

void VoiceTool::onServiceState(vc_service_state_e previous, vc_service_state_e current, void* data)
{
    vc_service_state_e now = VC_SERVICE_STATE_NONE;
    EXPECT_EQ(vc_get_service_state(&now), VC_ERROR_NONE);
    EXPECT_EQ(now, current);
    static_cast<VoiceTool*>(data)->note("service " + text(previous) + " " + text(current));
}

void VoiceTool::onLanguage(const char* previous, const char* current, void* data)
{
    static_cast<VoiceTool*>(data)->note("language " + quoted(previous) + " " + quoted(current));
}

void VoiceTool::onError(vc_error_e reason, void* data)
{
    static_cast<VoiceTool*>(data)->note("error " + text(reason));
}

}  // namespace TestSupport
