#include "FailedSearch.h"

#include <filesystem>

#include "SiteValues.h"

namespace ServiceTest {

using Texts = std::vector<std::string>;

namespace Logged {

Texts noAnswer(const std::string& reason)
{
    return {Perform + reason, Send + "curl perform failed: 0"};
}

Texts status(int code)
{
    return {Send + "curl perform failed: " + std::to_string(code)};
}

}  // namespace Logged

void FailedSearch::SetUp()
{
    ui = std::make_unique<UiPeer>();
    stock(threeProducts());
    startService(Until::ReadyForVoice, added());
    resultMessage();
}

void FailedSearch::expectFailure(const Texts& logged, bool isLoggedIn, bool isLinked)
{
    const std::size_t before = log.lines().size();

    EXPECT_EQ(search(term, shop), "");
    const auto result = resultMessage();

    EXPECT_EQ(loggedSince(before), logged);
    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "0");
    EXPECT_EQ(result.extras.count("key_product_names"), 0U);
    EXPECT_EQ(status(), (StatusRecord{isLoggedIn, isLinked, 0, {}, {}}));
    EXPECT_EQ(responseFlag(), "1\n");
    putRight();
    expectASearchThatWorks("oat milk");
    stopService();
    EXPECT_EQ(service->errors(), "");
}

Texts FailedSearch::loggedSince(std::size_t line) const
{
    const std::vector<LogLine> lines = log.lines();
    Texts texts;
    for (std::size_t i = line; i < lines.size(); ++i) {
        const bool isDispatch = lines[i].level == "info" || lines[i].function == "sendResultToUI";
        if (!isDispatch)
            texts.push_back(lines[i].text());
    }
    return texts;
}

void FailedSearch::putRight()
{
    openMerchant(authority.issue({CARVOY_MERCHANT_BRIDGE_HOST}));
    std::filesystem::remove(tokenFile());
    writeTokens();
}

}  // namespace ServiceTest
