// The shipped service with everything that it meets, to be measured: a bus of its own, a folder, an app that
// asks and one that shows.
#pragma once

#include <functional>
#include <string>

#include "BridgeProgram.h"
#include "ChildProcess.h"
#include "FolderWatch.h"
#include "PrivateBus.h"
#include "RawPeer.h"

namespace Benchmarks {

constexpr const char* SERVICE_ID = "org.tizen.carvoy-service";
constexpr const char* UI_ID = "org.tizen.carvoy";
constexpr const char* BARE_ID = "org.example.bare";

/** The merchant of all rigs, and the tokens that it takes. */
class Market {
  public:
    Market();

    static constexpr const char* SESSION_TOKEN = "session";
    static constexpr const char* ACCESS_TOKEN = "access";

    const TestSupport::BridgeProgram& bridge() const { return mBridge; }

  private:
    std::string mFolder;
    TestSupport::BridgeProgram mBridge;
};

/**
 * Each operation waits until it is over, and throws std::runtime_error where that takes a minute. Constructed
 * on one thread, whatever their number; used by one thread each.
 */
class Rig {
  public:
    struct Options {
        TestSupport::ChildProcess::Variables variables;  // added to the service's environment
        TestSupport::RawPeer::LaunchHook
            onUi;                  // called at each message to the UI app, on a thread of its own
        std::string parentFolder;  // of what the service keeps; empty: the scratch folder's disk
    };

    /** The service has done all that it does at start when the constructor returns. */
    explicit Rig(const Market& market, const Options& options = {});
    Rig(const Rig&) = delete;
    ~Rig();

    /** From the request to the flag that is written last. Pictures may still be on their way. */
    void search(const std::string& term = "milk");

    /** Asks for the result, confirms it, and waits for that many pictures. */
    void showCard(int pictures = 6);

    /** Asks for the result and waits until the UI app has it. */
    TestSupport::RawMessage showResult();

    /** Asks for the result so many times at once, and waits until the UI app has got them all. */
    void showResults(int count);

    pid_t pid() const { return mService.pid(); }
    const TestSupport::PrivateBus& bus() const { return mBus; }
    TestSupport::RawPeer& client() { return mClient; }
    /** Of the service's environment, but for those that were added. */
    const TestSupport::ChildProcess::Variables& variables() const { return mVariables; }

    /** The next one that came. */
    TestSupport::RawMessage nextUiMessage();

    const std::string& root() const { return mRoot; }

  private:
    /** Goes after all that uses it. */
    struct Folder {
        const std::string path;
        ~Folder();
    };

    const Folder mFolder;
    TestSupport::PrivateBus mBus;
    const std::string& mRoot;
    const TestSupport::ChildProcess::Variables mVariables;
    TestSupport::ChildProcess mService;
    TestSupport::RawPeer mUi;
    TestSupport::RawPeer mClient;
    TestSupport::FolderWatch mFlag;
};

/** Where the kernel keeps files in memory; empty where it does not. */
std::string memoryFolder();

/** What the process has written to and no other one shares. Pages of libraries that nobody else happens to
 * use at the moment are not in it: they are the files'. KiB. */
long privateMemory(pid_t process);

}  // namespace Benchmarks
