// The life of the service process: its start, its end, and what it leaves behind.
#include <signal.h>

#include "ServiceWorld.h"

namespace ServiceTest {

namespace {

using TestSupport::ChildProcess;
using Texts = std::vector<std::string>;

const Texts StartTexts = {"main.cpp:29 main info: main",
                          "Log.h:73 printVersion info: Carvoy Version: 0.0.1-5.12",
                          "main.cpp:38 main info: main----2",
                          "main.cpp:10 _create info: _create",
                          "Service.cpp:25 onCreate info: Service::onCreate",
                          "VoiceControl.cpp:52 VoiceControl debug: ",
                          "VoiceControl.cpp:82 initVoiceControl debug: ",
                          "VoiceControl.cpp:152 _vc_create_command_list debug: ==== Create Command List ====",
                          "VoiceControl.cpp:200 _vc_state_changed_cb debug: ==== State is changed ====",
                          "VoiceControl.cpp:201 _vc_state_changed_cb debug: "
                          "Previous(Initialized) -> Current(Ready)",
                          "VoiceControl.cpp:204 _vc_state_changed_cb debug: set invocation name",
                          "VoiceControl.cpp:207 _vc_state_changed_cb debug: set command list"};
const Texts EndTexts = {"main.cpp:16 _terminate info: _terminate",
                        "Service.cpp:68 onTerminate info: Service::onTerminate",
                        "VoiceControl.cpp:129 deinitVoiceControl debug: "};

Texts operator+(Texts one, const Texts& other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

class TheServiceProcess : public ServiceWorld {
  protected:
    void expectNoPictures() const { EXPECT_FALSE(std::filesystem::exists(picturesFolder())); }
};

TEST_F(TheServiceProcess, LogsItsStartAndItsEndInOrderAndNothingElse)
{
    startService();
    stopService();

    EXPECT_EQ(log.texts(), StartTexts + EndTexts);
    EXPECT_EQ(service->errors(), "");
}

TEST_F(TheServiceProcess, WritesTheSameLinesPlainToStandardOutput)
{
    startService();
    stopService();

    Texts plain;
    for (const LogLine& line : log.lines())
        plain.push_back(line.plain());
    EXPECT_EQ(linesOf(service->output()), plain);
    EXPECT_EQ(plain.front(), "[main:29] main");
}

TEST_F(TheServiceProcess, LogsItsLifeFromItsFirstThread)
{
    startService();
    stopService();

    for (const LogLine& line : log.lines())
        EXPECT_EQ(line.thread, service->pid()) << line.text();
}

TEST_F(TheServiceProcess, StartsTheStatusRecordWithATotalCountOfNoughtAndNothingElse)
{
    startService();
    stopService();

    EXPECT_EQ(status(), (StatusRecord{{}, {}, 0, {}, {}}));
    EXPECT_EQ(responseFlag(), "");
}

TEST_F(TheServiceProcess, KeepsWhatAnEarlierRunKnewOfTheLoginAndResetsTheCount)
{
    ui = std::make_unique<UiPeer>();
    stock(threeProducts());
    startService();
    search();
    resultMessage();
    stopService();
    EXPECT_EQ(status(), (StatusRecord{1, 1, 3, {}, {}}));

    startService();
    stopService();

    EXPECT_EQ(status(), (StatusRecord{1, 1, 0, {}, {}}));
}

TEST_F(TheServiceProcess, StartsWithoutItsDataStore)
{
    std::filesystem::create_directory(root + "/data-store.sqlite");

    startService();
    stopService();

    EXPECT_EQ(log.texts(), StartTexts + EndTexts);
}

TEST_F(TheServiceProcess, EndsOnAnInterruptAsOnARequestToTerminate)
{
    startService();

    service->signal(SIGINT);

    expectEnd(*service, 0);
    EXPECT_EQ(log.texts(), StartTexts + EndTexts);
}

TEST_F(TheServiceProcess, RefusesToRunBesideItself)
{
    startService();

    const auto second = runService();

    const TestSupport::ProcessEnd end = second->wait();
    EXPECT_TRUE(end.inTime);
    EXPECT_GT(end.status, 0);
    EXPECT_EQ(second->errors(),
              "org.tizen.carvoy-service: the name is taken on the session bus: the app runs already\n");
    EXPECT_EQ(
        linesOf(second->output()),
        (Texts{"[main:29] main", "[printVersion:73] Carvoy Version: 0.0.1-5.12", "[main:38] main----2"}));
}

TEST_F(TheServiceProcess, DoesNotStartWithoutABus)
{
    const auto lonely = runService({{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + root + "/no-bus"}});

    const TestSupport::ProcessEnd end = lonely->wait();
    EXPECT_TRUE(end.inTime);
    EXPECT_GT(end.status, 0);
    EXPECT_EQ(lonely->errors(), "org.tizen.carvoy-service: the session bus cannot be reached\n");
    EXPECT_EQ(log.count("_create"), 0U);
    EXPECT_EQ(log.count("_terminate"), 0U);
}

TEST_F(TheServiceProcess, EndsWithAFailureWhenItsBusGoesAway)
{
    startService();
    client.reset();

    bus.kill();

    const TestSupport::ProcessEnd end = service->wait();
    EXPECT_TRUE(end.inTime);
    EXPECT_GT(end.status, 0);
    EXPECT_EQ(service->errors(), "org.tizen.carvoy-service: the session bus went away\n");
    EXPECT_EQ(log.texts(), StartTexts + EndTexts);
}

TEST_F(TheServiceProcess, LeavesNoPictureBehind)
{
    ui = std::make_unique<UiPeer>();
    stock(threeProducts());
    startService();
    search();
    ui->confirm(resultMessage());
    for (int i = 0; i < 3; ++i)
        ui->nextPicture();
    EXPECT_EQ(pictureFiles().size(), 3U);

    stopService();

    expectNoPictures();
    EXPECT_EQ(service->errors(), "");
}

TEST_F(TheServiceProcess, WipesThePicturesOfARunThatWasKilledAtItsFirstRequest)
{
    ui = std::make_unique<UiPeer>();
    stock(threeProducts());
    startService();
    search();
    ui->confirm(resultMessage());
    ui->nextPicture();
    service->signal(SIGKILL);
    service->wait();
    ASSERT_FALSE(pictureFiles().empty());

    startService();
    resultMessage();

    EXPECT_EQ(pictureFiles(), Texts{});
}

// Waits for the picture's own limit of seven seconds.
TEST_F(TheServiceProcess, EndsWhenThePictureOnItsWayHasRunOutOfTime)
{
    stock(threeProducts());
    merchant->hold("/p/whole.png");
    startService();
    search();
    ASSERT_TRUE(merchant->waitForRequests("/p/whole.png"));

    stopService();

    EXPECT_EQ(log.count("Service::onTerminate"), 1U);
    EXPECT_EQ(merchant->requests("/p/oat.jpg").size(), 0U);
    expectNoPictures();
    EXPECT_EQ(service->errors(), "");
}

}  // namespace

}  // namespace ServiceTest
