#include "FaultedService.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "ServiceWorld.h"

namespace Faults {

using ServiceTest::LogLine;
using TestSupport::RawMessage;

namespace {

/** The table's form of a row. */
std::string rowOf(const Fault& fault, const std::string& record, const std::vector<std::string>& errors)
{
    std::string row = fault.function + "," + std::to_string(fault.call) + "," + record + ",";
    for (std::size_t i = 0; i < errors.size(); ++i)
        row += (i == 0 ? "" : " | ") + errors[i];
    return row + (errors.empty() ? "-" : "");
}

}  // namespace

Messages of(const Messages& messages, const std::string& operation)
{
    Messages chosen;
    for (const RawMessage& message : messages) {
        if (message.operation == ServiceTest::serviceOperation(operation))
            chosen.push_back(message);
    }
    return chosen;
}

Screen::Screen()
    : peer_("org.tizen.carvoy", [this](const RawMessage& message) {
          const std::lock_guard lock(mutex_);
          arrived_.push_back(message);
      })
{
}

Messages Screen::take()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(arrived_, {});
}

void Screen::confirm(const RawMessage& message)
{
    EXPECT_EQ(peer_.reply(message.sender, message.id), "");
}

FaultedService::FaultedService(std::string appId, const std::string& root, Process& process)
    : faults(root + "/faults"),
      appId_(std::move(appId)),
      logPath_(root + ".log"),
      log_(logPath_),
      process_(process)
{
}

bool FaultedService::start(const Start& start)
{
    EXPECT_TRUE(TestSupport::waitForName(appId_, false));
    faults.expectProcess([this] { return process_ && process_->wait({}).inTime; });
    process_ = start(faults.variables());
    if (!faults.waitForStart()) {
        EXPECT_TRUE(process_->wait({}).inTime) << "the start takes too long";
        return false;
    }
    // The name may come late, but the loop runs behind it.
    EXPECT_TRUE(TestSupport::waitForName(appId_));
    atRest_ = faults.threads();
    ask("show");
    return true;
}

void FaultedService::ask(const std::string& operation, const TestSupport::Extras& extras)
{
    const std::uint32_t handled = faults.requests();
    ASSERT_EQ(client_.launch(appId_, ServiceTest::serviceOperation(operation), 0, extras), "");
    ASSERT_TRUE(faults.waitForRequests(handled + 1)) << process_->errors();
    waitForRest();
}

void FaultedService::waitForRest()
{
    ASSERT_TRUE(faults.waitForThreads(std::max(atRest_, 1U))) << process_->errors();
    ASSERT_TRUE(faults.waitForSender()) << process_->errors();
}

Messages FaultedService::searchAndShow(const TestSupport::Extras& extras)
{
    screen.take();
    ask("search", extras);
    ask("result");
    Messages messages = screen.take();
    for (const RawMessage& result : of(messages, "result")) {
        screen.confirm(result);
        // Handled behind the reply.
        ask("show");
    }
    for (RawMessage& message : screen.take())
        messages.push_back(std::move(message));
    return messages;
}

// Both files are written at their end, wherever that is.
void FaultedService::forgetOutput()
{
    std::error_code missing;
    std::filesystem::resize_file(logPath_, 0, missing);
    if (!process_)
        return;
    const std::string standardOutput = "/proc/" + std::to_string(process_->pid()) + "/fd/1";
    close(open(standardOutput.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
}

std::vector<std::string> FaultedService::errors() const
{
    std::vector<std::string> errors;
    for (const LogLine& line : log_.lines()) {
        if (line.level == "error" || line.message.find("Not Open ") == 0)
            errors.push_back(line.message);
    }
    return errors;
}

bool FaultedService::logged(const std::string& error) const
{
    const std::vector<std::string> all = errors();
    return std::find(all.begin(), all.end(), error) != all.end();
}

bool FaultedService::loggedAnyOf(const std::vector<std::string>& beginnings) const
{
    for (const std::string& error : errors()) {
        for (const std::string& beginning : beginnings) {
            if (error.find(beginning) == 0)
                return true;
        }
    }
    return false;
}

void FaultedService::expectAlive() const
{
    ASSERT_FALSE(process_->wait({}).inTime) << "the service has ended\n" << process_->errors();
    EXPECT_EQ(ServiceTest::findingsIn(process_->errors()), "");
}

void FaultedService::expectBothOutputs() const
{
    EXPECT_EQ(log_.lines().size() + faults.failed("dlog_print"),
              ServiceTest::linesOf(process_->output()).size() + faults.failed("printf"));
}

void FaultedService::expectErrors(const Fault& fault, const FaultTable& table,
                                  const std::string& record) const
{
    const Outcome* const expected = table.find(fault.function, fault.call);
    if (!expected) {
        ADD_FAILURE() << "no row in the table: " << rowOf(fault, record, errors());
    } else if (fault.mode == Mode::Once) {
        EXPECT_EQ(errors(), expected->errors);
        EXPECT_EQ(record, expected->record);
    } else if (fault.function != "dlog_print") {
        expectErrorsOfSeveral(fault, table);
    }
}

// Which of the later calls still come depends on what the first one's failure led to.
void FaultedService::expectErrorsOfSeveral(const Fault& fault, const FaultTable& table) const
{
    const std::uint32_t last = fault.mode == Mode::TwoInARow ? fault.call + 1 : UINT32_MAX;
    const auto fronts = table.between(fault.function, fault.call, last);
    const auto isTold = [this](const Outcome* outcome) {
        return !outcome->errors.empty() && logged(outcome->errors.front());
    };
    EXPECT_TRUE(fronts.front()->errors.empty() || std::any_of(fronts.begin(), fronts.end(), isTold))
        << fronts.front()->errors.front();

    const auto possible = table.all();
    for (const std::string& error : errors()) {
        const auto leadsToIt = [&error](const Outcome* outcome) {
            return std::count(outcome->errors.begin(), outcome->errors.end(), error) > 0;
        };
        EXPECT_TRUE(std::any_of(possible.begin(), possible.end(), leadsToIt)) << error;
    }
}

}  // namespace Faults
