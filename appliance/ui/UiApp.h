// The UI app: turns the messages of a person's tool and of the services into the card.
#pragma once

#include <app_control.h>

#include <string>

#include "Card.h"
#include "Confirmation.h"
#include "Message.h"
#include "ScreenApp.h"

namespace Ui {

// Everything runs on the main loop of run().
class UiApp : public Appliance::ScreenApp {
  public:
    UiApp(Confirmation::Mode mode, double delay);

  private:
    void end() override { confirmation_.drop(); }
    std::string take(app_control_h message, const std::string& operation, const std::string& caller) override;
    void noteReceived(Appliance::Received received) override { card_.noteReceived(std::move(received)); }
    nlohmann::json content() const override;

    int askForSearch();
    int askForResult(Source source);
    std::string search(app_control_h message);
    std::string show(app_control_h message);
    std::string takeResult(app_control_h message, Source source);
    std::string takePicture(app_control_h message);
    std::string takeRetailerPicture(app_control_h message);

    void startSearch(Source source, const Appliance::Extras& extras);
    std::string answerSent(app_control_h message, int sendCode) const;
    void answerTool(app_control_h message, app_control_result_e result) const;

    Card card_;
    Confirmation confirmation_;
};

}  // namespace Ui
