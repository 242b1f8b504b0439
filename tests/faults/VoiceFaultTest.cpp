// Voice control that refuses, call by call: what the service says, and that it searches all the same.
#include <algorithm>
#include <ostream>
#include <sstream>

#include "FaultControl.h"
#include "VoiceWorld.h"

namespace ServiceTest {

namespace {

/** What is left of voice. */
enum class Left {
    Nothing,   // no client
    Deaf,      // a client that is not ready and does not hear results
    Unnamed,   // a client that is not ready; results that come all the same are heard
    Ready,     // all of it
    NoName,    // ready, without its name
    NoCommand  // ready, without its command
};

struct Fault {
    const char* functions;  // that refuse, with commas between them
    Left left;
    std::vector<std::string> start;  // the errors of the start, each as "line text"
    std::vector<std::string> end;    // the errors of the end
};

void PrintTo(const Fault& fault, std::ostream* out)
{
    *out << fault.functions;
}

std::string nameOf(const testing::TestParamInfo<Fault>& each)
{
    std::string name = each.param.functions;
    std::replace(name.begin(), name.end(), ',', '_');
    return name;
}

const std::string NoList = "142 vc_cmd_list_destroy: INVALID_PARAMETER";
const std::string NotReady = "145 vc_unprepare: INVALID_STATE";
const std::string NotThere = "147 vc_deinitialize: INVALID_STATE";
const std::string ListFailed = "121 [ERROR] Fail to create command list";

class VoiceFault : public VoiceWorld, public testing::WithParamInterface<Fault> {
  protected:
    void SetUp() override
    {
        VoiceWorld::SetUp();
        ui = std::make_unique<UiPeer>();
        stock(threeProducts());
        std::istringstream functions(GetParam().functions);
        for (std::string function; std::getline(functions, function, ',');)
            faults.fail(function, 1);
        startService(Until::OnBus, faults.variables(), FAULTY_SERVICE);
        voice = std::make_unique<TestSupport::Recogniser>(ServiceId);
    }

    bool becomesReady() const { return GetParam().left >= Left::Ready; }

    /** Waits until what the start began is over. */
    void waitForTheStart()
    {
        if (becomesReady()) {
            ASSERT_TRUE(log.waitFor("Previous(Initialized) -> Current(Ready)"));
        }
        resultMessage();
    }

    /** The errors of voice control behind the first `skipped`. */
    Texts errors(std::size_t skipped = 0) const
    {
        Texts texts;
        for (const LogLine& line : log.lines()) {
            if (line.level == "error" && line.file == "VoiceControl.cpp")
                texts.push_back(std::to_string(line.line) + " " + line.message);
        }
        texts.erase(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(skipped));
        return texts;
    }

    Faults::FaultControl faults{root + "/faults"};
};

TEST_P(VoiceFault, IsLoggedAndTheServiceSearchesAndEnds)
{
    waitForTheStart();
    EXPECT_EQ(search(), "");
    EXPECT_EQ(listOf(resultMessage(), "key_product_names").size(), 3U);
    EXPECT_EQ(errors(), GetParam().start);

    stopService();
    EXPECT_EQ(errors(GetParam().start.size()), GetParam().end);
}

TEST_P(VoiceFault, ShowsWhatIsLeftOfVoice)
{
    waitForTheStart();
    const Left left = GetParam().left;
    ASSERT_EQ(voice->isOnBus(), left != Left::Nothing);
    if (left != Left::Nothing) {
        const bool isNamed = left == Left::Ready || left == Left::NoCommand;
        const bool hasCommand = left == Left::Ready || left == Left::NoName;
        EXPECT_EQ(voice->state(), becomesReady() ? 2 : 1);
        EXPECT_EQ(voice->invocationName(), isNamed ? "Carvoy" : "");
        EXPECT_EQ(voice->commands(), hasCommand ? Texts{"#org.tizen.commerce"} : Texts{});
    }
    EXPECT_EQ(log.count("==== State is changed ===="), becomesReady() ? 1U : 0U);
    stopService();
}

TEST_P(VoiceFault, LeavesTheServiceHearingWhereItsCallbackIsThere)
{
    waitForTheStart();
    const std::string answer = voice->result(0, {"as spoken"}, {Nlu::action("Commerce Check Out")});
    switch (GetParam().left) {
        case Left::Nothing:
            EXPECT_EQ(answer, "org.freedesktop.DBus.Error.UnknownObject");
            break;
        case Left::Deaf:
            EXPECT_EQ(answer, "");
            resultMessage();
            EXPECT_EQ(log.count("==== Result cb ===="), 0U);
            break;
        default:
            EXPECT_EQ(answer, "");
            EXPECT_EQ(sent(), Texts{"partner click_check_out"});
            break;
    }
    stopService();
}

INSTANTIATE_TEST_SUITE_P(
    OfTheStart, VoiceFault,
    testing::Values(
        Fault{
            "vc_initialize", Left::Nothing, {"86 [ERROR] Fail to initialize"}, {NoList, NotReady, NotThere}},
        Fault{"vc_set_state_changed_cb",
              Left::Deaf,
              {"92 [ERROR] Fail to set state changed cb"},
              {NoList, NotReady}},
        Fault{"vc_set_service_state_changed_cb",
              Left::Deaf,
              {"97 [ERROR] Fail to set service state changed cb"},
              {NoList, NotReady}},
        Fault{"vc_set_result_cb", Left::Deaf, {"102 [ERROR] Fail to set result cb"}, {NoList, NotReady}},
        Fault{"vc_set_error_cb", Left::Unnamed, {"106 [ERROR] Fail to set error cb"}, {NoList, NotReady}},
        Fault{"vc_set_current_language_changed_cb",
              Left::Unnamed,
              {"111 [ERROR] Fail to set language changed cb"},
              {NoList, NotReady}},
        Fault{"vc_prepare", Left::Unnamed, {"116 [ERROR] Fail to prepare"}, {NoList, NotReady}},
        Fault{"vc_set_invocation_name", Left::NoName, {}, {}},
        Fault{"vc_set_command_list", Left::NoCommand, {}, {}}),
    nameOf);

// The list is handed over as far as it got.
INSTANTIATE_TEST_SUITE_P(
    OfTheCommandList, VoiceFault,
    testing::Values(
        Fault{"vc_cmd_list_create",
              Left::NoCommand,
              {"157 [ERROR] Fail to cmd list create", ListFailed},
              {NoList}},
        Fault{"vc_cmd_create", Left::NoCommand, {"165 [ERROR] Fail to cmd create", ListFailed}, {}},
        Fault{"vc_cmd_set_command", Left::NoCommand, {"169 [ERROR] Fail to set command", ListFailed}, {}},
        Fault{"vc_cmd_set_type", Left::NoCommand, {"174 [ERROR] Fail to set type", ListFailed}, {}},
        Fault{"vc_cmd_set_format", Left::NoCommand, {"179 [ERROR] Fail to set format", ListFailed}, {}},
        Fault{"vc_cmd_list_add", Left::NoCommand, {"184 [ERROR] Fail to list add", ListFailed}, {}},
        Fault{"vc_cmd_set_type,vc_cmd_destroy",
              Left::NoCommand,
              {"174 [ERROR] Fail to set type", ListFailed},
              {}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    OfTheEnd, VoiceFault,
    testing::Values(
        Fault{"vc_unset_command_list", Left::Ready, {}, {}},
        Fault{"vc_unset_state_changed_cb", Left::Ready, {}, {}},
        Fault{"vc_unset_service_state_changed_cb", Left::Ready, {}, {}},
        Fault{"vc_unset_result_cb", Left::Ready, {}, {}},
        Fault{"vc_unset_current_language_changed_cb", Left::Ready, {}, {}},
        Fault{"vc_unset_error_cb", Left::Ready, {}, {}},
        Fault{"vc_cmd_list_destroy", Left::Ready, {}, {"142 vc_cmd_list_destroy: OPERATION_REJECTED"}},
        Fault{"vc_unprepare", Left::Ready, {}, {"145 vc_unprepare: OPERATION_REJECTED"}},
        Fault{"vc_deinitialize", Left::Ready, {}, {"147 vc_deinitialize: OPERATION_REJECTED"}},
        Fault{"vc_cmd_list_destroy,vc_unprepare,vc_deinitialize",
              Left::Ready,
              {},
              {"142 vc_cmd_list_destroy: OPERATION_REJECTED", "145 vc_unprepare: OPERATION_REJECTED",
               "147 vc_deinitialize: OPERATION_REJECTED"}}),
    nameOf);

}  // namespace

}  // namespace ServiceTest
