// Trust and connect-to settings, as a program meets them that knows nothing of either.
#include <curl/curl.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <string>
#include <thread>
#include <vector>

#include "ChildProcess.h"
#include "ScratchRoot.h"
#include "ThrowawayCertificates.h"

namespace {

using Appliance::Certificate;
using Appliance::ThrowawayCertificates;
using TestSupport::ChildProcess;
using TestSupport::ScratchRoot;

constexpr const char* kHost = "merchant-bridge.example";

// An HTTPS server on this machine that answers every GET with 200.
class Server {
  public:
    explicit Server(const Certificate& certificate) : server(certificate.x509.get(), certificate.key.get())
    {
        server.Get(".*", [](const httplib::Request&, httplib::Response& response) {
            response.set_content("milk", "text/plain");
        });
        port = server.bind_to_any_port("127.0.0.1");
        thread = std::thread([this] { server.listen_after_bind(); });
        while (!server.is_running())
            std::this_thread::yield();
    }

    ~Server()
    {
        server.stop();
        thread.join();
    }

    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::string address() const { return "127.0.0.1:" + std::to_string(port); }

  private:
    httplib::SSLServer server;
    int port = 0;
    std::thread thread;
};

class HttpsSettings : public testing::Test {
  protected:
    HttpsSettings() { certificates.writeAuthority(caFile); }

    // What the probe prints with these settings: a line for each trust or routing option that was set,
    // then libcurl's code and the HTTP status.
    std::string fetch(const std::vector<std::string>& urls, const std::string& ca,
                      const std::string& connectTo)
    {
        std::vector<std::string> command{FETCH_PROBE};
        command.insert(command.end(), urls.begin(), urls.end());
        ChildProcess process(command, {{"APPLIANCE_CA_FILE", ca},
                                       {"APPLIANCE_CONNECT_TO", connectTo},
                                       {"no_proxy", "*"},
                                       {"NO_PROXY", "*"}});
        EXPECT_EQ(process.wait().status, 0);
        errors = process.errors();
        return process.output();
    }

    std::string fetchHost(const Server& server, const std::string& ca)
    {
        const std::string output = fetch({std::string("https://") + kHost + "/"}, ca,
                                         kHost + std::string(":443:") + server.address());
        return output.substr(output.find_first_of("0123456789"));
    }

    static std::string refused(CURLcode code) { return std::to_string(code) + " 0\n"; }

    ThrowawayCertificates certificates;
    const std::string caFile = ScratchRoot::file("ca.pem");
    std::string errors;
};

}  // namespace

TEST_F(HttpsSettings, AServerOfTheNamedAuthorityIsTrusted)
{
    const Server server(certificates.issue({kHost}));

    EXPECT_EQ(fetchHost(server, caFile), "0 200\n");
}

TEST_F(HttpsSettings, WithoutTheNamedAuthorityItsServerIsRefused)
{
    const Server server(certificates.issue({kHost}));

    EXPECT_EQ(fetchHost(server, ""), refused(CURLE_PEER_FAILED_VERIFICATION));
}

TEST_F(HttpsSettings, AServerOfAnotherAuthorityIsRefused)
{
    const Server server(ThrowawayCertificates().issue({kHost}));

    EXPECT_EQ(fetchHost(server, caFile), refused(CURLE_PEER_FAILED_VERIFICATION));
}

TEST_F(HttpsSettings, AServerForAnotherHostIsRefused)
{
    const Server server(certificates.issue({"retailer-api.example", "127.0.0.1"}));

    EXPECT_EQ(fetchHost(server, caFile), refused(CURLE_PEER_FAILED_VERIFICATION));
}

TEST_F(HttpsSettings, AnExpiredServerIsRefused)
{
    const Server server(certificates.issueExpired({kHost}));

    EXPECT_EQ(fetchHost(server, caFile), refused(CURLE_PEER_FAILED_VERIFICATION));
}

TEST_F(HttpsSettings, AServerThatVouchesForItselfIsRefused)
{
    const Server server(ThrowawayCertificates::selfSigned({kHost}));

    EXPECT_EQ(fetchHost(server, caFile), refused(CURLE_PEER_FAILED_VERIFICATION));
}

TEST_F(HttpsSettings, AMissingAuthorityFileIsNoReasonToTrustOthers)
{
    const Server server(certificates.issue({kHost}));

    EXPECT_EQ(fetchHost(server, ScratchRoot::file("no-such.pem")), refused(CURLE_SSL_CACERT_BADFILE));
}

TEST_F(HttpsSettings, TheAuthorityFileStandsInPlaceOfTheSystemsFileAndFolder)
{
    EXPECT_EQ(fetch({"file:///dev/null"}, caFile, ""), "CAINFO set\nCAPATH null\n0 0\n");
}

TEST_F(HttpsSettings, WithoutSettingsAHandleIsLibcurlsOwn)
{
    EXPECT_EQ(fetch({"file:///dev/null"}, "", ""), "0 0\n");
    EXPECT_EQ(errors, "");
}

TEST_F(HttpsSettings, EveryHandleGetsThem)
{
    EXPECT_EQ(fetch({"file:///dev/null", "file:///dev/null"}, caFile, "a.example:443:127.0.0.1:1"),
              "CAINFO set\nCAPATH null\nCONNECT_TO set\n0 0\n"
              "CAINFO set\nCAPATH null\nCONNECT_TO set\n0 0\n");
}

TEST_F(HttpsSettings, EachHostIsReachedWhereItsEntrySays)
{
    const Server bridge(certificates.issue({kHost}));
    const Server retailer(certificates.issue({"retailer-api.example"}));
    const std::string entries =
        std::string(kHost) + ":443:" + bridge.address() + ",retailer-api.example:8443:" + retailer.address();
    const std::string output =
        fetch({std::string("https://") + kHost + "/", "https://retailer-api.example:8443/"}, caFile, entries);

    const std::string each = "CAINFO set\nCAPATH null\nCONNECT_TO set\n0 200\n";
    EXPECT_EQ(output, each + each);
}

TEST_F(HttpsSettings, AnEntryMayLeaveOutHostAndPorts)
{
    const Server server(certificates.issue({kHost}));
    const std::string url = std::string("https://") + kHost + server.address().substr(9) + "/";

    EXPECT_EQ(fetch({url}, caFile, "::127.0.0.1:"), "CAINFO set\nCAPATH null\nCONNECT_TO set\n0 200\n");
    EXPECT_EQ(errors, "");
}

TEST_F(HttpsSettings, MalformedEntriesAreToldOnceAndSkipped)
{
    const Server server(certificates.issue({kHost}));
    const std::vector<std::string> malformed = {
        "nonsense",  "a:1:b",    "a:1:b:2:c",  "a:0:b:1",   "a:65536:b:1", "a:1:b:-1",    "a:one:b:1",
        "a b:1:c:1", " a:1:b:1", "[::1:1:b:1", "a:1:::1:1", "a]:1:b:1",    "a:1:[::1]x:1"};
    std::string setting;
    std::string told;
    for (const std::string& entry : malformed) {
        setting += entry + ",";
        told += "host platform: APPLIANCE_CONNECT_TO: '" + entry + "' is not HOST:PORT:ADDRESS:PORT\n";
    }
    setting += kHost + std::string(":443:") + server.address() + ",,";
    const std::string url = std::string("https://") + kHost + "/";

    const std::string each = "CAINFO set\nCAPATH null\nCONNECT_TO set\n0 200\n";
    EXPECT_EQ(fetch({url, url}, caFile, setting), each + each);
    EXPECT_EQ(errors, told);
}

TEST_F(HttpsSettings, AddressesInBracketsAreWellFormed)
{
    fetch({"file:///dev/null"}, "", "[2001:db8::1]:443:[::1]:8443");

    EXPECT_EQ(errors, "");
}
