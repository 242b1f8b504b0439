// The options that were set on libcurl's handles.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Calls.h"
#include "ObservedTest.h"

// The options set so far, each by its name.
inline List options()
{
    List names;
    for (const TestSupport::Call& call : TestSupport::Calls::of("curl_easy_setopt"))
        names.push_back(call.arguments.at(0));
    return names;
}

// What the option was set to; the test fails where it was not.
inline List valuesOf(const std::string& option)
{
    for (const TestSupport::Call& call : TestSupport::Calls::of("curl_easy_setopt"))
        if (call.arguments.at(0) == option)
            return {call.arguments.begin() + 1, call.arguments.end()};
    ADD_FAILURE() << option << " was not set";
    return {""};
}

inline void* pointerOf(const std::string& option)
{
    return reinterpret_cast<void*>(std::stoull(valuesOf(option).at(0)));
}
