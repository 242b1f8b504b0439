#include "EventStream.h"

namespace Screen {

namespace {

bool send(httplib::DataSink& sink, const std::string& text)
{
    return sink.write(text.data(), text.size());
}

std::string eventText(const char* name, const std::string& data)
{
    return "event: " + std::string(name) + "\ndata: " + data + "\n\n";
}

}  // namespace

bool EventStream::sendNext(httplib::DataSink& sink)
{
    if (!begun_) {
        begun_ = true;
        return sendWhole(sink);
    }
    const Timeline::News news = timeline_.newsSince(last_, Beat);
    last_ = news.last;
    std::string text;
    switch (news.kind) {
        case Timeline::News::Kind::Ended:
            return false;
        case Timeline::News::Kind::TooMuch:
            return sendWhole(sink);
        case Timeline::News::Kind::Nothing:
            return send(sink, eventText("beat", "{}"));
        case Timeline::News::Kind::Events:
            for (const std::string& event : news.events) {
                text += eventText("step", event);
            }
            return send(sink, text);
    }
    return false;
}

bool EventStream::sendWhole(httplib::DataSink& sink)
{
    const Timeline::Whole whole = timeline_.whole();
    last_ = whole.last;
    return !whole.isEnded && send(sink, eventText("timeline", whole.text));
}

}  // namespace Screen
