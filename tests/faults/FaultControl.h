// The test's side of a plan of faults: makes calls of a running service fail, and knows by events what it has
// done.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "ChildProcess.h"
#include "FaultPlan.h"

namespace Faults {

/** Owns the plan's file. Faults are changed while the service is at rest, or before it starts. One thread. */
class FaultControl {
  public:
    /** Throws std::runtime_error where there can be no such file. */
    explicit FaultControl(std::string path);
    ~FaultControl();
    FaultControl(const FaultControl&) = delete;
    FaultControl& operator=(const FaultControl&) = delete;

    /** What the service has to find in its environment. */
    TestSupport::ChildProcess::Variables variables() const { return {{PlanVariable, path_}}; }

    /** Nothing fails, and the calls are counted anew. */
    void clear();

    /** Nothing fails any more; what was counted stays. */
    void stopFailing();

    /** Calls of the function fail from the one up to the other, which is the first that does not. */
    void fail(const std::string& function, std::uint32_t from, std::uint32_t until = Plan::Never);

    /** Every call of every function fails from that one on. */
    void failAll(std::uint32_t from) { plan_->from = from; }

    /** A call has failed since the last clear(). */
    bool hasFailed() const;
    std::uint32_t failed(const std::string& function) const;

    /** The functions that were called since the last clear(), and how often. */
    std::map<std::string, std::uint32_t> calls() const;
    /** From how many places in the program, in all its runs so far. */
    std::size_t sites() const;
    std::uint32_t allCalls() const { return plan_->calls; }

    /** A process is about to start; the function tells when it has ended, which ends every wait. */
    void expectProcess(std::function<bool()> hasEnded);

    /** Each waits; false when the process has ended or the time is over. */
    bool waitForStart();
    bool waitForRequests(std::uint32_t count);  // handled since the start of the process
    bool waitForResults(std::uint32_t count);
    bool waitForThreads(std::uint32_t count);  // no more than that run
    bool waitForSender();                      // all that was to be sent is sent, or has failed

    std::uint32_t requests() const { return plan_->requests; }
    std::uint32_t results() const { return plan_->results; }
    std::uint32_t threads() const { return plan_->threads; }

  private:
    Function& functionOf(const std::string& name);
    bool wait(const Event& event, const std::function<bool(std::uint32_t)>& fits) const;

    std::string path_;
    Plan* plan_ = nullptr;
    std::function<bool()> hasEnded_;
};

}  // namespace Faults
