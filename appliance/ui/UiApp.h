// The UI app: turns the messages of a person's tool and of the service into the card.
#pragma once

#include <app_control.h>

#include <optional>
#include <string>

#include "Card.h"
#include "CardStore.h"
#include "Confirmation.h"
#include "Message.h"

namespace Ui {

// Everything runs on the main loop of run(), the thread that calls it.
class UiApp {
  public:
    UiApp(Confirmation::Mode mode, double delay);

    // Runs until the app is told to end. Returns the platform's code.
    int run(int argc, char** argv);

  private:
    static bool onCreate(void* self);
    static void onTerminate(void* self);
    static void onMessage(app_control_h message, void* self);

    void handle(app_control_h message);
    std::string outcomeOf(app_control_h message, const std::string& operation, const std::string& caller);
    std::string search(app_control_h message);
    std::string show(app_control_h message);
    std::string takeResult(app_control_h message);
    std::string takePicture(app_control_h message);

    int askForResult() const;
    void answerTool(app_control_h message, int sendCode) const;
    void save() const;

    Card card_;
    CardStore store_;
    Confirmation confirmation_;
};

}  // namespace Ui
