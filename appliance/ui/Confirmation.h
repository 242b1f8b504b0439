// How the UI app answers the product lists: at once, later, with a failure, or never.
#pragma once

#include <Ecore.h>
#include <app_control.h>

#include <string>
#include <utility>
#include <vector>

namespace Ui {

// Main loop only. Owns at most one request that is still to be answered.
class Confirmation {
  public:
    enum class Mode { Now, Late, Fail, Never };

    // By what --confirm calls them.
    static inline const std::vector<std::pair<std::string, Mode>> Modes = {
        {"now", Mode::Now}, {"late", Mode::Late}, {"fail", Mode::Fail}, {"never", Mode::Never}};

    // `delay` in seconds; used by Late only.
    Confirmation(Mode mode, double delay) : mode_(mode), delay_(delay) {}
    ~Confirmation() { drop(); }
    Confirmation(const Confirmation&) = delete;
    Confirmation& operator=(const Confirmation&) = delete;

    // For the answers to come.
    void change(Mode mode) { mode_ = mode; }

    // Answers the request, or keeps a clone of it to answer it later in place of an earlier one.
    void answer(app_control_h request);

    // Gives up an answer that is still held back.
    void drop();

  private:
    static Eina_Bool onTimer(void* self);
    void hold(app_control_h request);

    Mode mode_;
    double delay_;
    app_control_h held_ = nullptr;
    Ecore_Timer* timer_ = nullptr;
};

}  // namespace Ui
