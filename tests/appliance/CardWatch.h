// Waits for what the UI app writes.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Card.h"

namespace TestSupport {

/** Makes the screen's folder of a root and watches the card in it. One thread. */
class CardWatch {
  public:
    explicit CardWatch(const std::string& root);
    ~CardWatch();
    CardWatch(const CardWatch&) = delete;
    CardWatch& operator=(const CardWatch&) = delete;

    /** The first card that is as wanted; nothing when none came in time. */
    std::optional<Ui::CardContent> waitFor(const std::function<bool(const Ui::CardContent&)>& wanted);

  private:
    std::string folder_;
    int notifier_;
};

}  // namespace TestSupport
