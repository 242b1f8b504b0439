// The UI app's face: a page on this machine that shows the card and what is behind it, and takes what a
// person does.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Card.h"
#include "Commands.h"
#include "Confirmation.h"
#include "EventStream.h"
#include "Inbox.h"
#include "Places.h"
#include "Server.h"
#include "Surroundings.h"
#include "Switches.h"
#include "Timeline.h"
#include "Verdict.h"

namespace Screen {

struct Settings {
    int port = 0;  // 0: any that is free
    std::filesystem::path pageFolder;
    std::filesystem::path untrustedFile;  // empty: there is no such switch
    std::vector<std::string> merchants;   // that are offered
};

struct ConfirmSettings {
    Ui::Confirmation::Mode mode;
    int delay;  // of a late answer, in milliseconds
};

// What the app does for the page. Called on the main loop.
struct Actions {
    // Empty where the service was asked, else why not.
    std::function<std::string(Ui::Source source, const std::string& merchant, const std::string& term)>
        search;
    std::function<void(Ui::Confirmation::Mode mode)> confirm;
};

// Main loop only.
class Face {
  public:
    // Throws an exception of std that says what cannot be had. `confirmation`: as it is at the start.
    Face(const Settings& settings, const ConfirmSettings& confirmation, Actions actions);

    std::string address() const;

    // The card as it is now.
    void show(const Ui::CardContent& card);

  private:
    void putCard();
    void putSettings();
    void noteLine(const std::string& line);
    void tell(const std::string& text);

    void take(const Command& command);
    void obey(const SearchCommand& command);
    void obey(const SayCommand& command);
    void obey(const SwitchCommand& command);
    void obey(const ConfirmCommand& command);

    const Settings settings_;
    const Actions actions_;
    ConfirmSettings confirmation_;
    Switches switches_;
    SearchWitness witness_;
    Ui::CardContent card_;  // as it was shown last
    Verdict verdict_;       // on its search
    Timeline timeline_;
    Surroundings surroundings_;
    Inbox inbox_;
    Server server_;
};

}  // namespace Screen
