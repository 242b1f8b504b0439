#include <cstdio>
#include <memory>

#include "Asking.h"
#include "Commands.h"
#include "Extras.h"
#include "PlainText.h"
#include "Session.h"

namespace Tool {

namespace {

using Appliance::printable;

struct SendArguments {
    std::string root;
    std::string appId;
    std::string operation;
    std::vector<std::string> texts;
    std::vector<std::string> lists;
    std::string uri;
    bool waitReply = false;
    std::chrono::milliseconds limit{30'000};
};

const char* resultName(app_control_result_e result)
{
    switch (result) {
        case APP_CONTROL_RESULT_SUCCEEDED:
            return "succeeded";
        case APP_CONTROL_RESULT_FAILED:
            return "failed";
        case APP_CONTROL_RESULT_CANCELED:
            return "canceled";
        case APP_CONTROL_RESULT_APP_STARTED:
            break;
    }
    return "app started";
}

void printAnswer(const Answer& answer)
{
    std::printf("%s\n", resultName(answer.result));
    for (const auto& [key, text] : answer.extras.texts) {
        std::printf("%s = %s\n", printable(key).c_str(), printable(text).c_str());
    }
    for (const auto& [key, list] : answer.extras.lists) {
        for (std::size_t i = 0; i < list.size(); ++i) {
            std::printf("%s[%zu] = %s\n", printable(key).c_str(), i, printable(list[i]).c_str());
        }
    }
}

Exit send(const SendArguments& arguments)
{
    const Appliance::Request request = {arguments.appId, operationUri(arguments.operation), arguments.uri,
                                        parseExtras(arguments.texts, arguments.lists)};
    enterSessionOrBus(arguments.root);
    EventLoop loop;
    if (!arguments.waitReply) {
        tell(request);
        return Exit::Ok;
    }
    const Answer answer = ask(loop, request, arguments.limit);
    printAnswer(answer);
    return answer.result == APP_CONTROL_RESULT_SUCCEEDED ? Exit::Ok : Exit::Failed;
}

}  // namespace

void addSendCommand(CLI::App& app, Action& chosen)
{
    const auto arguments = std::make_shared<SendArguments>();
    CLI::App* command = app.add_subcommand("send", "Send any app any operation with any extra data");
    command->add_option("APP_ID", arguments->appId, "The app")->required();
    command
        ->add_option("OPERATION", arguments->operation,
                     "A URI, or service:NAME, platform:NAME, assistant:NAME")
        ->required();
    addTexts(*command, "--extra", arguments->texts, "A text")->type_name("KEY=VALUE");
    addTexts(*command, "--list", arguments->lists, "A text list; \\, is a comma inside an element")
        ->type_name("KEY=A,B,C");
    command->add_option("--uri", arguments->uri, "The request's URI");
    command->add_flag("--wait-reply", arguments->waitReply, "Ask for a reply, wait for it and print it");
    addTimeoutOption(*command, arguments->limit, "Seconds to wait for the reply");
    addRootOption(*command, arguments->root);
    command->footer(
        "Where no appliance runs in the root, the bus of DBUS_SESSION_BUS_ADDRESS is used.\n"
        "\nExamples:\n"
        "  appliance send org.tizen.carvoy-service service:result\n"
        "  appliance send org.tizen.carvoy service:search --extra key_merchant=freshmart \\\n"
        "      --extra key_search_term=milk --wait-reply\n");
    command->callback([arguments, &chosen] { chosen = [arguments] { return send(*arguments); }; });
}

}  // namespace Tool
