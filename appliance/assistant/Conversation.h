// What the assistant shows: the last sentence, what was made of it, and whether the view is open.
#pragma once

#include <string>
#include <vector>

#include "Received.h"

namespace Assistant {

enum class View { Closed, Open };

enum class Fate { None, UnderWay, Delivered, Failed };

// Texts are kept as Appliance::shortened() leaves them.
struct ConversationContent {
    int turn = 0;  // counts the sentences of this run of the app from 1
    std::string sentence;
    std::string action;            // empty where the grammar does not know the sentence, or was not asked
    std::vector<std::string> nlu;  // the answers that are delivered, at most Conversation::AnswersKept
    Fate fate = Fate::None;        // of the delivery
    std::string reason;            // why it failed
    View view = View::Closed;
    Appliance::ReceivedMessages messages;
};

// Used by one thread at a time. No input makes it fail.
class Conversation {
  public:
    static constexpr std::size_t AnswersKept = 20;

    const ConversationContent& content() const { return content_; }

    // A sentence was said: opens the view.
    void begin(const std::string& sentence, const std::string& action, const std::vector<std::string>& nlu);

    // What came of its delivery; an empty reason: it arrived.
    void settle(const std::string& reason);

    void closeView() { content_.view = View::Closed; }
    void noteReceived(Appliance::Received received);

  private:
    ConversationContent content_;
};

}  // namespace Assistant
