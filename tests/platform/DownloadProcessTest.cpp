// Downloads of processes that end, and of those that were told whom to trust.
#include "ChildProcess.h"
#include "DownloadFixture.h"
#include "ThrowawayCertificates.h"

using Appliance::ThrowawayCertificates;
using TestSupport::ChildProcess;
using TestSupport::ProcessEnd;
using TestSupport::ScratchRoot;

namespace {

class DownloadProcess : public Downloads {
  protected:
    // What the probe says; it must end well.
    std::string probe(const std::string& manner, const std::string& url,
                      const ChildProcess::Variables& added = {})
    {
        ChildProcess process({DOWNLOAD_PROBE, manner, url, folder}, added);
        const ProcessEnd end = process.wait();
        EXPECT_TRUE(end.inTime);
        EXPECT_EQ(end.signal, 0) << process.errors();
        EXPECT_EQ(end.status, 0) << process.errors();
        return process.output();
    }

    std::string probeHalfWay(const std::string& manner) { return probe(manner, server.url("/halves.png")); }
};

}  // namespace

TEST_F(DownloadProcess, EndsWhileATransferIsUnderWayAndLeavesNothing)
{
    EXPECT_EQ(probeHalfWay("return"), "ends\nempty\n");
}

TEST_F(DownloadProcess, MayEndInACallback)
{
    EXPECT_EQ(probeHalfWay("exit-in-callback"), "exits\n");
}

TEST_F(DownloadProcess, HasDownloadsThatItsStaticObjectsMayUseToTheLast)
{
    EXPECT_EQ(probeHalfWay("use-at-the-end"), "ends\nempty\ncannot be started\n");
}

TEST_F(DownloadProcess, EndsAtOnceWhereNothingWasStarted)
{
    EXPECT_EQ(probe("unused", ""), "ends\n");
}

TEST_F(DownloadProcess, WithoutAThreadToGiveStartsItLater)
{
    EXPECT_EQ(probe("no-thread", server.url("/silent.png")), "cannot be started\nstarted\n");
}

TEST_F(DownloadProcess, TrustsAndReachesWhomTheSettingsSay)
{
    const std::string host = "merchant-bridge.example";
    const std::string url = "https://" + host + "/milk.png";
    ThrowawayCertificates certificates;
    certificates.writeAuthority(ScratchRoot::file("ca.pem"));
    const auto certificate = certificates.issue({host});
    LocalServer<httplib::SSLServer> secure(certificate.x509.get(), certificate.key.get());
    secure.Get(".*", [this](const httplib::Request&, httplib::Response& response) {
        response.set_content(picture, "image/png");
    });
    secure.start();
    const std::string connectTo = host + ":443:127.0.0.1:" + std::to_string(secure.port());

    EXPECT_EQ(
        probe("fetch", url,
              {{"APPLIANCE_CA_FILE", ScratchRoot::file("ca.pem")}, {"APPLIANCE_CONNECT_TO", connectTo}}),
        "completed\n");
    EXPECT_EQ(contentOf(folder + "/milk.png"), picture);
    EXPECT_EQ(probe("fetch", url, {{"APPLIANCE_CA_FILE", ""}, {"APPLIANCE_CONNECT_TO", connectTo}}),
              "failed " + std::to_string(DOWNLOAD_ERROR_CONNECTION_FAILED) + "\n");
    EXPECT_EQ(files(), std::vector<std::string>{"milk.png"});
}
