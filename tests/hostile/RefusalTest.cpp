// Servers that send the service away: to come later, or to go elsewhere.
#include <filesystem>
#include <fstream>

#include "HostileWorld.h"

namespace ServiceTest {

namespace {

using testing::Combine;
using testing::Values;

constexpr const char* OtherHost = "other.example";
const std::string Secret = "what nobody outside may read";

std::string location(const std::string& url)
{
    return "Location: " + url + "\r\n";
}

class ARefusal : public HostileWorld {
  protected:
    void SetUp() override
    {
        pictures = &stand(PictureHost);
        other = &stand(OtherHost);
        plain = &stand(OtherHost, HttpPort, plainHttp());
        FailedSearch::SetUp();
    }

    /** A file of this machine that the service may read. */
    std::string secretFile() const
    {
        const std::string file = root + "/secret.png";
        std::ofstream(file) << Secret;
        return file;
    }

    void redirectPicture(const std::string& url) { pictures->answer("/hostile.png", 302, "", location(url)); }

    void expectPictureFrom(HostileServer& server, const std::string& content)
    {
        searchWithPicture(pictureUrl());
        const Picture picture = ui->nextPicture();
        EXPECT_EQ(picture.index, "0");
        EXPECT_EQ(picture.path, picturesFolder() + "/1.png");
        EXPECT_TRUE(contentOf(picture.path) == content) << picture.path;
        EXPECT_EQ(server.requests().size(), 1U);
    }

    HostileServer* pictures = nullptr;
    HostileServer* other = nullptr;
    HostileServer* plain = nullptr;
};

class AStatusOfRefusal : public ARefusal, public testing::WithParamInterface<int> {};

TEST_P(AStatusOfRefusal, EndsTheSearchAndIsNotTriedAgain)
{
    HostileServer& server = standForMerchant(overTls(authority.issue({merchantHost()})));
    server.answer(Merchant::SearchPath, GetParam(), "later", "Retry-After: 1\r\n");
    search();
    resultMessage();
    EXPECT_EQ(server.connections(), 1);

    expectFailure(Logged::status(GetParam()), true, false);
}

TEST_P(AStatusOfRefusal, LeavesThePictureOutAndIsNotTriedAgain)
{
    pictures->answer("/hostile.png", GetParam(), "later", "Retry-After: 1\r\n");
    searchWithPicture(pictureUrl());

    expectPictureFailure("download failed, result: 0HTTP response: " + std::to_string(GetParam()));
    EXPECT_EQ(pictures->connections(), 1);
}

INSTANTIATE_TEST_SUITE_P(Of, AStatusOfRefusal, Values(429, 503), testing::PrintToStringParamName());

class ASearchThatIsSentElsewhere : public ARefusal,
                                   public testing::WithParamInterface<std::tuple<int, const char*>> {
  protected:
    static std::string target()
    {
        const std::string where = std::get<1>(GetParam());
        return where == "Itself"      ? "https://" + merchantHost() + Merchant::SearchPath
               : where == "OtherHost" ? std::string("https://") + OtherHost + "/"
               : where == "PlainHttp" ? std::string("http://") + OtherHost + "/"
                                      : "file:///etc/hostname";
    }
};

TEST_P(ASearchThatIsSentElsewhere, DoesNotGo)
{
    const int status = std::get<0>(GetParam());
    HostileServer& server = standForMerchant(overTls(authority.issue({merchantHost()})));
    server.answer(Merchant::SearchPath, status, "", location(target()));

    search();
    resultMessage();

    EXPECT_EQ(server.connections(), 1);
    EXPECT_EQ(other->connections(), 0);
    EXPECT_EQ(plain->connections(), 0);
    EXPECT_EQ(errors(),
              std::vector<std::string>{"searchProduct: curl perform failed: " + std::to_string(status)});
    putRight();
    expectASearchThatWorks();
}

INSTANTIATE_TEST_SUITE_P(By, ASearchThatIsSentElsewhere,
                         Combine(Values(302, 307), Values("Itself", "OtherHost", "PlainHttp", "AFile")),
                         [](const auto& one) {
                             return std::to_string(std::get<0>(one.param)) + "To" + std::get<1>(one.param);
                         });

using APictureThatIsElsewhere = ARefusal;

TEST_F(APictureThatIsElsewhere, IsFetchedThere)
{
    redirectPicture(std::string("https://") + OtherHost + "/there.jpg");
    other->answer("/there.jpg", 200, "there");

    expectPictureFrom(*other, "there");
}

TEST_F(APictureThatIsElsewhere, IsFetchedThereWithoutTlsToo)
{
    redirectPicture(std::string("http://") + OtherHost + "/there.jpg");
    plain->answer("/there.jpg", 200, "plain");

    expectPictureFrom(*plain, "plain");
}

TEST_F(APictureThatIsElsewhere, IsFollowedTwentyTimesAndNoMore)
{
    redirectPicture(pictureUrl());
    searchWithPicture(pictureUrl());

    expectPictureFailure("curl_easy_perform failed, result: Number of redirects hit maximum amount");
    EXPECT_EQ(pictures->countOf("/hostile.png"), 21);
}

TEST_F(APictureThatIsElsewhere, IsNotReadFromAFile)
{
    redirectPicture("file://" + secretFile());
    searchWithPicture(pictureUrl());

    ui->nextPicture();
    EXPECT_EQ(contentOf(picturesFolder() + "/1.png"), "");
    EXPECT_EQ(errors(), (std::vector<std::string>{
                            "startDownload: curl_easy_perform failed, result: Unsupported protocol",
                            "operator(): Failed to startDownload for index 0"}));
    EXPECT_EQ(contentOf(secretFile()), Secret);
}

TEST_F(APictureThatIsElsewhere, IsNotLookedForAtAServerOfFtpThatWantsAName)
{
    std::string said;
    auto& ftp = stand(PictureHost, 21, [&said](int socket) {
        SocketStream stream(socket);
        stream.send("220 welcome\r\n");
        for (char byte; stream.receive(byte) && byte != '\n';)
            said += byte;
        stream.send("530 go away\r\n");
        return nullptr;
    });
    redirectPicture("ftp://" + ftp.place() + "/there.png");
    searchWithPicture(pictureUrl());

    expectPictureFailure("curl_easy_perform failed, result: Login denied");
    ftp.reset();
    EXPECT_EQ(said, "USER anonymous\r");
}

class AnAddressOfAnotherKind : public ARefusal, public testing::WithParamInterface<const char*> {};

TEST_P(AnAddressOfAnotherKind, IsNoPlaceForAPicture)
{
    redirectPicture(std::string(GetParam()) + "://" + plain->place() + "/there.png");
    searchWithPicture(pictureUrl());

    expectPictureFailure("curl_easy_perform failed, result: Unsupported protocol");
    EXPECT_EQ(plain->connections(), 0);
}

INSTANTIATE_TEST_SUITE_P(Of, AnAddressOfAnotherKind,
                         Values("gopher", "dict", "telnet", "tftp", "smtp", "imap", "ldap", "smb",
                                "javascript"),
                         [](const auto& one) { return std::string(one.param); });

}  // namespace

}  // namespace ServiceTest
