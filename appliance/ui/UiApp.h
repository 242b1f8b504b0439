// The UI app: turns the messages of a person's tool and of the services into the card, and shows it where it
// has a face.
#pragma once

#include <app_control.h>

#include <memory>
#include <optional>
#include <string>

#include "Card.h"
#include "Confirmation.h"
#include "Face.h"
#include "Message.h"
#include "ScreenApp.h"

namespace Ui {

struct UiSettings {
    Screen::ConfirmSettings confirmation;
    std::optional<Screen::Settings> face;  // nothing: the card is in its file only
};

// Everything runs on the main loop of run().
class UiApp : public Appliance::ScreenApp {
  public:
    explicit UiApp(UiSettings settings);

  private:
    void start() override;
    void end() override;
    std::string take(app_control_h message, const std::string& operation, const std::string& caller) override;
    void noteReceived(Appliance::Received received) override { card_.noteReceived(std::move(received)); }
    void onSaved() override;
    nlohmann::json content() const override;

    std::string searchForFace(Source source, const std::string& merchant, const std::string& term);
    int askForSearch();
    int askForResult(Source source);
    std::string search(app_control_h message);
    std::string show(app_control_h message);
    std::string takeResult(app_control_h message, Source source);
    std::string takePicture(app_control_h message);
    std::string takeRetailerPicture(app_control_h message);

    void startSearch(Source source, const std::string& merchant, const std::string& term);
    std::string answerSent(app_control_h message, int sendCode) const;
    void answerTool(app_control_h message, app_control_result_e result) const;

    const UiSettings settings_;
    Card card_;
    Confirmation confirmation_;
    std::unique_ptr<Screen::Face> face_;
};

}  // namespace Ui
