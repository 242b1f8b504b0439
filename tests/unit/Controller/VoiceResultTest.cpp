// A result of the voice assistant, from the callback to what is sent.
#include <gtest/gtest.h>
#include <nuvex-da-parser.h>

#include <cctype>

#include "CallNotes.h"
#include "Nlu.h"
#include "Singleton.h"
#include "SiteValues.h"
#include "VoiceControlFixture.h"

using Nlu::action;
using Nlu::item;
using TestSupport::Calls;
using TestSupport::VoiceStandIn;

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

const std::string PARTNER = CARVOY_PARTNER_APP_ID ": http://tizen.org/appcontrol/operation/";
const std::string ADD = PARTNER + "click_add_cart";
const std::string CHECK_OUT = PARTNER + "click_check_out";
const std::string SUMMARY = PARTNER + "click_cart_summary";
const std::string CLOSE = "org.tizen.nuvex-da: http://nuvex-da/appcontrol/operation/close_app";

std::string view(const std::string& merchant, const std::string& ref)
{
    return PARTNER + "show_detailed_view key_merchant=" + merchant + " key_product_variant_refs=" + ref;
}

class VoiceResultTest : public VoiceControlFixture {
  protected:
    void SetUp() override
    {
        VoiceControlFixture::SetUp();
        startVoice();
    }

    /** The log of one command, behind what each result and each command logs. */
    static Texts logOf(const std::string& nlu)
    {
        Calls::reset();
        say({nlu});
        Texts log = logged();
        EXPECT_GE(log.size(), 3u);
        log.erase(log.begin(), log.begin() + 3);
        return log;
    }

    /** Each response that was made is gone. */
    static void expectNoResponseLeft()
    {
        EXPECT_EQ(Calls::count("ndp_response_data_parse"), Calls::count("ndp_response_data_destroy"));
    }

    /** Says which product is meant, by an id that is a JSON value, and gives what was sent. */
    static Texts choose(const std::string& id)
    {
        Calls::reset();
        say({item(id)});
        expectNoResponseLeft();
        return requests();
    }
};

struct Action {
    const char* name;
    const char* operation;
};

class CartAction : public VoiceResultTest, public testing::WithParamInterface<Action> {};

}  // namespace

TEST_P(CartAction, IsSentToThePartnerAppWithoutExtraData)
{
    const std::string operation =
        std::string("http://tizen.org/appcontrol/operation/") + GetParam().operation;
    say({action(GetParam().name)});
    EXPECT_EQ(requests(), Texts{PARTNER + GetParam().operation});
    EXPECT_EQ(logged(), (Texts{"_vc_result_cb: ==== Result cb ====", "_vc_result_cb: Result Text - as spoken",
                               "operator(): nlu: " + action(GetParam().name),
                               "_handle_nlu_result: Send [" + operation + "]"}));
    EXPECT_EQ(Calls::launches().at(0).callback, nullptr);
    EXPECT_EQ(Calls::launches().at(0).uri, "");
    EXPECT_EQ(Calls::count("ndp_response_data_get_action_data"), 0u);
    expectNoResponseLeft();
}

TEST_P(CartAction, IsKnownWithBlanksAroundItsName)
{
    const std::string name = GetParam().name;
    const std::string operation = GetParam().operation;
    for (const std::string& text :
         {name + "\\n", " " + name, "\\t\\r\\n\\u000b " + name + " \\u000b\\n\\r\\t"}) {
        Calls::reset();
        say({action(text)});
        EXPECT_EQ(requests(), Texts{PARTNER + operation}) << text;
    }
}

TEST_P(CartAction, IsNotKnownByAnyOtherName)
{
    std::string name = GetParam().name;
    Texts others = {name + "x",   "x" + name,      name.substr(1), name.substr(0, name.size() - 1),
                    "\\f" + name, name + "\\u00a0"};
    std::string upper = name;
    for (char& letter : upper)
        letter = static_cast<char>(std::toupper(letter));
    others.push_back(upper);
    for (const std::string& other : others) {
        EXPECT_EQ(logOf(action(other)), Texts{}) << other;
        EXPECT_EQ(requests(), Texts{}) << other;
        expectNoResponseLeft();
    }
}

INSTANTIATE_TEST_SUITE_P(Each, CartAction,
                         testing::Values(Action{"Commerce Add To Cart", "click_add_cart"},
                                         Action{"Commerce Check Out", "click_check_out"},
                                         Action{"Show Cart Success", "click_cart_summary"}),
                         [](const auto& each) { return std::string(each.param.operation); });

TEST_F(VoiceResultTest, ACartActionIgnoresActionData)
{
    say({R"({"actionName": "Commerce Check Out", "actionData": "none of its business"})"});
    EXPECT_EQ(requests(), Texts{CHECK_OUT});
    EXPECT_EQ(loggedErrors(), Texts{});
}

TEST_F(VoiceResultTest, AnUnknownActionSendsNothing)
{
    for (const char* name : {"", " ", "Commerce", "Commerce Search", "commerce searched item",
                             "Commerce  Searched Item", "Commerce Searched\\nItem"}) {
        EXPECT_EQ(logOf(action(name)), Texts{}) << name;
        EXPECT_EQ(requests(), Texts{}) << name;
        expectNoResponseLeft();
    }
}

TEST_F(VoiceResultTest, AResponseWithoutAnActionNameSendsNothing)
{
    for (const char* nlu : {"{}", R"({"actionName": null})", R"({"actionName": 7})",
                            R"({"actionName": ["x"]})", R"({"ActionName": "Commerce Check Out"})"}) {
        EXPECT_EQ(logOf(nlu), Texts{}) << nlu;
        EXPECT_EQ(requests(), Texts{}) << nlu;
        expectNoResponseLeft();
    }
}

TEST_F(VoiceResultTest, AnActionNameThatTheParserFailsToGiveCountsAsNone)
{
    Calls::fail("ndp_response_data_get_action_name", NDP_ERROR_OUT_OF_MEMORY);
    say({action("Commerce Check Out")});
    Calls::fail("ndp_response_data_get_action_name", 0);
    say({action("Commerce Check Out")});
    EXPECT_EQ(requests(), Texts{});
    EXPECT_EQ(loggedErrors(), Texts{});
    expectNoResponseLeft();
}

TEST_F(VoiceResultTest, WhatIsNoResponseIsLogged)
{
    for (const auto& [nlu, name] :
         std::vector<std::pair<std::string, std::string>>{{"{", "PARSE JSON FAILED"},
                                                          {"", "PARSE JSON FAILED"},
                                                          {"[]", "INVALID TYPE"},
                                                          {std::string(5'000, '['), "PARSE JSON FAILED"}}) {
        EXPECT_EQ(logOf(nlu), Texts{"_handle_nlu_result: ndp_response_data_parse() failed: [" + name + "]"});
        EXPECT_EQ(loggedErrors().size(), 1u);
        EXPECT_EQ(requests(), Texts{});
        EXPECT_EQ(Calls::count("ndp_response_data_destroy"), 0u);
    }
}

TEST_F(VoiceResultTest, ARejectedResultIsNotLookedAt)
{
    for (const char* text : {"as spoken", static_cast<const char*>(nullptr)}) {
        Calls::reset();
        EXPECT_TRUE(VoiceStandIn::giveResult(1, text, {{action("Commerce Check Out")}}));
        EXPECT_EQ(logged(), (Texts{"_vc_result_cb: ==== Result cb ====", "_vc_result_cb: Rejected event"}));
        EXPECT_EQ(requests(), Texts{});
        EXPECT_EQ(Calls::count("vc_cmd_list_foreach_commands"), 0u);
    }
}

TEST_F(VoiceResultTest, AResultWithoutATextIsIgnored)
{
    EXPECT_TRUE(VoiceStandIn::giveResult(0, nullptr, {{action("Commerce Check Out")}}));
    EXPECT_EQ(logged(), Texts{"_vc_result_cb: ==== Result cb ===="});
    EXPECT_EQ(requests(), Texts{});
    EXPECT_EQ(Calls::count("vc_cmd_list_foreach_commands"), 0u);
}

TEST_F(VoiceResultTest, EveryOtherEventAndAnEmptyTextAreHandled)
{
    for (int event : {0, 2, 3}) {
        Calls::reset();
        EXPECT_TRUE(VoiceStandIn::giveResult(event, "", {{action("Commerce Check Out")}}));
        EXPECT_EQ(logged().at(1), "_vc_result_cb: Result Text - ");
        EXPECT_EQ(requests(), Texts{CHECK_OUT});
    }
}

TEST_F(VoiceResultTest, AResultWithoutCommandsIsLogged)
{
    say({});
    EXPECT_EQ(loggedErrors(), Texts{"_vc_result_cb: vc_cmd_list_foreach_commands() failed: [EMPTY]"});
    EXPECT_EQ(requests(), Texts{});
}

TEST_F(VoiceResultTest, TheCommandsAreAskedForWithTheObject)
{
    say({action("Commerce Check Out")});
    EXPECT_EQ(Calls::of("vc_cmd_list_foreach_commands").at(0).arguments,
              Texts{TestSupport::CallNotes::text(static_cast<const void*>(voice_.get()))});
}

TEST_F(VoiceResultTest, CommandsAreHandledOneAfterTheOther)
{
    searchFor({"one", "two"});
    say({action("Commerce Check Out"), item("\"2\""), action("Show Cart Success"),
         action("Commerce Add To Cart")});
    EXPECT_EQ(requests(), (Texts{CHECK_OUT, view("freshmart", "two"), CLOSE, SUMMARY, ADD}));
    EXPECT_EQ(Calls::count("ndp_response_data_parse"), 4u);
    expectNoResponseLeft();
}

// The requests are the same objects each time.
TEST_F(VoiceResultTest, ChoicesInOneResultKeepTheirOwnProducts)
{
    searchFor({"one", "two"});
    say({item("\"1\""), item("\"2\""), item("\"1\"")});
    EXPECT_EQ(requests(), (Texts{view("freshmart", "one"), CLOSE, view("freshmart", "two"), CLOSE,
                                 view("freshmart", "one"), CLOSE}));
}

TEST_F(VoiceResultTest, AListThatCannotBeWalkedIsLogged)
{
    for (const auto& [code, name] : std::vector<std::pair<int, std::string>>{
             {VC_ERROR_INVALID_PARAMETER, "INVALID_PARAMETER"}, {1, "VC_ERROR_UNKNOWN"}}) {
        Calls::reset();
        Calls::fail("vc_cmd_list_foreach_commands", code);
        say({action("Commerce Check Out")});
        EXPECT_EQ(loggedErrors(),
                  Texts{"_vc_result_cb: vc_cmd_list_foreach_commands() failed: [" + name + "]"});
        EXPECT_EQ(requests(), Texts{});
    }
}

TEST_F(VoiceResultTest, ABrokenCommandEndsAlone)
{
    EXPECT_TRUE(VoiceStandIn::giveResult(0, "as spoken",
                                         {{action("Commerce Check Out")},
                                          {std::nullopt, VC_ERROR_OPERATION_FAILED},
                                          {"not JSON at all"},
                                          {std::nullopt, 1},
                                          {R"({"actionName": "Commerce Searched Item"})"},
                                          {action("Show Cart Success")}}));
    EXPECT_EQ(requests(), (Texts{CHECK_OUT, SUMMARY}));
    EXPECT_EQ(loggedErrors(),
              (Texts{"operator(): vc_cmd_get_nlu_json() failed: [OPERATION_FAILED]",
                     "_handle_nlu_result: ndp_response_data_parse() failed: [PARSE JSON FAILED]",
                     "operator(): vc_cmd_get_nlu_json() failed: [VC_ERROR_UNKNOWN]",
                     "_handle_nlu_result: ndp_response_data_get_action_data() failed: [NO SUCH VALUE]"}));
    EXPECT_EQ(Calls::count("ndp_response_data_parse"), 4u);
    EXPECT_EQ(Calls::count("ndp_response_data_destroy"), 3u) << "all that could be read";
}

// That it is released is seen by the leak check of the sanitizer's build.
TEST_F(VoiceResultTest, ATextThatComesWithAFailureIsReleasedAndNotLookedAt)
{
    EXPECT_TRUE(
        VoiceStandIn::giveResult(0, "as spoken", {{action("Commerce Check Out"), VC_ERROR_IO_ERROR}}));
    EXPECT_EQ(loggedErrors(), Texts{"operator(): vc_cmd_get_nlu_json() failed: [IO_ERROR]"});
    EXPECT_EQ(requests(), Texts{});
}

TEST_F(VoiceResultTest, AChosenProductIsShownAndTheAssistantsViewIsClosed)
{
    searchFor({"one", "two", "three"}, "cornershop");
    EXPECT_EQ(choose("\"2\""), (Texts{view("cornershop", "two"), CLOSE}));
    EXPECT_EQ(logged().back(),
              "_handle_nlu_result: Send [http://tizen.org/appcontrol/operation/show_detailed_view]");
    EXPECT_EQ(loggedErrors(), Texts{});
    for (const TestSupport::Launch& launch : Calls::launches())
        EXPECT_EQ(launch.callback, nullptr);
}

TEST_F(VoiceResultTest, AChoiceIsReadFromTheFrontOfItsText)
{
    searchFor({"one", "two", "three"});
    for (const char* id : {"2", " 2", "\\t\\n 2 ", "+2", "02", "2 of them", "2.9", "2,5", "2nd", "\\f2"})
        EXPECT_EQ(choose("\"" + std::string(id) + "\""), (Texts{view("freshmart", "two"), CLOSE})) << id;
}

TEST_F(VoiceResultTest, AChoiceThatIsNoPositionSendsNothing)
{
    searchFor({"one", "two", "three"});
    for (const char* id : {"", " ", "0", "-0", "-1", "-2147483648", "-2147483649", "two", "#2", "0x2", "--2",
                           "+ 2", "\\u0662", "x2"}) {
        EXPECT_EQ(choose("\"" + std::string(id) + "\""), Texts{}) << id;
        EXPECT_EQ(loggedErrors(), Texts{}) << id;
    }
}

TEST_F(VoiceResultTest, AChoiceBeyondTheListSendsNothing)
{
    searchFor({"one", "two", "three"});
    for (const std::string& id :
         {std::string("4"), std::string("7"), std::string("2147483647"), std::string("2147483648"),
          std::string("4294967297"), std::string("18446744073709551617"), std::string(5'000, '9')})
        EXPECT_EQ(choose("\"" + id + "\""), Texts{}) << id.size() << " digits";
    EXPECT_EQ(choose("\"3\""), (Texts{view("freshmart", "three"), CLOSE}));
}

TEST_F(VoiceResultTest, AnIdThatIsNoTextSendsNothing)
{
    searchFor({"one", "two", "three"});
    for (const char* id : {"2", "2.0", "true", "null", "[\"2\"]", "{\"id\": \"2\"}"}) {
        EXPECT_EQ(choose(id), Texts{}) << id;
        EXPECT_EQ(loggedErrors(), Texts{}) << id;
    }
    Calls::fail("ndp_commerce_data_get_id", 0);
    say({item("\"2\"")});
    EXPECT_EQ(requests(), Texts{});
}

TEST_F(VoiceResultTest, AChoiceWithoutItsDataSendsNeitherRequest)
{
    searchFor({"one", "two"});
    const std::string begin = R"({"actionName": "Commerce Searched Item")";
    const std::string noData = "ndp_response_data_get_action_data() failed: ";
    const std::string noCommerce = "ndp_commerce_action_data_get_representative_commerce_data() failed: ";
    for (const auto& [nlu, message] : std::vector<std::pair<std::string, std::string>>{
             {begin + "}", noData + "[NO SUCH VALUE]"},
             {begin + R"(, "actionData": "2"})", noData + "[INVALID TYPE]"},
             {begin + R"(, "actionData": {}})", noCommerce + "[NO SUCH VALUE]"},
             {begin + R"(, "actionData": {"representativeCommerceData": ["2"]}})",
              noCommerce + "[INVALID TYPE]"}}) {
        EXPECT_EQ(
            logOf(nlu),
            (Texts{"_handle_nlu_result: Send [http://tizen.org/appcontrol/operation/show_detailed_view]",
                   "_handle_nlu_result: " + message}));
        EXPECT_EQ(requests(), Texts{}) << nlu;
        expectNoResponseLeft();
    }
}

TEST_F(VoiceResultTest, AFailureOfTheParserSendsNeitherRequest)
{
    searchFor({"one", "two"});
    for (const char* function :
         {"ndp_response_data_get_action_data", "ndp_commerce_action_data_get_representative_commerce_data"}) {
        Calls::reset();
        Calls::fail(function, NDP_ERROR_INTERNAL_ERROR);
        say({item("\"2\"")});
        EXPECT_EQ(loggedErrors(),
                  Texts{"_handle_nlu_result: " + std::string(function) + "() failed: [INTERNAL_ERROR]"});
        EXPECT_EQ(requests(), Texts{});
        expectNoResponseLeft();
    }
}

TEST_F(VoiceResultTest, AChoiceBeforeAnySearchSendsNothing)
{
    EXPECT_EQ(choose("\"1\""), Texts{});

    search_.reset();
    Util::Singleton<SearchControl>::mInstance = nullptr;
    EXPECT_EQ(choose("\"1\""), Texts{});
    EXPECT_NE(Util::Singleton<SearchControl>::mInstance, nullptr) << "made by whoever asks first";
}

TEST_F(VoiceResultTest, AChoiceAfterAFailedSearchSendsNothing)
{
    searchFor({"one", "two"});
    merchant_.answerSearch(503, "");
    EXPECT_NE(Util::Singleton<SearchControl>::getInstance()->processSearch("freshmart", "milk"), 0);
    EXPECT_EQ(choose("\"1\""), Texts{});

    searchFor({"three"});
    EXPECT_EQ(choose("\"1\""), (Texts{view("freshmart", "three"), CLOSE}));
}

TEST_F(VoiceResultTest, AChoiceIsOfTheLastSearch)
{
    searchFor({"one"}, "freshmart");
    choose("\"1\"");
    searchFor({"eins", "zwei"}, "hofladen");
    EXPECT_EQ(choose("\"2\""), (Texts{view("hofladen", "zwei"), CLOSE}));
}

TEST_F(VoiceResultTest, AProductWithoutAReferenceIsAskedForWithoutOne)
{
    merchant_.answerSearch(200, R"({"products": [{"name": "Milk"}]})");
    ASSERT_EQ(Util::Singleton<SearchControl>::getInstance()->processSearch("freshmart", "milk"), 0);
    EXPECT_EQ(choose("\"1\""), (Texts{PARTNER + "show_detailed_view key_merchant=freshmart", CLOSE}));
}

TEST_F(VoiceResultTest, AChoiceWhilePicturesAreOnTheirWayIsSentBesideThem)
{
    const auto reached = newLatch();
    const auto release = newLatch();
    merchant_.answerSearch(200, R"({"products": [{"name": "Milk", "imageUrl": ")" +
                                    addHeldPicture("/held.png", "held", reached, release) +
                                    R"(", "mbVariants": [{"productVariantRef": "one"}]}]})");
    SearchControl* const search = Util::Singleton<SearchControl>::getInstance();
    ASSERT_EQ(search->processSearch("freshmart", "milk"), 0);
    ASSERT_TRUE(reached->wait());
    EXPECT_EQ(choose("\"1\""), (Texts{view("freshmart", "one"), CLOSE}));
    release->open();

    search->sendResultToUI();
    settle();
    confirm();
    ASSERT_TRUE(waitForImages(1));
    EXPECT_EQ(sentImages().at(0).text("key_product_image_num"), "0");
}

}  // namespace Carvoy
