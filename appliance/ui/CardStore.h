// The card's file, for whatever draws the screen.
#pragma once

#include <filesystem>
#include <optional>

#include "Card.h"

namespace Ui {

// Readers see the whole old card or the whole new one: the file is replaced by a rename.
class CardStore {
  public:
    explicit CardStore(std::filesystem::path file) : file_(std::move(file)) {}

    // Makes the folder where needed. Throws std::runtime_error when the file cannot be written.
    void write(const CardContent& content) const;

    // Nothing where there is no file, or none that write() made.
    std::optional<CardContent> read() const;

  private:
    std::filesystem::path file_;
};

}  // namespace Ui
