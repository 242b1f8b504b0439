#include <unistd.h>

#include <cstdio>
#include <memory>

#include "Commands.h"
#include "IndentedJson.h"
#include "Session.h"
#include "UiClient.h"
#include "VoiceView.h"
#include "Words.h"

namespace Tool {

namespace {

struct SayArguments {
    std::string root;
    std::vector<std::string> sentence;
    std::vector<std::string> nlu;
    std::chrono::milliseconds limit{5'000};
    bool json = false;
};

Exit sayOnce(const SayArguments& arguments)
{
    const Session session = enterSession(arguments.root);
    EventLoop loop;
    const VoiceTurn turn =
        say(loop, session.root, {joined(arguments.sentence), arguments.nlu, arguments.limit});
    const auto card = currentCard(session.root);
    if (arguments.json) {
        std::printf("%s\n", Appliance::indentedJson(turnJson(turn, card)).c_str());
    } else {
        std::fputs(turnText(turn, card, styleOf(STDOUT_FILENO)).c_str(), stdout);
        std::fflush(stdout);
        std::fputs(turnErrors(turn, card, styleOf(STDERR_FILENO)).c_str(), stderr);
    }
    return turn.isFine() ? Exit::Ok : Exit::Failed;
}

}  // namespace

void addSayCommand(CLI::App& app, Action& chosen)
{
    const auto arguments = std::make_shared<SayArguments>();
    CLI::App* command = app.add_subcommand("say", "Say a sentence to the voice assistant");
    addTexts(*command, "SENTENCE", arguments->sentence, "What is said; several words are one sentence")
        ->required()
        ->check(notEmpty());
    addTexts(*command, "--nlu", arguments->nlu, "Delivered as it is, in place of what the grammar answers")
        ->type_name("JSON");
    addTimeoutOption(*command, arguments->limit,
                     "Seconds to wait for an earlier sentence, and then for messages");
    command->add_flag("--json", arguments->json, "One JSON object on standard output, nothing else");
    addRootOption(*command, arguments->root);
    command->footer("The assistant understands:\n" + sentencesText() +
                    "\nExamples:\n"
                    "  appliance say \"show me the second one\"\n"
                    "  appliance say add to cart\n"
                    "  appliance say --nlu '{\"actionName\": \"Show Cart Success\"}' anything\n");
    command->callback([arguments, &chosen] {
        if (arguments->nlu.size() > MostAnswers) {
            throw CLI::ValidationError("--nlu", "not more than " + std::to_string(MostAnswers) + " times");
        }
        chosen = [arguments] { return sayOnce(*arguments); };
    });
}

}  // namespace Tool
