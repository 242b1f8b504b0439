#include "Message.h"

#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace Appliance {

namespace {

using Handle = std::unique_ptr<app_control_s, HandleCloser>;

std::string taken(int code, char* text)
{
    if (code != APP_CONTROL_ERROR_NONE || text == nullptr) {
        return {};
    }
    std::string copy = text;
    std::free(text);
    return copy;
}

std::string textUnder(app_control_h message, const char* key)
{
    char* text = nullptr;
    const int code = app_control_get_extra_data(message, key, &text);
    return taken(code, text);
}

TextList listUnder(app_control_h message, const char* key)
{
    char** texts = nullptr;
    int length = 0;
    if (app_control_get_extra_data_array(message, key, &texts, &length) != APP_CONTROL_ERROR_NONE) {
        return {};
    }
    TextList list;
    for (int i = 0; i < length; ++i) {
        list.push_back(taken(APP_CONTROL_ERROR_NONE, texts[i]));
    }
    std::free(texts);
    return list;
}

bool readExtra(app_control_h message, const char* key, void* extrasPointer)
{
    Extras& extras = *static_cast<Extras*>(extrasPointer);
    bool isList = false;
    app_control_is_extra_data_array(message, key, &isList);
    if (isList) {
        extras.lists[key] = listUnder(message, key);
    } else {
        extras.texts[key] = textUnder(message, key);
    }
    return true;
}

int addText(app_control_h message, const std::string& key, const std::string& text)
{
    if (key.empty() || text.empty()) {
        return APP_CONTROL_ERROR_NONE;
    }
    return app_control_add_extra_data(message, key.c_str(), text.c_str());
}

int addList(app_control_h message, const std::string& key, const TextList& list)
{
    if (key.empty() || list.empty()) {
        return APP_CONTROL_ERROR_NONE;
    }
    std::vector<const char*> texts;
    for (const std::string& text : list) {
        texts.push_back(text.c_str());
    }
    return app_control_add_extra_data_array(message, key.c_str(), texts.data(),
                                            static_cast<int>(texts.size()));
}

int addExtras(app_control_h message, const Extras& extras)
{
    int code = APP_CONTROL_ERROR_NONE;
    for (auto text = extras.texts.begin(); code == APP_CONTROL_ERROR_NONE && text != extras.texts.end();
         ++text) {
        code = addText(message, text->first, text->second);
    }
    for (auto list = extras.lists.begin(); code == APP_CONTROL_ERROR_NONE && list != extras.lists.end();
         ++list) {
        code = addList(message, list->first, list->second);
    }
    return code;
}

Handle newHandle()
{
    app_control_h handle = nullptr;
    app_control_create(&handle);
    return Handle(handle);
}

int fill(app_control_h handle, const Request& request)
{
    int code = app_control_set_app_id(handle, request.appId.c_str());
    if (code == APP_CONTROL_ERROR_NONE) {
        code = app_control_set_operation(handle, request.operation.c_str());
    }
    if (code == APP_CONTROL_ERROR_NONE && !request.uri.empty()) {
        code = app_control_set_uri(handle, request.uri.c_str());
    }
    return code == APP_CONTROL_ERROR_NONE ? addExtras(handle, request.extras) : code;
}

// The handlers of requests that wait for their replies: the platform keeps no more than a pointer, and drops
// it with the app.
class WaitingHandlers {
  public:
    ReplyHandler* add(ReplyHandler handler)
    {
        auto owned = std::make_unique<ReplyHandler>(std::move(handler));
        ReplyHandler* added = owned.get();
        const std::lock_guard<std::mutex> lock(mutex_);
        handlers_.emplace(added, std::move(owned));
        return added;
    }

    // Null where it does not wait here, or no longer.
    std::unique_ptr<ReplyHandler> take(ReplyHandler* handler)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        auto found = handlers_.extract(handler);
        return found.empty() ? nullptr : std::move(found.mapped());
    }

  private:
    std::mutex mutex_;
    std::map<ReplyHandler*, std::unique_ptr<ReplyHandler>> handlers_;
};

WaitingHandlers& waitingHandlers()
{
    static WaitingHandlers handlers;
    return handlers;
}

void onReplyArrived(app_control_h, app_control_h answer, app_control_result_e result, void* handler)
{
    const auto owned = waitingHandlers().take(static_cast<ReplyHandler*>(handler));
    if (owned) {
        (*owned)(result, extrasOf(answer));
    }
}

int launch(app_control_h handle, ReplyHandler onReply)
{
    if (!onReply) {
        return app_control_send_launch_request(handle, nullptr, nullptr);
    }
    ReplyHandler* handler = waitingHandlers().add(std::move(onReply));
    const int code = app_control_send_launch_request(handle, onReplyArrived, handler);
    if (code != APP_CONTROL_ERROR_NONE) {
        waitingHandlers().take(handler);
    }
    return code;
}

}  // namespace

std::string Extras::text(const std::string& key) const
{
    const auto found = texts.find(key);
    return found == texts.end() ? std::string() : found->second;
}

TextList Extras::list(const std::string& key) const
{
    const auto found = lists.find(key);
    return found == lists.end() ? TextList() : found->second;
}

std::string operationOf(app_control_h message)
{
    char* text = nullptr;
    const int code = app_control_get_operation(message, &text);
    return taken(code, text);
}

std::string callerOf(app_control_h message)
{
    char* text = nullptr;
    const int code = app_control_get_caller(message, &text);
    return taken(code, text);
}

Extras extrasOf(app_control_h message)
{
    Extras extras;
    app_control_foreach_extra_data(message, readExtra, &extras);
    return extras;
}

int send(const Request& request, ReplyHandler onReply)
{
    const Handle handle = newHandle();
    if (!handle) {
        return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    }
    const int code = fill(handle.get(), request);
    return code == APP_CONTROL_ERROR_NONE ? launch(handle.get(), std::move(onReply)) : code;
}

int reply(app_control_h request, app_control_result_e result, const Extras& extras)
{
    const Handle handle = newHandle();
    if (!handle) {
        return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    }
    const int code = addExtras(handle.get(), extras);
    return code == APP_CONTROL_ERROR_NONE ? app_control_reply_to_launch_request(handle.get(), request, result)
                                          : code;
}

const char* reasonOf(int code)
{
    switch (code) {
        case APP_CONTROL_ERROR_NONE:
            return "no error";
        case APP_CONTROL_ERROR_INVALID_PARAMETER:
            return "a text is not valid, or the receiver refused the message's form";
        case APP_CONTROL_ERROR_OUT_OF_MEMORY:
            return "out of memory";
        case APP_CONTROL_ERROR_APP_NOT_FOUND:
            return "no such app is running, and the bus cannot start it";
        case APP_CONTROL_ERROR_KEY_REJECTED:
            return "an extra data key is reserved or used twice";
        case APP_CONTROL_ERROR_LAUNCH_REJECTED:
            return "this operation cannot be launched";
        case APP_CONTROL_ERROR_PERMISSION_DENIED:
            return "the bus or the receiver refused it";
        case APP_CONTROL_ERROR_TIMED_OUT:
            return "the receiver did not take it in time";
        case APP_CONTROL_ERROR_IO_ERROR:
            return "the bus cannot be reached";
        default:
            return "the message could not be delivered";
    }
}

}  // namespace Appliance
