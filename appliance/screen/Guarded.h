// For callbacks of the main loop: what goes wrong in one leaves a line in the platform log, and ends nothing
// else.
#pragma once

#include <exception>

#include "UiLog.h"

namespace Screen {

template <typename Callback>
void guarded(const char* what, const Callback& callback)
{
    try {
        callback();
    } catch (const std::exception& error) {
        UI_ERROR("%s: %s", what, error.what());
    }
}

}  // namespace Screen
