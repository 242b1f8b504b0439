// The whole appliance on this PC: a private bus, the merchant bridge, the retailer, the two services, and the
// apps on the screen.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "BusNames.h"
#include "EventLoop.h"
#include "Root.h"
#include "RunningProgram.h"
#include "Session.h"

namespace Tool {

struct RigOptions {
    Root root;
    std::vector<std::string> uiArguments;
    std::optional<int> screenPort;  // 0: any that is free; nothing: no page is served
};

// Owns the processes and the root's lock. Main thread only.
class Rig {
  public:
    // Called as each program is ready: its name and what is worth knowing of it.
    using ReadyHandler = std::function<void(const std::string& name, const std::string& detail)>;

    // `lock` is the lock of options.root.
    Rig(EventLoop& loop, RootLock lock, RigOptions options);
    // Kills what stop() has not ended.
    ~Rig();

    // Starts everything, each program when what it needs is ready, and writes session.json; this process
    // has then entered the session. Throws Failure when a program does not come up. From then on a program
    // that ends by itself makes the loop throw Failure.
    void start(const ReadyHandler& onReady);

    // Ends everything. Returns what went wrong with it: a line for each program that did not end well.
    std::vector<std::string> stop();

    // Where the page is served, once started; empty where none is.
    const std::string& screenAddress() const { return screenAddress_; }

    std::filesystem::path bridgeLog() const { return options_.root.logFolder() / "merchant-bridge.log"; }

  private:
    using LineTest = std::function<bool(const std::string& line)>;

    void prepareFolders();
    void startBus();
    void startBridge();
    void startRetailer();
    std::string startShop(const std::string& name, const std::vector<std::string>& arguments);
    RunningProgram& startApp(const std::string& program, const std::string& appId,
                             const std::vector<std::string>& arguments);
    void startUi();
    RunningProgram& spawn(const std::string& name, std::vector<std::string> command);
    std::filesystem::path outputOf(const std::string& name) const;
    void await(const RunningProgram& child, const std::function<bool()>& ready);
    void awaitLine(const RunningProgram& child, const LineTest& isWanted);
    void onEnd(RunningProgram& child);
    void endAll(const std::vector<RunningProgram*>& children, std::vector<std::string>& troubles);

    EventLoop& loop_;
    RootLock lock_;
    RigOptions options_;
    std::optional<BusNames> names_;
    Session session_;
    ReadyHandler onReady_;
    std::string screenAddress_;
    bool stopping_ = false;
    std::vector<std::unique_ptr<RunningProgram>> children_;  // in the order of their start
};

}  // namespace Tool
