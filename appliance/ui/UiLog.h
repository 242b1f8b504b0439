// The UI app's lines in the platform log.
#pragma once

#include <dlog.h>

#define UI_TAG "carvoy-ui"
#define UI_INFO(...) dlog_print(DLOG_INFO, UI_TAG, __VA_ARGS__)
#define UI_ERROR(...) dlog_print(DLOG_ERROR, UI_TAG, __VA_ARGS__)
