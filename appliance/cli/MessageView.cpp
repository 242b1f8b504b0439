#include "MessageView.h"

#include <cstdio>
#include <ctime>

#include "Extras.h"
#include "PlainText.h"

namespace Tool {

namespace {

using Appliance::BusMessage;
using Kind = BusMessage::Kind;

constexpr char Gap[] = "  ";
constexpr char Indent[] = "    ";

bool startsCharacter(char byte)
{
    constexpr unsigned mask = 0xC0;
    constexpr unsigned continuation = 0x80;
    return (static_cast<unsigned char>(byte) & mask) != continuation;
}

// At most as many characters, and "…" for the rest.
std::string cut(const std::string& text, std::size_t most)
{
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (startsCharacter(text[i]) && ++characters > most) {
            return text.substr(0, i) + "…";
        }
    }
    return text;
}

std::string shown(const std::string& text, Detail detail)
{
    constexpr std::size_t most = 60;
    const std::string clean = Appliance::printable(text);
    return detail == Detail::Brief ? cut(clean, most) : clean;
}

std::string padded(const std::string& text, std::size_t width)
{
    return text + std::string(text.size() < width ? width - text.size() : 0, ' ');
}

std::string timeText(std::int64_t milliseconds)
{
    constexpr std::int64_t second = 1000;
    const std::time_t seconds = milliseconds / second;
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", local.tm_hour, local.tm_min, local.tm_sec,
                  static_cast<int>(milliseconds % second));
    return text;
}

std::string numberText(std::uint64_t number)
{
    return "#" + std::to_string(number);
}

bool isRefused(const BusMessage& message)
{
    return message.kind == Kind::Refusal || message.result == "failed" || message.result == "canceled";
}

std::string kindText(const BusMessage& message, const Style& style)
{
    constexpr std::size_t width = 7;
    const std::string kind = padded(Appliance::nameOf(message.kind), width);
    if (isRefused(message)) {
        return style.red(kind);
    }
    return message.kind == Kind::Reply ? style.green(kind) : kind;
}

std::string appText(const std::string& app, Detail detail)
{
    return app.empty() ? "?" : shown(app, detail);
}

std::string operationText(const std::string& operation, Detail detail)
{
    return shown(detail == Detail::Brief ? shortOperation(operation) : operation, detail);
}

// What it answers, and what it says to that.
std::string answerText(const BusMessage& message, Detail detail, const Style& style)
{
    const std::string answers = message.answers == 0 ? "" : Gap + ("to " + numberText(message.answers));
    if (message.kind == Kind::Refusal) {
        return answers + Gap + style.red(Appliance::printable(message.error));
    }
    if (message.kind == Kind::Reply) {
        const std::string result = message.result.empty() ? "another result" : message.result;
        return answers + Gap + (isRefused(message) ? style.red(result) : shown(result, detail));
    }
    return answers;
}

std::string headText(const BusMessage& message, Detail detail, const Style& style)
{
    constexpr std::size_t numberWidth = 4;
    const std::string operation = operationText(message.operation, detail);
    return style.dim(timeText(message.at)) + Gap +
           style.dim(padded(numberText(message.number), numberWidth)) + Gap + kindText(message, style) + Gap +
           appText(message.from, detail) + " → " + appText(message.to, detail) +
           (operation.empty() ? "" : Gap + style.bold(operation)) + answerText(message, detail, style);
}

std::string briefExtras(const BusMessage& message, const Style& style)
{
    std::string text;
    if (!message.uri.empty()) {
        text += Gap + style.dim("uri ") + shown(message.uri, Detail::Brief);
    }
    for (const auto& [key, value] : message.extras.texts) {
        text += Gap + style.dim(shown(key, Detail::Brief) + "=") + shown(value, Detail::Brief);
    }
    for (const auto& [key, list] : message.extras.lists) {
        text += Gap + style.dim(shown(key, Detail::Brief)) + "[" + std::to_string(list.size()) + "]";
    }
    return text + "\n";
}

std::string wholeLine(const std::string& key, const std::string& value, const Style& style)
{
    return Indent + style.dim(Appliance::printable(key) + " = ") + Appliance::printable(value) + "\n";
}

std::string wholeExtras(const BusMessage& message, const Style& style)
{
    std::string text = "\n";
    if (!message.uri.empty()) {
        text += Indent + style.dim("uri ") + Appliance::printable(message.uri) + "\n";
    }
    for (const auto& [key, value] : message.extras.texts) {
        text += wholeLine(key, value, style);
    }
    for (const auto& [key, list] : message.extras.lists) {
        if (list.empty()) {
            text += Indent + style.dim(Appliance::printable(key) + "[]") + "\n";
        }
        for (std::size_t i = 0; i < list.size(); ++i) {
            text += wholeLine(key + "[" + std::to_string(i) + "]", list[i], style);
        }
    }
    return text;
}

}  // namespace

std::string messageText(const BusMessage& message, Detail detail, const Style& style)
{
    const std::string head = headText(message, detail, style);
    return head + (detail == Detail::Brief ? briefExtras(message, style) : wholeExtras(message, style));
}

}  // namespace Tool
