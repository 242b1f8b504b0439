#include "BusDecoding.h"

#include "BusQuestion.h"
#include "BusReader.h"
#include "Received.h"

namespace Appliance {

namespace {

std::string textOf(const char* text)
{
    return text == nullptr ? "" : text;
}

bool hasSignature(sd_bus_message* message, const char* signature)
{
    return sd_bus_message_has_signature(message, signature) > 0;
}

std::string resultName(std::int32_t result)
{
    switch (result) {
        case APP_CONTROL_RESULT_SUCCEEDED:
            return "succeeded";
        case APP_CONTROL_RESULT_FAILED:
            return "failed";
        case APP_CONTROL_RESULT_CANCELED:
            return "canceled";
        default:
            return "";
    }
}

}  // namespace

std::string senderOf(sd_bus_message* message)
{
    return textOf(sd_bus_message_get_sender(message));
}

std::string destinationOf(sd_bus_message* message)
{
    return textOf(sd_bus_message_get_destination(message));
}

std::string memberOf(sd_bus_message* message)
{
    return textOf(sd_bus_message_get_member(message));
}

std::uint64_t cookieOf(sd_bus_message* message)
{
    std::uint64_t cookie = 0;
    sd_bus_message_get_cookie(message, &cookie);
    return cookie;
}

std::uint64_t answeredCookieOf(sd_bus_message* message)
{
    std::uint64_t cookie = 0;
    sd_bus_message_get_reply_cookie(message, &cookie);
    return cookie;
}

std::optional<LaunchArguments> launchArguments(sd_bus_message* call)
{
    if (!hasSignature(call, "sussa{sv}")) {
        return std::nullopt;
    }
    BusReader reader(call);
    LaunchArguments launch;
    launch.claimed = reader.text();
    const std::uint32_t id = reader.number();
    launch.requestId = id == 0 ? std::nullopt : std::optional<std::uint32_t>(id);
    launch.operation = reader.text();
    launch.uri = reader.text();
    launch.extras = reader.extras();
    return launch;
}

std::optional<ReplyArguments> replyArguments(sd_bus_message* call)
{
    if (!hasSignature(call, "uia{sv}")) {
        return std::nullopt;
    }
    BusReader reader(call);
    ReplyArguments reply;
    reply.requestId = reader.number();
    reply.result = resultName(reader.signedNumber());
    reply.extras = reader.extras();
    return reply;
}

Extras voiceArguments(sd_bus_message* call)
{
    const std::string method = memberOf(call);
    BusReader reader(call);
    Extras extras;
    if (method == "Result" && hasSignature(call, "iasas")) {
        extras.texts["event"] = reader.signedText();
        extras.lists["text"] = reader.list();
        extras.lists["nlu"] = reader.list();
    } else if ((method == "ClientState" || method == "ServiceState") && hasSignature(call, "i")) {
        extras.texts["state"] = reader.signedText();
    } else if (method == "Error" && hasSignature(call, "i")) {
        extras.texts["reason"] = reader.signedText();
    } else if (method == "Language" && hasSignature(call, "s")) {
        extras.texts["language"] = reader.text();
    }
    return extras;
}

std::string errorOf(sd_bus_message* answer)
{
    const sd_bus_error* error = sd_bus_message_get_error(answer);
    if (error == nullptr) {
        return {};
    }
    const std::string text = textOf(error->message);
    return shortened(textOf(error->name) + (text.empty() ? "" : ": " + text));
}

std::optional<OwnerChange> ownerChangeOf(sd_bus_message* signal)
{
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (sd_bus_message_is_signal(signal, BusName, "NameOwnerChanged") > 0 && senderOf(signal) == BusName &&
        sd_bus_message_read(signal, "sss", &name, &before, &now) > 0) {
        return OwnerChange{name, before, now};
    }
    return std::nullopt;
}

}  // namespace Appliance
