// Requests that are much larger than any app would make them.
#include "FailedSearch.h"

namespace ServiceTest {

namespace {

constexpr std::size_t Size10MB = 10'000'000;
constexpr std::size_t ManyTexts = 100'000;
constexpr const char* NotSent = "Failed to launch request";

class ARequestOf10MB : public FailedSearch {};

TEST_F(ARequestOf10MB, IsASearchLikeAnyOtherWhereNobodyReadsTheExtra)
{
    EXPECT_EQ(launch(serviceOperation("search"), {{"key_merchant", "freshmart"},
                                                  {"key_search_term", "milk"},
                                                  {"key_nobody_knows", std::string(Size10MB, 'x')},
                                                  {"key_list", std::vector<std::string>(ManyTexts, "text")}}),
              "");

    EXPECT_EQ(textOf(resultMessage(), "key_total_num_of_products"), "3");
    expectASearchThatWorks();
}

TEST_F(ARequestOf10MB, IsIgnoredWhereItsOperationIs)
{
    EXPECT_EQ(launch(serviceOperation("show"), {{"key_search_term", std::string(Size10MB, 'x')}}), "");

    expectASearchThatWorks();
    EXPECT_EQ(merchant->requests(Merchant::SearchPath).size(), 1U);
}

TEST_F(ARequestOf10MB, MakesASearchFailWhoseTermItIs)
{
    term = std::string(Size10MB, 'x');

    expectFailure(Logged::noAnswer("URL using bad/illegal format or missing URL"), true, false);
}

TEST_F(ARequestOf10MB, BringsItsTermBackToTheUiApp)
{
    const std::string huge(Size10MB, 'x');
    search(huge);

    EXPECT_TRUE(textOf(resultMessage(), "key_search_term") == huge);
}

TEST_F(ARequestOf10MB, AndAnotherAreTooMuchForOneMessageBack)
{
    const std::string huge(Size10MB, 'x');
    search(huge, huge);
    askForResult();

    EXPECT_TRUE(log.waitFor(NotSent));
    expectASearchThatWorks();
    stopService();
    EXPECT_EQ(service->errors(), "");
}

}  // namespace

}  // namespace ServiceTest
