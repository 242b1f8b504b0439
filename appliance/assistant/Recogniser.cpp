#include "Recogniser.h"

#include <cstdint>
#include <utility>

#include "Names.h"
#include "VoiceOnBus.h"

namespace Assistant {

namespace {

using Appliance::VoiceInterface;

enum ServiceState : std::int32_t { Ready = 1, Recording = 2, Processing = 3 };
enum ResultEvent : std::int32_t { Success = 0, Rejected = 1 };

const char BusInterface[] = "org.freedesktop.DBus";

std::string whyNotListening(const Appliance::VoiceOnBus& client)
{
    return "its client of voice control is in state " + std::to_string(client.state) + " with " +
           std::to_string(client.commands.size()) + " commands";
}

std::string whyNotThere(const sdbus::Error& error)
{
    const bool isAway = error.getName() == "org.freedesktop.DBus.Error.ServiceUnknown" ||
                        error.getName() == "org.freedesktop.DBus.Error.NameHasNoOwner";
    return isAway ? "it is not running" : "it has no client of voice control: " + error.getMessage();
}

}  // namespace

Recogniser::Recogniser()
    : connection_(sdbus::createSessionBusConnection()),
      bus_(sdbus::createProxy(*connection_, BusInterface, "/org/freedesktop/DBus")),
      client_(sdbus::createProxy(*connection_, Appliance::ServiceAppId, Appliance::VoicePath))
{
    watchClient();
    watch_.emplace(*connection_, [this] {
        if (delivery_) {
            delivery_->trouble = "the bus went away";
            finish();
        }
    });
}

Recogniser::~Recogniser()
{
    stopTimer();
}

void Recogniser::watchClient()
{
    bus_->uponSignal("NameOwnerChanged")
        .onInterface(BusInterface)
        .call([this](const std::string& name, const std::string&, const std::string&) {
            if (name == Appliance::ServiceAppId) {
                lookAtClient();
            }
        });
    bus_->finishRegistration();
    client_->uponSignal("PropertiesChanged")
        .onInterface(Appliance::PropertiesInterface)
        .call([this](const std::string& interface, const Properties&, const std::vector<std::string>&) {
            if (interface == VoiceInterface) {
                lookAtClient();
            }
        });
    client_->finishRegistration();
}

void Recogniser::deliver(Heard heard, DoneHandler onDone)
{
    delivery_ = std::make_shared<Delivery>();
    delivery_->heard = std::move(heard);
    delivery_->onDone = std::move(onDone);
    timer_ = ecore_timer_add(ClientLimit, onTime, this);
    lookAtClient();
    watch_->update();
}

// The signals tell that something changed; the answer to this tells how all of it is now.
void Recogniser::lookAtClient()
{
    if (!delivery_ || delivery_->sent) {
        return;
    }
    try {
        client_->callMethodAsync("GetAll")
            .onInterface(Appliance::PropertiesInterface)
            .withArguments(std::string(VoiceInterface))
            .uponReplyInvoke([this](const sdbus::Error* error, const Properties& properties) {
                onClient(error, properties);
            });
    } catch (const sdbus::Error& error) {
        delivery_->trouble = error.getMessage();
    }
}

void Recogniser::onClient(const sdbus::Error* error, const Properties& properties)
{
    if (!delivery_ || delivery_->sent) {
        return;
    }
    if (error != nullptr) {
        delivery_->trouble = whyNotThere(*error);
        return;
    }
    try {
        const Appliance::VoiceOnBus client = Appliance::voiceFrom(properties);
        delivery_->trouble = whyNotListening(client);
        if (client.listens()) {
            send();
        }
    } catch (const sdbus::Error& unusable) {
        delivery_->trouble = "its properties are of other types: " + unusable.getMessage();
    }
}

void Recogniser::send()
{
    stopTimer();
    delivery_->sent = true;
    delivery_->trouble.clear();
    try {
        sendRecognition();
    } catch (const sdbus::Error& error) {
        delivery_->trouble = error.getMessage();
        finish();
    }
}

// Over when all of it is answered, in whatever order.
void Recogniser::sendRecognition()
{
    const Answer note = [this, delivery = delivery_](const sdbus::Error* error) {
        if (error != nullptr && delivery->trouble.empty()) {
            delivery->trouble = error->getMessage();
        }
        if (--delivery->unanswered == 0) {
            finish();
        }
    };
    delivery_->unanswered = 4;
    sendServiceState(Recording, note);
    sendServiceState(Processing, note);
    sendResult(note);
    sendServiceState(Ready, note);
}

void Recogniser::sendServiceState(int state, const Answer& answer)
{
    client_->callMethodAsync("ServiceState")
        .onInterface(VoiceInterface)
        .withArguments(static_cast<std::int32_t>(state))
        .uponReplyInvoke([answer](const sdbus::Error* error) { answer(error); });
}

void Recogniser::sendResult(const Answer& answer)
{
    const Heard& heard = delivery_->heard;
    const std::int32_t event = heard.understood ? Success : Rejected;
    client_->callMethodAsync("Result")
        .onInterface(VoiceInterface)
        .withArguments(event, std::vector<std::string>{heard.sentence}, heard.nlu)
        .uponReplyInvoke([answer](const sdbus::Error* error) { answer(error); });
}

void Recogniser::finish()
{
    stopTimer();
    const std::shared_ptr<Delivery> delivery = std::exchange(delivery_, nullptr);
    delivery->onDone(delivery->trouble.empty() ? "" : "not delivered to the service: " + delivery->trouble);
}

Eina_Bool Recogniser::onTime(void* self)
{
    Recogniser& recogniser = *static_cast<Recogniser*>(self);
    recogniser.timer_ = nullptr;
    recogniser.finish();
    return ECORE_CALLBACK_CANCEL;
}

void Recogniser::stopTimer()
{
    if (timer_ != nullptr) {
        ecore_timer_del(std::exchange(timer_, nullptr));
    }
}

}  // namespace Assistant
