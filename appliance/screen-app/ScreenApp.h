// What the apps on the screen have in common: they live by their messages, and keep what they show in a file.
#pragma once

#include <app_control.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "Received.h"

namespace Appliance {

// Everything runs on the main loop of run(), the thread that calls it.
class ScreenApp {
  public:
    // `tag`: in the platform log; it must live as long as the app. `file`: its name in the screen's folder.
    ScreenApp(const char* tag, const std::string& file);
    virtual ~ScreenApp() = default;
    ScreenApp(const ScreenApp&) = delete;
    ScreenApp& operator=(const ScreenApp&) = delete;

    // Runs until the app is told to end. Returns the platform's code, or IO_ERROR where start() failed.
    int run(int argc, char** argv);

  protected:
    // Taken where there is no reason, else "ignored: " and the reason.
    static std::string outcomeOf(const std::string& whyIgnored);

    // Before the first message. Throws a std::exception when the app cannot run.
    virtual void start() {}
    // After the last one.
    virtual void end() {}

    // Deals with a message. Returns Taken, or why it was not: "ignored: …" or "failed: …".
    virtual std::string take(app_control_h message, const std::string& operation,
                             const std::string& caller) = 0;
    virtual void noteReceived(Received received) = 0;

    // What the file is to hold.
    virtual nlohmann::json content() const = 0;

    // After the file was written, or could not be.
    virtual void onSaved() {}

    // Writes the file; a failure leaves a line in the log.
    void save();

  private:
    static bool onCreate(void* self);
    static void onTerminate(void* self);
    static void onMessage(app_control_h message, void* self);

    void handle(app_control_h message);

    const char* tag_;
    std::filesystem::path file_;
    bool started_ = false;
};

}  // namespace Appliance
