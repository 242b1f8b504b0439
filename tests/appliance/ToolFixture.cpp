#include "ToolFixture.h"

#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>

#include "ScratchRoot.h"

namespace TestSupport {

Ended tool(const Words& arguments, const ChildProcess::Variables& variables)
{
    Words command = {APPLIANCE_TOOL};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildProcess process(command, variables);
    const ProcessEnd end = process.wait();
    EXPECT_TRUE(end.inTime);
    return {end.status, process.output(), process.errors()};
}

std::size_t count(const std::string& text, const std::string& part)
{
    std::size_t times = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
        ++times;
    }
    return times;
}

bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

void ARunningAppliance::up(const Words& options)
{
    root_ = ScratchRoot::file("up");
    Words command = {APPLIANCE_TOOL, "up", "--root", root_};
    command.insert(command.end(), options.begin(), options.end());
    up_ = std::make_unique<ChildProcess>(command);
    ASSERT_TRUE(up_->waitForOutput("The appliance is up")) << up_->errors();
}

Ended ARunningAppliance::on(Words arguments) const
{
    arguments.insert(arguments.begin() + 1, {"--root", root_});
    return tool(arguments);
}

std::map<std::string, pid_t> ARunningAppliance::processes() const
{
    std::ifstream in(root_ + "/session.json");
    return nlohmann::json::parse(in)["processes"];
}

void ARunningAppliance::down()
{
    up_->signal(SIGTERM);
    const ProcessEnd end = up_->wait();
    EXPECT_EQ(end.status, 0) << up_->errors();
}

}  // namespace TestSupport
