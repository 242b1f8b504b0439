// The recogniser's side of voice control: delivers what was heard to the service's client.
#pragma once

#include <Ecore.h>
#include <sdbus-c++/sdbus-c++.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BusWatch.h"

namespace Assistant {

struct Heard {
    std::string sentence;
    bool understood = false;       // false: it is delivered as rejected
    std::vector<std::string> nlu;  // one answer for each command
};

// Main loop only, while Ecore is initialised; nothing blocks. Owns a connection to the session bus.
class Recogniser {
  public:
    // Called once, with why it could not be delivered, or an empty text.
    using DoneHandler = std::function<void(const std::string& reason)>;

    static constexpr double ClientLimit = 5;  // seconds until the client must listen

    // Throws sdbus::Error where the bus cannot be reached.
    Recogniser();
    // Gives up what is under way, without calling its handler.
    ~Recogniser();
    Recogniser(const Recogniser&) = delete;
    Recogniser& operator=(const Recogniser&) = delete;

    bool busy() const { return delivery_ != nullptr; }

    // Waits until the client listens, then plays a recognition: recording, processing, the result, ready.
    // Only while not busy().
    void deliver(Heard heard, DoneHandler onDone);

  private:
    // One that is under way. What the bus still answers for an earlier one is not for it.
    struct Delivery {
        Heard heard;
        DoneHandler onDone;
        bool sent = false;
        int unanswered = 0;                          // calls
        std::string trouble = "it does not answer";  // the first; before it is sent: why not yet
    };
    using Properties = std::map<std::string, sdbus::Variant>;
    using Answer = std::function<void(const sdbus::Error* error)>;

    static Eina_Bool onTime(void* self);

    void watchClient();
    void lookAtClient();
    void onClient(const sdbus::Error* error, const Properties& properties);
    void send();
    void sendRecognition();
    void sendServiceState(int state, const Answer& answer);
    void sendResult(const Answer& answer);
    void finish();
    void stopTimer();

    std::unique_ptr<sdbus::IConnection> connection_;
    std::unique_ptr<sdbus::IProxy> bus_;
    std::unique_ptr<sdbus::IProxy> client_;
    std::optional<Appliance::BusWatch> watch_;
    std::shared_ptr<Delivery> delivery_;
    Ecore_Timer* timer_ = nullptr;
};

}  // namespace Assistant
