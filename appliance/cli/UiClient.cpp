#include "UiClient.h"

#include <cstdlib>

#include "Asking.h"
#include "CardJson.h"
#include "Exit.h"
#include "JsonFile.h"
#include "Names.h"

namespace Tool {

CardMark askUi(EventLoop& loop, const std::string& operation, const Appliance::Extras& extras,
               std::chrono::milliseconds limit)
{
    const Answer answer = ask(loop, {Appliance::UiAppId, operation, "", extras}, limit);
    if (answer.result != APP_CONTROL_RESULT_SUCCEEDED) {
        throw Failure(Exit::Failed, "the UI app could not reach the service");
    }
    const std::string sequence = answer.extras.text(Appliance::KeyCardSequence);
    const std::string results = answer.extras.text(Appliance::KeyCardResults);
    return {std::atoi(sequence.c_str()), std::atoi(results.c_str())};
}

std::optional<Ui::CardContent> currentCard(const Root& root)
{
    return Appliance::readJsonFile(root.cardFile(), Ui::cardFromJson);
}

}  // namespace Tool
