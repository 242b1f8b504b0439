// More requests at once than anybody would ever make.
#include <random>

#include "ServiceWorld.h"

namespace ServiceTest {

namespace {

using TestSupport::Extras;
using TestSupport::RawMessage;
using Texts = std::vector<std::string>;

constexpr int Requests = 10'000;
constexpr int SearchEvery = 25;   // on average
constexpr int ResultEvery = 500;  // on average
constexpr int SearchesForEachResult = 50;

// A search starts a shell, which takes a sanitizer many times as long.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int Searches = 100;
#else
constexpr int Searches = 500;
#endif

/** What the log tells of one request. */
enum class Kind { Ignored, WithoutATerm, WithATerm, Result };

class ABurst : public ServiceWorld {
  protected:
    void begin()
    {
        ui = std::make_unique<UiPeer>();
        startService();
        resultMessage();
        atRest_ = threads();
        openFiles_ = openFiles();
    }

    std::size_t openFiles() const
    {
        const std::filesystem::path folder = "/proc/" + std::to_string(service->pid()) + "/fd";
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
    }

    void expectRest() const
    {
        EXPECT_TRUE(waitForThreads(atRest_));
        EXPECT_EQ(openFiles(), openFiles_);
    }

    void send(Kind kind, const std::string& term)
    {
        if (kind == Kind::Result)
            client->launchInABurst(ServiceId, serviceOperation("result"));
        else if (kind == Kind::Ignored)
            client->launchInABurst(ServiceId, serviceOperation("show"), {{"key_search_term", term}});
        else if (kind == Kind::WithoutATerm)
            client->launchInABurst(ServiceId, serviceOperation("search"), {{"key_merchant", term}});
        else
            client->launchInABurst(ServiceId, serviceOperation("search"),
                                   {{"key_merchant", "freshmart"}, {"key_search_term", term}});
    }

    /** What was handled from this line of the log on, request by request. */
    std::vector<Kind> handledSince(std::size_t line) const
    {
        const std::vector<LogLine> lines = log.lines();
        std::vector<Kind> handled;
        for (std::size_t i = line; i < lines.size(); ++i) {
            if (lines[i].message == "app_control")
                handled.push_back(Kind::Ignored);
            else if (handled.empty())
                continue;
            else if (lines[i].message == "Invalid extra data")
                handled.back() = Kind::WithoutATerm;
            else if (lines[i].message == "Invalid access token")
                handled.back() = Kind::WithATerm;
            else if (lines[i].function == "sendResultToUI")
                handled.back() = Kind::Result;
        }
        return handled;
    }

    std::mt19937 engine{20};

  private:
    std::size_t atRest_ = 0;
    std::size_t openFiles_ = 0;
};

TEST_F(ABurst, OfTenThousandRequestsIsHandledInOrderAndNoneIsLost)
{
    std::filesystem::remove(tokenFile());
    begin();
    const std::size_t before = log.lines().size();
    std::vector<Kind> sent;
    Texts terms;
    std::string last;
    for (int i = 0; i < Requests; ++i) {
        const bool isResult = i == Requests - 1 || engine() % ResultEvery == 0;
        const bool isSearch = engine() % SearchEvery == 0;
        const Kind kind = isResult        ? Kind::Result
                          : !isSearch     ? Kind::Ignored
                          : engine() % 2U ? Kind::WithoutATerm
                                          : Kind::WithATerm;
        const std::string term = std::to_string(i);
        if (isResult)
            terms.push_back(last);
        else if (isSearch)
            last = kind == Kind::WithATerm ? term : "";
        send(kind, term);
        sent.push_back(kind);
    }

    EXPECT_EQ(client->answersToTheBurst(), Texts());
    for (const std::string& term : terms)
        EXPECT_EQ(textOf(ui->nextResult(), "key_search_term"), term);
    EXPECT_TRUE(handledSince(before) == sent);
    expectRest();
    stopService();
    EXPECT_EQ(service->errors(), "");
}

TEST_F(ABurst, OfHundredsOfSearchesIsMadeInOrderAndTheLastOneStands)
{
    stock(threeProducts());
    begin();
    for (int i = 1; i <= Searches; ++i) {
        send(Kind::WithATerm, std::to_string(i));
        if (i % SearchesForEachResult == 0)
            send(Kind::Result, "");
    }
    EXPECT_EQ(client->answersToTheBurst(), Texts());

    RawMessage result;
    for (int i = SearchesForEachResult; i <= Searches; i += SearchesForEachResult) {
        result = ui->nextResult();
        EXPECT_EQ(textOf(result, "key_search_term"), std::to_string(i));
        EXPECT_EQ(textOf(result, "key_total_num_of_products"), "3");
    }
    ui->confirm(result);
    for (const char* index : {"0", "1", "2"})
        EXPECT_EQ(ui->nextPicture().index, index);
    const std::vector<Asked> asked = merchant->requests(Merchant::SearchPath);
    ASSERT_EQ(asked.size(), std::size_t{Searches});
    for (int i = 1; i <= Searches; ++i)
        EXPECT_NE(asked[static_cast<std::size_t>(i - 1)].target.find("&query=" + std::to_string(i) + "&"),
                  std::string::npos);
    expectRest();
    EXPECT_EQ(errors(), Texts());
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));
    stopService();
    EXPECT_EQ(service->errors(), "");
}

}  // namespace

}  // namespace ServiceTest
