// What other apps may ask of the service, and what it then asks of the merchant.
#include "ServiceWorld.h"

namespace ServiceTest {

namespace {

using TestSupport::Extras;
using Texts = std::vector<std::string>;

constexpr const char* InvalidArgs = "org.freedesktop.DBus.Error.InvalidArgs";

class ARequest : public ServiceWorld {
  protected:
    void SetUp() override
    {
        ui = std::make_unique<UiPeer>();
        stock(threeProducts());
        startService();
    }

    std::vector<Asked> searches() const { return merchant->requests(Merchant::SearchPath); }

    std::string queryOf(const std::string& term, const std::string& merchantName = "freshmart")
    {
        search(term, merchantName);
        resultMessage();
        const std::string target = searches().back().target;
        return target.substr(target.find('?') + 1);
    }
};

TEST_F(ARequest, IsTakenFromAnyProgramOnTheBus)
{
    const std::string error =
        client->launch(ServiceId, serviceOperation("search"), 0,
                       {{"key_merchant", "freshmart"}, {"key_search_term", "milk"}}, "org.example.me");

    EXPECT_EQ(error, "");
    EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "3");
}

TEST_F(ARequest, IsTakenFromAShell)
{
    TestSupport::ChildProcess shell({"gdbus", "call", "--session", "-d", ServiceId, "-o",
                                     "/org/tizen/AppControl", "-m", "org.tizen.AppControl1.Launch",
                                     "org.example.me", "0", serviceOperation("search"), "",
                                     "{'key_merchant': <'freshmart'>, 'key_search_term': <'milk'>}"});

    EXPECT_EQ(shell.wait().status, 0) << shell.errors();
    EXPECT_EQ(shell.output(), "()\n");
    EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "3");
}

TEST_F(ARequest, ToSearchAsksTheMerchantOnceForSixProducts)
{
    EXPECT_EQ(queryOf("milk"), "merchant=freshmart&query=milk&searchBy=full&pageSize=6");
    EXPECT_EQ(searches().size(), 1U);
}

TEST_F(ARequest, ToSearchEscapesWhatAQueryCannotHold)
{
    EXPECT_EQ(queryOf("oat milk & honey=50%", "caf\xc3\xa9/1"),
              "merchant=caf%C3%A9%2F1&query=oat%20milk%20%26%20honey%3D50%25&searchBy=full&pageSize=6");
}

TEST_F(ARequest, ToSearchBringsBothTokensOfTheTokenFile)
{
    search();
    resultMessage();

    ASSERT_EQ(searches().size(), 1U);
    EXPECT_EQ(searches()[0].header("X-Auth-Session-Token"), SessionToken);
    EXPECT_EQ(searches()[0].header("X-Auth-Access-Token"), AccessToken);
}

TEST_F(ARequest, ToSearchReadsTheTokenFileAnewEachTime)
{
    writeTokens("x,y,z");
    search();
    resultMessage();

    ASSERT_EQ(searches().size(), 1U);
    EXPECT_EQ(searches()[0].header("X-Auth-Session-Token"), "x,y");
    EXPECT_EQ(searches()[0].header("X-Auth-Access-Token"), "z");
}

TEST_F(ARequest, ToSearchUsesALineWithoutACommaAsBothTokens)
{
    writeTokens("only-one\nsecond,line\n");
    search();
    resultMessage();

    ASSERT_EQ(searches().size(), 1U);
    EXPECT_EQ(searches()[0].header("X-Auth-Session-Token"), "only-one");
    EXPECT_EQ(searches()[0].header("X-Auth-Access-Token"), "only-one");
}

TEST_F(ARequest, WithAnOperationThatIsNotForTheServiceIsIgnored)
{
    const Texts operations = {"http://carvoy-service/appcontrol/operation/search2",
                              "http://carvoy-service/appcontrol/operation/searc",
                              "http://carvoy-service/appcontrol/operation/search ",
                              "http://carvoy-service/appcontrol/operation/Search",
                              "http://carvoy-service/appcontrol/operation/show",
                              "http://carvoy-service/appcontrol/operation/hide",
                              "http://carvoy-service/appcontrol/operation/product_image",
                              "http://tizen.org/appcontrol/operation/default",
                              "http://tizen.org/appcontrol/operation/show_search_view",
                              "http://nuvex-da/appcontrol/operation/close_app",
                              "search",
                              ""};

    for (const std::string& operation : operations)
        EXPECT_EQ(launch(operation, {{"key_merchant", "freshmart"}, {"key_search_term", "milk"}}), "");

    EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "0");
    EXPECT_EQ(searches().size(), 0U);
    EXPECT_EQ(log.count("app_control"), operations.size() + 1);
    EXPECT_EQ(log.count("Service::onAppControl"), operations.size() + 1);
    // The start with voice, two lines for each request, and the empty line of the last one.
    EXPECT_EQ(log.lines().size(), 12 + 2 * (operations.size() + 1) + 1);
}

TEST_F(ARequest, WithExtrasThatNobodyKnowsIsTakenAllTheSame)
{
    const Texts list = {"a", "b"};

    EXPECT_EQ(launch(serviceOperation("search"), {{"key_merchant", "freshmart"},
                                                  {"key_search_term", "milk"},
                                                  {"key_search_by", "half"},
                                                  {"key_product_names", list}}),
              "");

    const auto result = resultMessage();
    EXPECT_EQ(textOf(result, "key_search_by"), "full");
    EXPECT_EQ(textOf(result, "key_total_num_of_products"), "3");
}

TEST_F(ARequest, WhoseMerchantIsAListHasNoMerchant)
{
    EXPECT_EQ(launch(serviceOperation("search"),
                     {{"key_merchant", Texts{"freshmart"}}, {"key_search_term", "milk"}}),
              "");

    EXPECT_EQ(textOf(resultMessage(), "key_merchant"), "");
    EXPECT_EQ(log.count("Invalid extra data"), 1U);
}

TEST_F(ARequest, WithAnExtraOfAnotherTypeIsRefusedAndNotDelivered)
{
    const std::map<std::string, std::string> record = {{"a", "b"}};
    const std::vector<Extras> wrong = {{{"key_merchant", std::int32_t{1}}, {"key_search_term", "milk"}},
                                       {{"key_merchant", "freshmart"}, {"key_search_term", true}},
                                       {{"key_merchant", "freshmart"}, {"other", 1.5}},
                                       {{"key_merchant", record}}};

    for (const Extras& extras : wrong)
        EXPECT_EQ(launch(serviceOperation("search"), extras), InvalidArgs);

    resultMessage();
    EXPECT_EQ(log.count("app_control"), 1U);
    EXPECT_EQ(searches().size(), 0U);
}

TEST_F(ARequest, IsHandledAfterThoseThatCameBeforeIt)
{
    merchant->hold(Merchant::SearchPath);
    for (const char* term : {"one", "two", "three"}) {
        EXPECT_EQ(search(term), "");
        EXPECT_EQ(askForResult(), "");
    }
    ASSERT_TRUE(merchant->waitForRequests(Merchant::SearchPath));
    EXPECT_EQ(searches().size(), 1U);

    merchant->release(Merchant::SearchPath);

    for (const char* term : {"one", "two", "three"})
        EXPECT_EQ(textOf(ui->nextResult(), "key_search_term"), term);
}

TEST_F(ARequest, IsHandledOnTheFirstThread)
{
    search();
    resultMessage();

    for (const LogLine& line : log.lines()) {
        if (line.function != "operator()") {
            EXPECT_EQ(line.thread, service->pid()) << line.text();
        }
    }
}

TEST_F(ARequest, IsNeverRepliedTo)
{
    constexpr std::uint32_t mark = 99;
    client->launch(ServiceId, serviceOperation("search"), 7, {{"key_merchant", "freshmart"}});
    client->launch(ServiceId, serviceOperation("show"), 8);
    client->launch(ServiceId, serviceOperation("result"), 9);
    ui->nextResult();
    stopService();
    ASSERT_TRUE(TestSupport::waitForName(ServiceId, false));

    // Whatever the service sent has come when this does.
    EXPECT_EQ(TestSupport::RawPeer().reply(client->uniqueName(), mark), "");
    const auto first = client->nextReply();
    ASSERT_TRUE(first);
    EXPECT_EQ(first->id, mark);
}

}  // namespace

}  // namespace ServiceTest
