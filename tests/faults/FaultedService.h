// A service under faults, with what the tests of all scenarios have around it: the UI app, the log, standard
// output.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "FaultControl.h"
#include "FaultTable.h"
#include "PlatformLog.h"
#include "RawPeer.h"
#include "Sweep.h"

namespace Faults {

using Messages = std::vector<TestSupport::RawMessage>;

/** Those of this operation of the service's namespace. */
Messages of(const Messages& messages, const std::string& operation);

/** Owns the UI app's name; takes what it is sent and answers nothing by itself. */
class Screen {
  public:
    Screen();

    /** Everything that has arrived since the last call. */
    Messages take();

    /** Tells the sender of a result message that the products are shown. */
    void confirm(const TestSupport::RawMessage& message);

  private:
    std::mutex mutex_;
    Messages arrived_;
    TestSupport::RawPeer peer_;
};

/**
 * Starts and asks the service, and knows by its events when it is at rest. What fails here is googletest's.
 * One thread; the bus is there, and the UI app is not.
 */
class FaultedService {
  public:
    using Process = std::unique_ptr<TestSupport::ChildProcess>;
    using Start = std::function<Process(const TestSupport::ChildProcess::Variables&)>;

    /** @p process stands for the service whenever it runs; @p root is its folder. */
    FaultedService(std::string appId, const std::string& root, Process& process);

    /** Starts it and waits until the start is over; false where it has ended by itself. */
    bool start(const Start& start);

    /** Sends a request and waits until it is handled, and until the service is at rest. */
    void ask(const std::string& operation, const TestSupport::Extras& extras = {});

    /** Waits until everything is fetched and sent that is to be. */
    void waitForRest();

    /** A search, its pictures, its result and what the UI app's reply leads to: all messages to the UI app.
     */
    Messages searchAndShow(const TestSupport::Extras& extras);

    /** Forgets what was logged and written to standard output so far. The service is at rest. */
    void forgetOutput();

    /** The errors in the order in which they were logged; and the files that could not be opened. */
    std::vector<std::string> errors() const;
    bool logged(const std::string& error) const;
    bool loggedAnyOf(const std::vector<std::string>& beginnings) const;

    /** Expects a service that still runs and has nothing of a sanitizer to tell. */
    void expectAlive() const;

    /** Expects each statement in the log and on standard output, but for those that were made to fail. */
    void expectBothOutputs() const;

    /**
     * Expects the errors that the table has for the fault: these and no others where it comes alone; where it
     * goes on, the first of this call's or of a later one's, and none that the table does not have. @p record
     * is what has become of the status record, as the table names it.
     */
    void expectErrors(const Fault& fault, const FaultTable& table, const std::string& record) const;

    FaultControl faults;
    Screen screen;

  private:
    void expectErrorsOfSeveral(const Fault& fault, const FaultTable& table) const;

    const std::string appId_;
    const std::string logPath_;
    const ServiceTest::PlatformLog log_;
    Process& process_;
    TestSupport::RawPeer client_;
    std::uint32_t atRest_ = 0;
};

}  // namespace Faults
