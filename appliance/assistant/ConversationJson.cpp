#include "ConversationJson.h"

#include <stdexcept>

#include "JsonFile.h"

namespace Assistant {

NLOHMANN_JSON_SERIALIZE_ENUM(View, {{View::Closed, "closed"}, {View::Open, "open"}})
NLOHMANN_JSON_SERIALIZE_ENUM(Fate, {{Fate::None, "none"},
                                    {Fate::UnderWay, "under way"},
                                    {Fate::Delivered, "delivered"},
                                    {Fate::Failed, "failed"}})
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ConversationContent, turn, sentence, action, nlu, fate, reason, view,
                                   messages)

namespace {

bool isPossible(const ConversationContent& content)
{
    return content.turn >= 0 && content.nlu.size() <= Conversation::AnswersKept &&
           areCounted(content.messages);
}

}  // namespace

nlohmann::json toJson(const ConversationContent& content)
{
    return content;
}

ConversationContent conversationFromJson(const nlohmann::json& json)
{
    ConversationContent content = json.get<ConversationContent>();
    Appliance::requireWritten(json, content);
    if (!isPossible(content)) {
        throw std::runtime_error("not a conversation's content");
    }
    return content;
}

}  // namespace Assistant
