// What a person does on the page, as the page sends it.
#pragma once

#include <string>
#include <variant>

#include "Card.h"
#include "Confirmation.h"

namespace Screen {

struct SearchCommand {
    Ui::Source source;
    std::string merchant;  // empty at the retailer
    std::string term;
};

struct SayCommand {
    std::string sentence;
};

struct SwitchCommand {
    std::string id;
    bool on;
};

struct ConfirmCommand {
    Ui::Confirmation::Mode mode;
};

using Command = std::variant<SearchCommand, SayCommand, SwitchCommand, ConfirmCommand>;

inline constexpr std::size_t TextBytes = 1000;  // of a term, a merchant's name, a sentence

bool isCommandPath(const std::string& path);

// Throws StandIn::Refusal (400) that says what is wrong. `path` is a command's.
Command parseCommand(const std::string& path, const std::string& body);

}  // namespace Screen
