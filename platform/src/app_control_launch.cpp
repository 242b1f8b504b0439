#include <app_control.h>

#include <memory>
#include <new>

#include "AppBus.h"
#include "BusCalls.h"
#include "Wire.h"

namespace {

using HostPlatform::AppBus;
using HostPlatform::AppPort;
using HostPlatform::Text;
namespace BusCalls = HostPlatform::BusCalls;
namespace Wire = HostPlatform::Wire;

bool isUtf8(const Text& text)
{
    return !text || HostPlatform::isUtf8(*text);
}

int checkMessage(const app_control_s& message)
{
    if (!isUtf8(message.operation) || !isUtf8(message.uri) || !message.extraData.isUtf8())
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    const std::size_t size = HostPlatform::sizeOf(message.operation) + HostPlatform::sizeOf(message.uri) +
                             message.extraData.size();
    return size > BusCalls::MaxTextBytes ? APP_CONTROL_ERROR_LAUNCH_FAILED : APP_CONTROL_ERROR_NONE;
}

int checkRequest(const app_control_s& request)
{
    if (request.operation == APP_CONTROL_OPERATION_LAUNCH_ON_EVENT)
        return APP_CONTROL_ERROR_LAUNCH_REJECTED;
    if (!request.appId || !Wire::isAppName(*request.appId))
        return APP_CONTROL_ERROR_APP_NOT_FOUND;
    return checkMessage(request);
}

int launch(const app_control_s& request, const HostPlatform::ReplyTarget& target)
{
    const int result = checkRequest(request);
    if (result != APP_CONTROL_ERROR_NONE)
        return result;
    if (target.callback)
        HostPlatform::MainLoop::instance().openForTool();
    return AppBus::instance().launch(std::make_shared<app_control_s>(request), target);
}

int reply(const HostPlatform::Origin& origin, const app_control_s& message, int result)
{
    if (origin.requestId == 0)
        return APP_CONTROL_ERROR_NONE;
    const int checked = checkMessage(message);
    if (checked != APP_CONTROL_ERROR_NONE)
        return checked;
    return AppBus::instance().reply(origin, result, message.extraData);
}

}  // namespace

int app_control_send_launch_request(app_control_h app_control, app_control_reply_cb callback, void* user_data)
{
    if (!app_control)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    try {
        return launch(*app_control, {callback, user_data});
    } catch (const std::bad_alloc&) {
        return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    }
}

int app_control_reply_to_launch_request(app_control_h reply_handle, app_control_h request,
                                        app_control_result_e result)
{
    if (!reply_handle || !request || !request->origin || !HostPlatform::isFinalResult(result))
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    try {
        return reply(*request->origin, *reply_handle, result);
    } catch (const std::bad_alloc&) {
        return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    }
}
