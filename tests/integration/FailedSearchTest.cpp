// Every way in which a search can fail: what is logged, what is kept, and that the next one works.
#include <gtest/gtest.h>

#include <filesystem>

#include "ServiceWorld.h"
#include "SiteValues.h"

namespace ServiceTest {

namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

// The search's own lines, as they are to be logged.
const std::string Perform = "Curl.cpp:69 perform error: curl_easy_perform() failed: ";
const std::string Send = "SearchControl.cpp:233 searchProduct error: ";
const std::string Parse = "SearchControl.cpp:382 parseResult error: ";
const std::string NoTokenFile = "SearchControl.cpp:241 checkMCLogin debug: Not Open MC Login File!";

class World;

struct Failure {
    const char* name;
    std::function<void(World&)> arrange;
    Texts logged;
    bool isLoggedIn;
    bool isLinked;
};

std::ostream& operator<<(std::ostream& stream, const Failure& failure)
{
    return stream << failure.name;
}

class World : public ServiceWorld, public testing::WithParamInterface<Failure> {
  public:
    std::string term = "milk";
    std::string shop = "freshmart";

    void answer(const Answer& answer) { merchant->answer(Merchant::SearchPath, answer); }
    void answer(const std::string& body) { answer(Answer{200, body}); }
    void close() { merchant.reset(); }
    void tokens(const std::string& content) { writeTokens(content); }
    void noTokenFile() { fs::remove(tokenFile()); }
    void tokenFolder()
    {
        noTokenFile();
        fs::create_directory(tokenFile());
    }
    void noTokenFolder() { fs::remove_all(fs::path(tokenFile()).parent_path()); }
    void certifyFor(const std::string& host) { openMerchant(authority.issue({host})); }
    void letExpire() { openMerchant(authority.issueExpired({CARVOY_MERCHANT_BRIDGE_HOST})); }
    void vouchForItself()
    {
        openMerchant(Appliance::ThrowawayCertificates::selfSigned({CARVOY_MERCHANT_BRIDGE_HOST}));
    }

  protected:
    void SetUp() override
    {
        ui = std::make_unique<UiPeer>();
        stock(threeProducts());
        startService();
        resultMessage();
    }

    /** What was logged from here on by anything but the dispatch of requests. */
    Texts loggedSince(std::size_t line) const
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

    void putRight()
    {
        openMerchant(authority.issue({CARVOY_MERCHANT_BRIDGE_HOST}));
        fs::remove(tokenFile());
        writeTokens("session,access");
    }
};

using AFailedSearch = World;

TEST_P(AFailedSearch, IsLoggedAndKeptAndLeavesTheNextOneUnharmed)
{
    const std::size_t before = log.lines().size();
    GetParam().arrange(*this);

    EXPECT_EQ(search(term, shop), "");
    const auto result = resultMessage();

    EXPECT_EQ(loggedSince(before), GetParam().logged);
    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "0");
    EXPECT_EQ(result.extras.count("key_product_names"), 0U);
    EXPECT_EQ(status(), (StatusRecord{GetParam().isLoggedIn, GetParam().isLinked, 0, {}, {}}));
    EXPECT_EQ(responseFlag(), "1\n");
    putRight();
    expectASearchThatWorks("oat milk");
    stopService();
    EXPECT_EQ(service->errors(), "");
}

Failure status(const char* name, int code)
{
    return {name,
            [code](World& world) {
                world.answer(Answer{code, "{\"products\": [{\"name\": \"x\"}]}"});
            },
            {Send + "curl perform failed: " + std::to_string(code)},
            true,
            false};
}

Failure badAnswer(const char* name, const std::string& body, const std::string& message)
{
    return {name, [body](World& world) { world.answer(body); }, {Parse + message}, true, true};
}

Failure noAnswer(const char* name, const std::function<void(World&)>& arrange, const std::string& reason)
{
    return {name, arrange, {Perform + reason, Send + "curl perform failed: 0"}, true, false};
}

Failure noRequest(const char* name, const std::function<void(World&)>& arrange, const Texts& logged)
{
    return {name, arrange, logged, false, false};
}

const std::string Untrusted = "SSL peer certificate or SSH remote key was not OK";
const std::string NotJson = "json_parser_load_from_data() failed";
const std::string NoTokens = Send + "Invalid access token";

const Failure Failures[] = {
    noRequest("NoTerm", [](World& world) { world.term = ""; }, {Send + "Invalid extra data"}),
    noRequest("NoMerchant", [](World& world) { world.shop = ""; }, {Send + "Invalid extra data"}),
    noRequest("NoTokenFile", [](World& world) { world.noTokenFile(); }, {NoTokenFile, NoTokens}),
    noRequest("NoTokenFolder", [](World& world) { world.noTokenFolder(); }, {NoTokenFile, NoTokens}),
    noRequest("FolderForATokenFile", [](World& world) { world.tokenFolder(); }, {NoTokens}),
    noRequest("EmptyTokenFile", [](World& world) { world.tokens(""); }, {NoTokens}),
    noRequest("EmptyFirstLine", [](World& world) { world.tokens("\nsession,access"); }, {NoTokens}),
    noRequest("NoAccessToken", [](World& world) { world.tokens("session,"); }, {NoTokens}),
    noRequest("NoSessionToken", [](World& world) { world.tokens(",access"); }, {NoTokens}),
    noRequest("NotLoggedIn", [](World& world) { world.answer(Answer{401}); }, {Send + "Not logged in"}),
    status("Forbidden", 403),
    status("Created", 201),
    status("ServerError", 500),
    status("Unavailable", 503),
    noAnswer(
        "Refused", [](World& world) { world.close(); }, "Couldn't connect to server"),
    noAnswer(
        "SelfSigned", [](World& world) { world.vouchForItself(); }, Untrusted),
    noAnswer(
        "Expired", [](World& world) { world.letExpire(); }, Untrusted),
    noAnswer(
        "OtherHost", [](World& world) { world.certifyFor("other.example"); }, Untrusted),
    noAnswer(
        "Truncated",
        [](World& world) {
            world.answer(Answer{200, "{\"prod", "text/plain", 100});
        },
        "Transferred a partial file"),
    badAnswer("Garbage", "\x01\x02 garbage \xff", NotJson),
    badAnswer("Html", "<html><body>Welcome</body></html>", NotJson),
    badAnswer("HalfJson", "{\"products\": [{\"name\":", NotJson),
    badAnswer("Empty", "", "json_parser_get_root() failed"),
    badAnswer("Nested", std::string(100'000, '['), NotJson),
    badAnswer("NestedWell", "{\"products\": " + std::string(100'000, '[') + std::string(100'000, ']') + "}",
              NotJson),
    badAnswer("Array", "[{\"products\": []}]", "Invalid json type"),
    badAnswer("NoProducts", "{\"items\": []}", "no member: products"),
    badAnswer("ProductsOfAnotherType", "{\"products\": {}}", "json_object_get_array_member() failed"),
    badAnswer("NullProducts", "{\"products\": null}", "json_object_get_array_member() failed"),
    badAnswer("NoneFound", "{\"products\": []}", "empty json array"),
};

INSTANTIATE_TEST_SUITE_P(By, AFailedSearch, testing::ValuesIn(Failures),
                         [](const auto& failure) { return failure.param.name; });

}  // namespace

}  // namespace ServiceTest
