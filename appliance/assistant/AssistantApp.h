// The voice assistant: hears a sentence as text, delivers what it means, and shows its view meanwhile.
#pragma once

#include <memory>
#include <optional>

#include "Conversation.h"
#include "Message.h"
#include "Recogniser.h"
#include "ScreenApp.h"

namespace Assistant {

// Everything runs on the main loop of run().
class AssistantApp : public Appliance::ScreenApp {
  public:
    AssistantApp() : ScreenApp("nuvex-da", "assistant.json") {}

  private:
    void start() override { recogniser_.emplace(); }
    void end() override { recogniser_.reset(); }
    std::string take(app_control_h message, const std::string& operation, const std::string& caller) override;
    void noteReceived(Appliance::Received received) override { conversation_.noteReceived(received); }
    nlohmann::json content() const override;

    std::string outcomeOfOrder(const std::string& operation, const std::string& caller);
    std::string say(app_control_h message);
    std::string deliver(app_control_h message, const Heard& heard);
    std::string closeView();

    Conversation conversation_;
    std::optional<Recogniser> recogniser_;
};

}  // namespace Assistant
