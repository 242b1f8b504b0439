// The real service process and everything that it meets: a bus, a merchant, the UI app, its folder.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "Merchant.h"
#include "PlatformLog.h"
#include "PrivateBus.h"
#include "Products.h"
#include "RawPeer.h"
#include "UiPeer.h"

namespace ServiceTest {

/** The status record's columns; nothing for those that nobody has written. */
struct StatusRecord {
    std::optional<int> isLoggedIn;
    std::optional<int> isLinked;
    std::optional<int> totalCount;
    std::optional<int> productCountInCart;
    std::optional<int> currentViewType;
};

bool operator==(const StatusRecord& one, const StatusRecord& other);
std::ostream& operator<<(std::ostream& stream, const StatusRecord& status);

/** What a sanitizer has to say in this text of a process's standard error; empty for nothing. */
std::string findingsIn(const std::string& errors);

/**
 * Starts without the service and without the UI app. A service that still runs at the end must end well, and
 * none has told a token to anybody who reads what it writes.
 */
class ServiceWorld : public testing::Test {
  protected:
    static constexpr const char* ServiceId = "org.tizen.carvoy-service";
    static constexpr const char* SessionToken = "session,with,commas";
    static constexpr const char* AccessToken = "the-access-token";

    ServiceWorld();
    void TearDown() override;

    void expectNoTokenTold() const;

    enum class Until { OnBus, ReadyForVoice };

    /** Starts the service and waits. Later variables win; another program may stand for the service's own. */
    void startService(Until until = Until::ReadyForVoice,
                      const TestSupport::ChildProcess::Variables& added = {},
                      const std::string& program = {});

    /** The same without the wait. */
    std::unique_ptr<TestSupport::ChildProcess> runService(
        const TestSupport::ChildProcess::Variables& added = {}, const std::string& program = {}) const;
    TestSupport::ChildProcess::Variables variables() const;

    /** Asks the service to end, and expects status 0 and no word of a sanitizer. */
    void stopService();

    /** Expects the end with that status; and nothing of a sanitizer on standard error. */
    static void expectEnd(TestSupport::ChildProcess& process, int status);

    /** Each sends a request, and returns the name of the error that came back; empty for none. */
    std::string launch(const std::string& operation, const TestSupport::Extras& extras = {});
    std::string search(const std::string& term = "milk", const std::string& merchant = "freshmart");
    std::string askForResult();

    /** Waits until everything that was asked so far is done, pictures and replies apart. Needs the UI app. */
    TestSupport::RawMessage resultMessage();

    /** A merchant who stocks these products, each with a picture of its own. */
    void stock(const std::vector<Product>& products);
    static std::vector<Product> threeProducts();
    static std::string pictureBytes(const std::string& path);

    /** Stocks three products, searches, and expects their lists, their pictures and the status record. Needs
     * the UI app, which no message is on its way to. */
    void expectASearchThatWorks(const std::string& term = "milk");
    void openMerchant(const Appliance::Certificate& certificate);

    /** Waits until the service has as many threads as that; their number now. */
    bool waitForThreads(std::size_t count) const;
    std::size_t threads() const;

    std::optional<StatusRecord> status() const;
    std::string responseFlag() const;  // the setting's file; empty without one
    std::string tokenFile() const;
    void writeTokens(const std::string& content = std::string(SessionToken) + "," + AccessToken + "\n") const;
    std::string logFile() const
    {
        return root + ".log";
    }  // the platform's; beside the folder, which tests fill
    std::string picturesFolder() const { return root + "/media/tmp"; }
    std::vector<std::string> pictureFiles() const;  // names, sorted

    /** What was logged as an error, each as "FUNCTION: MESSAGE". */
    std::vector<std::string> errors() const;

    const std::string root;
    TestSupport::PrivateBus bus;
    const Appliance::ThrowawayCertificates authority;
    const ReservedPort port;
    std::unique_ptr<Merchant> merchant;
    std::unique_ptr<UiPeer> ui;
    std::unique_ptr<TestSupport::RawPeer> client;
    std::unique_ptr<TestSupport::ChildProcess> service;
    const PlatformLog log;  // beside the root: it outlives what a test does to that
};

}  // namespace ServiceTest
