#include "Confirmation.h"

#include "Message.h"
#include "UiLog.h"

namespace Ui {

namespace {

void answerNow(app_control_h request, app_control_result_e result)
{
    const int code = Appliance::reply(request, result);
    if (code != APP_CONTROL_ERROR_NONE) {
        UI_ERROR("Product lists not answered: %s", Appliance::reasonOf(code));
    }
}

}  // namespace

void Confirmation::answer(app_control_h request)
{
    switch (mode_) {
        case Mode::Now:
            answerNow(request, APP_CONTROL_RESULT_SUCCEEDED);
            break;
        case Mode::Late:
            hold(request);
            break;
        case Mode::Fail:
            answerNow(request, APP_CONTROL_RESULT_FAILED);
            break;
        case Mode::Never:
            break;
    }
}

void Confirmation::hold(app_control_h request)
{
    drop();
    const int code = app_control_clone(&held_, request);
    if (code != APP_CONTROL_ERROR_NONE) {
        UI_ERROR("Product lists not held back, and never answered: %s", Appliance::reasonOf(code));
        return;
    }
    timer_ = ecore_timer_add(delay_, onTimer, this);
}

void Confirmation::drop()
{
    if (timer_ != nullptr) {
        ecore_timer_del(timer_);
        timer_ = nullptr;
    }
    if (held_ != nullptr) {
        app_control_destroy(held_);
        held_ = nullptr;
    }
}

Eina_Bool Confirmation::onTimer(void* self)
{
    Confirmation& confirmation = *static_cast<Confirmation*>(self);
    confirmation.timer_ = nullptr;
    answerNow(confirmation.held_, APP_CONTROL_RESULT_SUCCEEDED);
    confirmation.drop();
    return ECORE_CALLBACK_CANCEL;
}

}  // namespace Ui
