#include "VoiceClient.h"

#include <utility>

namespace HostPlatform {

VoiceClient::VoiceClient(std::shared_ptr<AppSession> session) : session_(std::move(session)) {}

int VoiceClient::open()
{
    return onBus([this](VoicePort& port) { port.open(weak_from_this(), properties()); });
}

void VoiceClient::close()
{
    onBus([](VoicePort& port) { port.close(); });
}

int VoiceClient::prepare()
{
    if (session_->hasEnded())
        return VC_ERROR_OPERATION_FAILED;
    if (!preparing_) {
        preparing_ = true;
        post([preparation = ++preparation_](VoiceClient& self) { self.finishPreparation(preparation); });
    }
    return VC_ERROR_NONE;
}

void VoiceClient::unprepare()
{
    enter(VC_STATE_INITIALIZED);
    post([](VoiceClient& self) { self.tellState(VC_STATE_READY, VC_STATE_INITIALIZED); });
}

int VoiceClient::setInvocationName(const std::string& name)
{
    InForce next = inForce_;
    next.invocationName = name;
    return put(std::move(next));
}

int VoiceClient::setCommands(int type, const Texts& commands)
{
    InForce next = inForce_;
    next.commands[type] = commands;
    return put(std::move(next));
}

void VoiceClient::onResult(const VoiceResult& result)
{
    std::vector<vc_cmd_s> commands;
    commands.reserve(result.nlu.size());
    for (const std::string& nlu : result.nlu)
        commands.push_back(commandOf(nlu));
    vc_cmd_list_s list;
    for (vc_cmd_s& command : commands)
        list.commands.push_back(&command);
    call(callbacks_.result, static_cast<vc_result_event_e>(result.event), &list,
         result.text ? result.text->c_str() : nullptr);
}

void VoiceClient::onClientState(std::int32_t state)
{
    const int previous = state_;
    enter(state);
    tellState(previous, state);
}

void VoiceClient::onServiceState(std::int32_t state)
{
    const int previous = std::exchange(serviceState_, state);
    call(callbacks_.serviceStateChanged, static_cast<vc_service_state_e>(previous),
         static_cast<vc_service_state_e>(state));
}

void VoiceClient::onError(std::int32_t reason)
{
    call(callbacks_.error, static_cast<vc_error_e>(reason));
}

void VoiceClient::onLanguage(const std::string& language)
{
    const std::string previous = std::exchange(language_, language);
    call(callbacks_.languageChanged, previous.c_str(), language.c_str());
}

void VoiceClient::finishPreparation(unsigned preparation)
{
    if (!preparing_ || preparation != preparation_)
        return;
    if (!session_->hasEnded())
        return onClientState(VC_STATE_READY);
    preparing_ = false;
    onError(VC_ERROR_ENGINE_NOT_FOUND);
}

// Without a bus the state changes all the same: nobody is there to see another one.
void VoiceClient::enter(int state)
{
    if (state != state_)
        preparing_ = false;
    if (state != VC_STATE_READY)
        inForce_ = {};
    state_ = state;
    show();
}

void VoiceClient::tellState(int previous, int current)
{
    call(callbacks_.stateChanged, static_cast<vc_state_e>(previous), static_cast<vc_state_e>(current));
}

int VoiceClient::put(InForce inForce)
{
    std::swap(inForce_, inForce);
    const int result = show();
    if (result != VC_ERROR_NONE)
        std::swap(inForce_, inForce);
    return result;
}

int VoiceClient::show()
{
    return onBus([this](VoicePort& port) { port.show(properties()); });
}

// This thread waits meanwhile: the action may use what is the main loop's.
int VoiceClient::onBus(const std::function<void(VoicePort&)>& action)
{
    const Answer answer;
    session_->post([&action, giver = answer.giver()](AppSession::Ports& ports) {
        action(ports.voice);
        giver->give(TIZEN_ERROR_NONE);
    });
    return answer.wait() == TIZEN_ERROR_NONE ? VC_ERROR_NONE : VC_ERROR_OPERATION_FAILED;
}

VoiceProperties VoiceClient::properties() const
{
    VoiceProperties properties{state_, inForce_.invocationName, {}};
    for (const auto& [type, commands] : inForce_.commands)
        properties.commands.insert(properties.commands.end(), commands.begin(), commands.end());
    return properties;
}

// A command of a result stands for the background command that the user's sentence called.
vc_cmd_s VoiceClient::commandOf(const std::string& nlu) const
{
    vc_cmd_s command;
    const auto background = inForce_.commands.find(VC_COMMAND_TYPE_BACKGROUND);
    if (background != inForce_.commands.end() && !background->second.empty())
        command.text = background->second.front();
    command.type = VC_COMMAND_TYPE_BACKGROUND;
    command.format = VC_CMD_FORMAT_ACTION;
    command.nlu = nlu;
    return command;
}

void VoiceClient::post(const std::function<void(VoiceClient&)>& item)
{
    MainLoop::instance().post([client = weak_from_this(), item] {
        if (const std::shared_ptr<VoiceClient> present = client.lock())
            item(*present);
    });
}

template <typename Function, typename... Arguments>
void VoiceClient::call(const VoiceCallback<Function>& callback, Arguments... arguments)
{
    if (!callback.function)
        return;
    ++calls_;
    callback.function(arguments..., callback.userData);
    --calls_;
}

}  // namespace HostPlatform
