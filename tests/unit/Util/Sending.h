// A message to send, and what the platform was asked for to send it.
#pragma once

#include <unistd.h>

#include <string>
#include <vector>

#include "AppControl.h"
#include "Calls.h"
#include "ObservedTest.h"

inline Util::AppControlData message()
{
    Util::AppControlData data;
    data.setPackageName("org.example.app").setOperation("http://example/op").setUri("file:///uri");
    data.addExtraData("b", "2").addExtraData("a", "1");
    data.addExtraVectorData("d", {"4", ""}).addExtraVectorData("c", {"3"});
    return data;
}

inline Util::AppControlData messageTo(const std::string& appId)
{
    Util::AppControlData data;
    data.setPackageName(appId);
    return data;
}

// The platform's app-control calls, each as its name without the prefix, with its arguments.
inline std::vector<List> platformCalls(pid_t thread = gettid())
{
    const std::string prefix = "app_control_";
    std::vector<List> calls;
    for (const TestSupport::Call& call : TestSupport::Calls::all()) {
        if (call.name.rfind(prefix, 0) != 0 || call.thread != thread)
            continue;
        List texts = {call.name.substr(prefix.size())};
        texts.insert(texts.end(), call.arguments.begin(), call.arguments.end());
        calls.push_back(texts);
    }
    return calls;
}

inline List namesOf(const std::vector<List>& calls)
{
    List names;
    for (const List& call : calls)
        names.push_back(call[0]);
    return names;
}
