// The service among servers that mean it no good.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "FailedSearch.h"
#include "HostileServer.h"

namespace ServiceTest {

/**
 * What leads to a server before SetUp() leads there for good. The servers that stand() gives stand until the
 * end, and none of them may have got a token.
 */
class HostileWorld : public FailedSearch {
  protected:
    static constexpr const char* PictureHost = "pictures.example";
    static constexpr int HttpPort = 80;
    static constexpr int HttpsPort = 443;

    void TearDown() override;
    TestSupport::ChildProcess::Variables added() const override;

    /** The service's connections to that host and port lead there; to be called before it starts. */
    void lead(const std::string& host, int hostPort, const HostileServer& server);

    /** A server to which the service's connections to that host and port lead. */
    HostileServer& stand(const std::string& host, int hostPort, const Opening& opening,
                         const ServerPlace& place = {});

    /** The same over HTTPS, with a certificate that is good. */
    HostileServer& stand(const std::string& host);

    /** In the merchant's place, until everything is put right. Needs no lead. */
    HostileServer& standForMerchant(const Opening& opening);
    void putRight() override;

    /** A search for two products, of which the merchant has the second one's picture; confirms the lists. */
    void searchWithPicture(const std::string& url);

    /** The first product's picture fails with that text, the second one's comes, and so does the next search.
     */
    void expectPictureFailure(const std::string& text);

    static std::string pictureUrl() { return std::string("https://") + PictureHost + "/hostile.png"; }
    static std::string merchantHost();

  private:
    std::string leads_;
    std::vector<std::unique_ptr<HostileServer>> servers_;
    std::unique_ptr<HostileServer> inMerchantsPlace_;
};

}  // namespace ServiceTest
