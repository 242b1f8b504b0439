// An app on the screen as a process, on a bus of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "PrivateBus.h"
#include "RawPeer.h"
#include "ScratchRoot.h"
#include "ScreenWatch.h"

namespace TestSupport {

/** Starts the app in an empty screen folder; at the end it must leave well and silently. */
class ScreenAppFixture : public testing::Test {
  protected:
    void startApp(const std::vector<std::string>& command, const std::string& appId)
    {
        std::filesystem::remove_all(ScratchRoot::file("screen"));
        watch_ = std::make_unique<ScreenWatch>(ScratchRoot::path());
        tool_ = std::make_unique<RawPeer>();
        app_ = std::make_unique<ChildProcess>(
            command, ChildProcess::Variables{{"APPLIANCE_DLOG", ScratchRoot::file("platform.log")}});
        ASSERT_TRUE(waitForName(appId));
    }

    void TearDown() override
    {
        app_->signal(SIGTERM);
        const ProcessEnd end = app_->wait();
        EXPECT_EQ(end.status, 0) << app_->errors();
        EXPECT_EQ(app_->errors(), "");
    }

    static std::string textIn(const RawMessage& message, const char* key)
    {
        const auto found = message.extras.find(key);
        return found == message.extras.end() ? "" : found->second.get<std::string>();
    }

    PrivateBus bus_;
    std::unique_ptr<ScreenWatch> watch_;
    std::unique_ptr<RawPeer> tool_;
    std::unique_ptr<ChildProcess> app_;
};

}  // namespace TestSupport
