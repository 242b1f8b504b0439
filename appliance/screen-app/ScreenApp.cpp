#include "ScreenApp.h"

#include <dlog.h>
#include <service_app.h>
#include <tzplatform_config.h>

#include <cstdio>

#include "JsonFile.h"
#include "Message.h"

namespace Appliance {

namespace {

// The screen's folder lies beside the user's media.
std::filesystem::path screenFolder()
{
    const char* media = tzplatform_getenv(TZ_USER_CONTENT);
    return std::filesystem::path(media != nullptr ? media : ".").parent_path() / "screen";
}

}  // namespace

ScreenApp::ScreenApp(const char* tag, const std::string& file) : tag_(tag), file_(screenFolder() / file) {}

int ScreenApp::run(int argc, char** argv)
{
    service_app_lifecycle_callback_s callbacks = {onCreate, onTerminate, onMessage};
    const int code = service_app_main(argc, argv, &callbacks, this);
    return code == TIZEN_ERROR_NONE && !started_ ? TIZEN_ERROR_IO_ERROR : code;
}

bool ScreenApp::onCreate(void* self)
{
    ScreenApp& app = *static_cast<ScreenApp*>(self);
    try {
        app.start();
        app.started_ = true;
        app.save();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", app.tag_, error.what());
    }
    return app.started_;
}

void ScreenApp::onTerminate(void* self)
{
    static_cast<ScreenApp*>(self)->end();
}

void ScreenApp::onMessage(app_control_h message, void* self)
{
    static_cast<ScreenApp*>(self)->handle(message);
}

void ScreenApp::handle(app_control_h message)
{
    const std::string operation = operationOf(message);
    const std::string caller = callerOf(message);
    const std::string outcome = take(message, operation, caller);
    if (outcome != Taken) {
        dlog_print(DLOG_ERROR, tag_, "%s from %s %s", operation.c_str(), caller.c_str(), outcome.c_str());
    }
    noteReceived({0, timeNow(), operation, caller, extrasOf(message).texts, outcome});
    save();
}

void ScreenApp::save()
{
    try {
        replaceJsonFile(file_, content());
    } catch (const std::exception& error) {
        dlog_print(DLOG_ERROR, tag_, "File not written: %s", error.what());
    }
    onSaved();
}

std::string ScreenApp::outcomeOf(const std::string& whyIgnored)
{
    return whyIgnored.empty() ? Taken : "ignored: " + whyIgnored;
}

}  // namespace Appliance
