#include "Tool.h"

#include <Ecore.h>

#include <cstdlib>

#include "Patience.h"

namespace TestSupport {

namespace {

std::string extraOf(app_control_h handle, const char* key)
{
    char* text = nullptr;
    app_control_get_extra_data(handle, key, &text);
    std::string copy = text ? text : "(none)";
    free(text);
    return copy;
}

int countExtras(app_control_h handle)
{
    int count = 0;
    const auto visit = [](app_control_h, const char*, void* data) { return ++*static_cast<int*>(data) > 0; };
    app_control_foreach_extra_data(handle, visit, &count);
    return count;
}

Eina_Bool onTimeOut(void* over)
{
    *static_cast<bool*>(over) = true;
    return ECORE_CALLBACK_CANCEL;
}

}  // namespace

Request::Request(const char* appId, const char* operation)
{
    app_control_create(&handle_);
    app_control_set_app_id(handle_, appId);
    app_control_set_operation(handle_, operation);
}

Request::~Request()
{
    app_control_destroy(handle_);
}

int Request::send(app_control_reply_cb callback, void* data) const
{
    return app_control_send_launch_request(handle_, callback, data);
}

void onReply(app_control_h request, app_control_h reply, app_control_result_e result, void* data)
{
    auto* replies = static_cast<Replies*>(data);
    ++replies->count;
    replies->result = result;
    replies->requestText = extraOf(request, "text");
    replies->replyText = extraOf(reply, "text");
    replies->extras = countExtras(reply);
    replies->thread = std::this_thread::get_id();
}

Replies& lastingReplies()
{
    static std::deque<Replies> all;
    return all.emplace_back();
}

bool loopUntil(const std::function<bool()>& condition)
{
    bool over = false;
    Ecore_Timer* timer = ecore_timer_add(std::chrono::seconds(Patience).count(), onTimeOut, &over);
    while (!condition() && !over)
        ecore_main_loop_iterate_may_block(1);
    if (!over)
        ecore_timer_del(timer);
    return condition();
}

}  // namespace TestSupport
