#include "Conversation.h"

#include <utility>

namespace Assistant {

void Conversation::begin(const std::string& sentence, const std::string& action,
                         const std::vector<std::string>& nlu)
{
    ++content_.turn;
    content_.sentence = Appliance::shortened(sentence);
    content_.action = action;
    content_.nlu.clear();
    for (std::size_t i = 0; i < nlu.size() && i < AnswersKept; ++i) {
        content_.nlu.push_back(Appliance::shortened(nlu[i]));
    }
    content_.fate = Fate::UnderWay;
    content_.reason.clear();
    content_.view = View::Open;
}

void Conversation::settle(const std::string& reason)
{
    content_.fate = reason.empty() ? Fate::Delivered : Fate::Failed;
    content_.reason = reason;
}

void Conversation::noteReceived(Appliance::Received received)
{
    Appliance::note(content_.messages, std::move(received));
}

}  // namespace Assistant
