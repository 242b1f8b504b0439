// Answers that are unusual, and answers all the same: each is taken for what it says.
#include <filesystem>

#include "HostileWorld.h"
#include "Http2.h"

namespace ServiceTest {

namespace {

constexpr std::size_t Size50MB = 50'000'000;

const std::string Ok = "HTTP/1.1 200 OK\r\n";

std::string lengthOf(const std::string& body)
{
    return "Content-Length: " + std::to_string(body.size()) + "\r\n";
}

std::string inChunks(const std::string& body)
{
    std::string chunks;
    for (const char byte : body)
        chunks += std::string("1;name=value\r\n") + byte + "\r\n";
    return chunks + "0\r\nX-Trailer: late\r\n\r\n";
}

/** How bytes are wrapped into an answer. */
struct Wrapping {
    const char* name;
    std::function<std::string(const std::string& body)> wrap;
    bool ends = true;  // with a goodbye of TLS
};

std::ostream& operator<<(std::ostream& stream, const Wrapping& wrapping)
{
    return stream << wrapping.name;
}

Hostility::Handler handlerOf(const Wrapping& wrapping, const std::string& body)
{
    return [all = wrapping.wrap(body), ends = wrapping.ends](const ServerRequest&,
                                                             ServerConnection& connection) {
        connection.send(all);
        if (!ends)
            connection.cut();
    };
}

const Wrapping Wrappings[] = {
    {"OfHttp10", [](const auto& body) { return "HTTP/1.0 200 OK\r\n\r\n" + body; }},
    {"OfHttp10WithALength",
     [](const auto& body) { return "HTTP/1.0 200 OK\r\n" + lengthOf(body) + "\r\n" + body; }},
    {"WithoutALength", [](const auto& body) { return Ok + "\r\n" + body; }},
    {"WithoutAReason", [](const auto& body) { return "HTTP/1.1 200\r\n\r\n" + body; }},
    {"WithBareLineFeeds", [](const auto& body) { return "HTTP/1.1 200 OK\nX-Odd: odd\n\n" + body; }},
    {"WithALengthBeyondAllNumbers",
     [](const auto& body) { return Ok + "Content-Length: 99999999999999999999\r\n\r\n" + body; }},
    {"WithTwoLengthsOfWhichTheLastIsRight",
     [](const auto& body) { return Ok + "Content-Length: 1\r\n" + lengthOf(body) + "\r\n" + body; }},
    {"LongerThanItsLength",
     [](const auto& body) { return Ok + lengthOf(body) + "\r\n" + body + "and more"; }},
    {"InChunksOfOneByte",
     [](const auto& body) { return Ok + "Transfer-Encoding: chunked\r\n\r\n" + inChunks(body); }},
    {"ThatWasToBeContinued",
     [](const auto& body) {
         std::string all;
         for (int i = 0; i < 100; ++i)
             all += "HTTP/1.1 100 Continue\r\nX-Odd: odd\r\n\r\n";
         return all + Ok + lengthOf(body) + "\r\n" + body;
     }},
    {"WithAFoldedHeader",
     [](const auto& body) { return Ok + "X-Odd: one\r\n two\r\n\tthree\r\n\r\n" + body; }},
    {"WithoutAGoodbye", [](const auto& body) { return Ok + "\r\n" + body; }, false},
    {"WhoseHeadIsNeverWhole", [](const auto&) { return Ok + "X-Od"; }},
};

const auto nameOf = [](const auto& one) { return std::string(one.param.name); };

class AnAnswer : public HostileWorld, public testing::WithParamInterface<Wrapping> {
  protected:
    void SetUp() override
    {
        pictures_ = &stand(PictureHost);
        FailedSearch::SetUp();
    }

    /** Whether there is a body at all. */
    bool isEmpty() const { return GetParam().wrap("milk") == GetParam().wrap(""); }

    HostileServer* pictures_ = nullptr;
};

TEST_P(AnAnswer, BringsTheProductsAndThePicture)
{
    const std::string picture = pictureBytes("/hostile.png").substr(0, 2000);
    pictures_->handle("/hostile.png", handlerOf(GetParam(), picture));
    HostileServer& server = standForMerchant(overTls(authority.issue({merchantHost()})));
    server.handle(Merchant::SearchPath,
                  handlerOf(GetParam(), answerOf({{"Strange Milk", pictureUrl()}, {"Milk", "/none"}})));

    search();
    const auto result = resultMessage();

    if (isEmpty()) {
        EXPECT_EQ(textOf(result, "key_total_num_of_products"), "0");
        EXPECT_EQ(errors(), std::vector<std::string>{"parseResult: json_parser_get_root() failed"});
        return;
    }
    EXPECT_EQ(listOf(result, "key_product_names"), (std::vector<std::string>{"Strange Milk", "Milk"}));
    ui->confirm(result);
    EXPECT_TRUE(contentOf(ui->nextPicture().path) == picture);
}

INSTANTIATE_TEST_SUITE_P(Odd, AnAnswer, testing::ValuesIn(Wrappings), nameOf);

class AnOddAnswer : public HostileWorld {
  protected:
    /** The service begins to search where these servers stand. */
    void begin() { FailedSearch::SetUp(); }
    void SetUp() override {}

    void expectThatPicture(const std::string& content)
    {
        searchWithPicture(pictureUrl());
        const Picture picture = ui->nextPicture();
        EXPECT_EQ(picture.index, "0");
        EXPECT_TRUE(contentOf(picture.path) == content) << picture.path;
        EXPECT_EQ(ui->nextPicture().index, "1");
    }

    /** The most memory that the service has had so far, in kilobytes. */
    long peak() const
    {
        const std::string status = contentOf("/proc/" + std::to_string(service->pid()) + "/status");
        return std::stol(status.substr(status.find("VmHWM:") + 6));
    }
};

TEST_F(AnOddAnswer, Of50MBIsReadWhole)
{
    begin();
    const long before = peak();
    const std::string products = answerOf(threeProducts());
    const std::string padding = ",\"padding\":\"" + std::string(Size50MB, 'x') + "\"}";
    merchant->answer(Merchant::SearchPath, {200, products.substr(0, products.size() - 1) + padding});

    expectASearchThatWorks();
    RecordProperty("kilobytes", static_cast<int>(peak() - before));
}

TEST_F(AnOddAnswer, Of50MBThatIsNoJsonIsDropped)
{
    begin();
    merchant->answer(Merchant::SearchPath, {200, std::string(Size50MB, 'x')});

    expectFailure({Logged::Parse + "json_parser_load_from_data() failed"}, true, true);
}

TEST_F(AnOddAnswer, Of50MBIsAPictureLikeAnyOther)
{
    const std::string content(Size50MB, 'p');
    stand(PictureHost).answer("/hostile.png", 200, content);
    begin();

    expectThatPicture(content);
}

TEST_F(AnOddAnswer, OfHtmlIsTakenForAPictureWhereItsStatusIsGood)
{
    const std::string page = "<html><body>Welcome</body></html>";
    stand(PictureHost).answer("/hostile.png", 200, page, "Content-Type: text/html\r\n");
    begin();

    expectThatPicture(page);
}

TEST_F(AnOddAnswer, ComesFromServersWithoutAnOldAddressToo)
{
    if (contentOf("/proc/net/if_inet6").find(" lo") == std::string::npos)
        GTEST_SKIP() << "this machine has no IPv6";
    const ServerPlace six{"::1", 0};
    HostileServer bridge("https://" + merchantHost(), overTls(authority.issue({merchantHost()})), six);
    lead(merchantHost(), HttpsPort, bridge);
    bridge.answer(Merchant::SearchPath, 200, answerOf({{"Six Milk", pictureUrl()}}));
    auto& pictures = stand(PictureHost, HttpsPort, overTls(authority.issue({PictureHost})), six);
    pictures.answer("/hostile.png", 200, "six");
    begin();

    search();
    const auto result = resultMessage();
    EXPECT_EQ(listOf(result, "key_product_names"), std::vector<std::string>{"Six Milk"});
    ui->confirm(result);
    EXPECT_EQ(contentOf(ui->nextPicture().path), "six");
    EXPECT_EQ(bridge.countOf(Merchant::SearchPath), 1);
}

class AnAnswerOfHttp2 : public AnOddAnswer {
  protected:
    void SetUp() override
    {
        stand(PictureHost, HttpsPort, http2(authority.issue({PictureHost}), script));
        begin();
    }

    /** Instead of the merchant, for one search. */
    void searchOverHttp2(const Http2Answer& answer)
    {
        script->answer(Merchant::SearchPath, answer);
        standForMerchant(http2(authority.issue({merchantHost()}), script));
    }

    const std::shared_ptr<Http2Script> script = std::make_shared<Http2Script>();
};

TEST_F(AnAnswerOfHttp2, BringsTheProductsAndGetsTheTokens)
{
    searchOverHttp2({answerOf(threeProducts())});

    search();

    EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "3");
    const Http2Request request = script->requests().at(0);
    EXPECT_EQ(request.at(":method"), "GET");
    EXPECT_EQ(request.at(":path"),
              std::string(Merchant::SearchPath) + "?merchant=freshmart&query=milk&searchBy=full&pageSize=6");
    EXPECT_EQ(request.at("x-auth-session-token"), SessionToken);
    EXPECT_EQ(request.at("x-auth-access-token"), AccessToken);
}

TEST_F(AnAnswerOfHttp2, BringsAPictureAndGetsNoTokens)
{
    const std::string content(1'000'000, 'p');
    script->answer("/hostile.png", {content});

    expectThatPicture(content);

    const Http2Request request = script->requests().at(0);
    EXPECT_EQ(request.count("x-auth-session-token"), 0U);
    EXPECT_EQ(request.count("x-auth-access-token"), 0U);
}

TEST_F(AnAnswerOfHttp2, WithABadStatusIsAFailure)
{
    searchOverHttp2({"", 503});

    expectFailure(Logged::status(503), true, false);
}

TEST_F(AnAnswerOfHttp2, ThatIsTakenBackIsNone)
{
    searchOverHttp2({"", 200, true});

    expectFailure(Logged::noAnswer("Stream error in the HTTP/2 framing layer"), true, false);
}

TEST_F(AnAnswerOfHttp2, ThatIsTakenBackLeavesAPictureOut)
{
    script->answer("/hostile.png", {"", 200, true});
    searchWithPicture(pictureUrl());

    expectPictureFailure("curl_easy_perform failed, result: Stream error in the HTTP/2 framing layer");
}

}  // namespace

}  // namespace ServiceTest
