// Voice commands, from the recogniser to the partner app and the assistant.
#include "SiteValues.h"
#include "VoiceWorld.h"

namespace ServiceTest {

namespace {

using Nlu::action;
using Nlu::item;

const std::string CheckOut = "Commerce Check Out";
const std::string Close = "assistant close_app";

std::string view(const std::string& ref)
{
    return "partner show_detailed_view key_merchant=freshmart key_product_variant_refs=" + ref;
}

class Voice : public VoiceWorld {
  protected:
    void SetUp() override
    {
        VoiceWorld::SetUp();
        startListening();
    }

    Texts errors() const
    {
        Texts texts;
        for (const LogLine& line : log.lines()) {
            if (line.level == "error")
                texts.push_back(line.text());
        }
        return texts;
    }
};

TEST_F(Voice, IsReadyUnderItsNameWithItsCommand)
{
    EXPECT_EQ(sent(), Texts{});
    EXPECT_EQ(voice->state(), 2);
    EXPECT_EQ(voice->invocationName(), "Carvoy");
    EXPECT_EQ(voice->commands(), Texts{"#org.tizen.commerce"});
}

TEST_F(Voice, AsksThePartnerAppForEachActionOfTheCart)
{
    say({action("Commerce Add To Cart")});
    say({action("Commerce Check Out\\n")});
    say({action(" Show Cart Success")});

    for (const char* operation : {"click_add_cart", "click_check_out", "click_cart_summary"}) {
        const std::optional<TestSupport::RawMessage> message = partner->nextLaunch();
        ASSERT_TRUE(message);
        EXPECT_EQ(message->operation, "http://tizen.org/appcontrol/operation/" + std::string(operation));
        EXPECT_EQ(message->caller, ServiceId);
        EXPECT_EQ(message->id, 0U) << "no reply is wanted";
        EXPECT_EQ(message->uri, "");
        EXPECT_TRUE(message->extras.empty());
    }
    // One that follows shows that the service has been told of the arrival of the last.
    say({action("Commerce Add To Cart")});
    EXPECT_TRUE(partner->nextLaunch());
    EXPECT_EQ(log.count("Send [http://tizen.org/appcontrol/operation/click_check_out]"), 1U);
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(Voice, ShowsTheChosenProductAndThenClosesTheAssistantsView)
{
    searchFor(threeProducts());

    say({item("\"2\"")});

    EXPECT_EQ(sent(), (Texts{view("ref-oat"), Close}));
    const std::optional<TestSupport::RawMessage> close = assistant->nextLaunch();
    ASSERT_TRUE(close);
    EXPECT_EQ(close->operation, "http://nuvex-da/appcontrol/operation/close_app");
    EXPECT_EQ(close->caller, ServiceId);
    EXPECT_EQ(close->id, 0U);
    EXPECT_TRUE(close->extras.empty());
}

TEST_F(Voice, SendsNothingForAPositionThatTheSearchDoesNotHave)
{
    searchFor(threeProducts());

    for (const std::string& id :
         {std::string("\"0\""), std::string("\"-1\""), std::string("\"4\""), std::string("\"second\""),
          std::string("\"\""), std::string("2"), "\"" + std::string(1'000'000, '9') + "\"",
          "\"-" + std::string(1'000'000, '9') + "\""})
        say({item(id)});

    EXPECT_EQ(sent(), Texts{});
    say({item("\"1\"")});
    EXPECT_EQ(sent(), (Texts{view("ref-whole"), Close}));
    EXPECT_EQ(errors(), Texts{});
}

TEST_F(Voice, SendsNothingForAChoiceBeforeAnySearch)
{
    say({item("\"1\"")});

    EXPECT_EQ(sent(), Texts{});
}

TEST_F(Voice, SendsNothingForAChoiceAfterASearchThatFailed)
{
    searchFor(threeProducts());
    merchant->answer(Merchant::SearchPath, {503});
    search();

    say({item("\"1\"")});

    EXPECT_EQ(sent(), Texts{});
}

TEST_F(Voice, HandlesTheCommandsOfAResultInOrderAndSkipsTheBrokenOnes)
{
    searchFor(threeProducts());

    say({action("Commerce Add To Cart"), "", "{broken", item("\"9\""),
         R"({"actionName": "Commerce Searched Item"})", item("\"1\""), item("\"2\""), action(CheckOut)});

    EXPECT_EQ(sent(), (Texts{"partner click_add_cart", view("ref-whole"), Close, view("ref-oat"), Close,
                             "partner click_check_out"}));
    EXPECT_EQ(
        errors(),
        (Texts{"VoiceControl.cpp:235 operator() error: vc_cmd_get_nlu_json() failed: [OPERATION_FAILED]",
               "VoiceControl.cpp:268 _handle_nlu_result error: "
               "ndp_response_data_parse() failed: [PARSE JSON FAILED]",
               "VoiceControl.cpp:294 _handle_nlu_result error: "
               "ndp_response_data_get_action_data() failed: [NO SUCH VALUE]"}));
}

TEST_F(Voice, DoesNotLookAtARejectedResult)
{
    EXPECT_EQ(voice->result(1, {"as spoken"}, {action(CheckOut)}), "");

    EXPECT_EQ(sent(), Texts{});
    EXPECT_EQ(log.count("Rejected event"), 1U);
    EXPECT_EQ(log.count("nlu: " + action(CheckOut)), 0U);
}

TEST_F(Voice, IgnoresAResultWithoutAText)
{
    EXPECT_EQ(voice->result(0, {}, {action(CheckOut)}), "");

    EXPECT_EQ(sent(), Texts{});
    EXPECT_EQ(log.count("==== Result cb ===="), 2U);
    EXPECT_EQ(log.count("nlu: " + action(CheckOut)), 0U);
}

TEST_F(Voice, SurvivesAnswersThatAreNoAnswers)
{
    for (const std::string& nlu :
         {std::string(1'000'000, '['), std::string(5'000'000, 'x'), std::string("null"), std::string("[]"),
          action("\\u0000"), action(std::string(1'000'000, 'a'))})
        say({nlu});

    EXPECT_EQ(sent(), Texts{});
}

TEST_F(Voice, TellsItsNameAndCommandsWheneverItBecomesReadyFromInitialized)
{
    EXPECT_EQ(voice->clientState(1), "");
    EXPECT_EQ(voice->clientState(2), "");
    EXPECT_EQ(sent(), Texts{});

    EXPECT_EQ(log.count("set command list"), 2U);
    EXPECT_EQ(voice->commands(), Texts{"#org.tizen.commerce"});
    EXPECT_EQ(voice->invocationName(), "Carvoy");
}

TEST_F(Voice, TellsNothingWhenItBecomesReadyFromElsewhere)
{
    EXPECT_EQ(voice->clientState(0), "");
    EXPECT_EQ(voice->clientState(2), "");
    EXPECT_EQ(sent(), Texts{});

    EXPECT_EQ(log.count("Previous(None) -> Current(Ready)"), 1U);
    EXPECT_EQ(log.count("set command list"), 1U);
    EXPECT_EQ(voice->commands(), Texts{});
    EXPECT_EQ(voice->invocationName(), "");
}

TEST_F(Voice, LogsEveryEventByItsName)
{
    for (int state : {2, 3, 1, 0, 9})
        EXPECT_EQ(voice->serviceState(state), "");
    EXPECT_EQ(voice->error(-49610730), "");
    EXPECT_EQ(voice->error(1), "");
    EXPECT_EQ(voice->language("ko_KR"), "");
    EXPECT_EQ(sent(), Texts{});

    for (const char* message :
         {"Previous(None) -> Current(Recording)", "Previous(Recording) -> Current(Processing)",
          "Previous(Processing) -> Current(Ready)", "Previous(Ready) -> Current(None)",
          "Previous(None) -> Current(UNKNOWN)", "==== vc error - ITERATION_END ====",
          "==== vc error - VC_ERROR_UNKNOWN ====", "Language is changed (en_US) to (ko_KR)"})
        EXPECT_EQ(log.count(message), 1U) << message;
}

TEST_F(Voice, IsHeardWhilePicturesAreOnTheirWay)
{
    ui = std::make_unique<UiPeer>();
    stock(threeProducts());
    merchant->hold("/p/whole.png");
    search();
    ASSERT_TRUE(merchant->waitForRequests("/p/whole.png"));

    say({item("\"1\"")});

    EXPECT_EQ(sent(), (Texts{view("ref-whole"), Close}));
    merchant->release("/p/whole.png");
    ui->confirm(resultMessage());
    for (const char* index : {"0", "1", "2"})
        EXPECT_EQ(ui->nextPicture().index, index);
}

// A search blocks the main loop: what is said meanwhile is about what it finds.
TEST_F(Voice, WaitsForTheSearchThatIsUnderWay)
{
    searchFor({{"Old", "/p/old.png", "", 100, {}, "ref-old"}});
    stock(threeProducts());
    merchant->hold(Merchant::SearchPath);
    search();
    ASSERT_TRUE(merchant->waitForRequests(Merchant::SearchPath, 2));

    say({item("\"2\"")});
    merchant->release(Merchant::SearchPath);

    EXPECT_EQ(sent(), (Texts{view("ref-oat"), Close}));
}

TEST_F(Voice, GoesOnWithoutThePartnerApp)
{
    searchFor(threeProducts());
    partner.reset();
    ASSERT_TRUE(TestSupport::waitForName(CARVOY_PARTNER_APP_ID, false));

    say({action(CheckOut), item("\"1\"")});

    EXPECT_TRUE(waitFor(Close));
    EXPECT_EQ(log.count("Failed to launch request"), 2U);
}

TEST_F(Voice, EndsWellWhateverStateTheRecogniserHasLeftItIn)
{
    for (const auto& [state, name] :
         std::vector<std::pair<int, std::string>>{{0, "None"}, {1, "Initialized"}, {7, "UNKNOWN"}}) {
        EXPECT_EQ(voice->clientState(state), "");
        ASSERT_TRUE(log.waitFor("Previous(Ready) -> Current(" + name + ")"));
        stopService();
        ASSERT_FALSE(errors().empty());
        EXPECT_EQ(errors().back(),
                  "VoiceControl.cpp:145 deinitVoiceControl error: vc_unprepare: INVALID_STATE");
        EXPECT_FALSE(voice->isOnBus());
        startService();
    }
}

}  // namespace

}  // namespace ServiceTest
