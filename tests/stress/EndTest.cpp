// The service ends well whatever it is doing: it is asked to at random moments, a hundred times in all.
#include "Dice.h"
#include "LivelyUi.h"
#include "Recogniser.h"
#include "ServiceWorld.h"
#include "SiteValues.h"

namespace ServiceTest {

namespace {

using TestSupport::RawPeer;

constexpr int Rounds = 25;

class TheEnd : public ServiceWorld {
  protected:
    static constexpr int Pictures = 4;

    static std::string pathOf(int picture) { return "/p/" + std::to_string(picture) + ".png"; }

    void takeLongerForPictures(int milliseconds)
    {
        std::vector<Product> products;
        for (int i = 0; i < Pictures; ++i)
            products.push_back({"Milk", pathOf(i)});
        stock(products);
        for (int i = 0; i < Pictures; ++i)
            merchant->answer(pathOf(i), pictureOf(i, milliseconds));
    }

    Answer pictureOf(int picture, int milliseconds)
    {
        Answer answer{200, pictureBytes(pathOf(picture)), "image/png"};
        answer.delay = dice.millisecondsUpTo(milliseconds);
        if (dice.onceIn(4))
            answer.status = 404;
        else if (dice.onceIn(4))
            answer.withheld = 1000;
        return answer;
    }

    /** Lets it work for a random time, in which it must not end by itself, then asks it to end. */
    void endWithin(int milliseconds)
    {
        EXPECT_FALSE(service->wait(dice.millisecondsUpTo(milliseconds)).inTime);
        stopService();
        EXPECT_EQ(service->errors(), "");
        EXPECT_EQ(pictureFiles(), std::vector<std::string>{});
    }

    void saySomething(TestSupport::Recogniser& voice)
    {
        const std::vector<std::string> nlus = {R"({"actionName": "Commerce Add To Cart"})", "{broken", "",
                                               R"({"actionName": "Commerce Searched Item",
                "actionData": {"representativeCommerceData": {"id": ")" +
                                                   std::to_string(dice.upTo(Pictures + 1)) + "\"}}}"};
        if (dice.onceIn(5))
            voice.clientState(dice.upTo(2));
        else if (dice.onceIn(5))
            voice.error(-dice.upTo(30));
        else
            voice.result(
                dice.upTo(4) / 4, {"as spoken"},
                {nlus[static_cast<std::size_t>(dice.upTo(3))], nlus[static_cast<std::size_t>(dice.upTo(3))]});
    }

    std::unique_ptr<LivelyUi> livelyUi()
    {
        return std::make_unique<LivelyUi>(static_cast<unsigned>(dice.upTo(4)));
    }

    Dice dice;
};

TEST_F(TheEnd, ComesWhilePicturesAreOnTheirWay)
{
    const auto screen = livelyUi();
    for (int round = 0; round < Rounds && !HasFailure(); ++round) {
        takeLongerForPictures(40);
        startService();
        for (int searches = dice.upTo(2); searches >= 0; --searches)
            search();
        askForResult();
        endWithin(150);
    }
}

TEST_F(TheEnd, ComesWhileASearchWaitsForItsAnswer)
{
    const auto screen = livelyUi();
    for (int round = 0; round < Rounds && !HasFailure(); ++round) {
        takeLongerForPictures(10);
        Answer answer{200, answerOf(threeProducts())};
        answer.delay = dice.millisecondsUpTo(80);
        merchant->answer(Merchant::SearchPath, answer);
        startService();
        search();
        askForResult();
        search();
        endWithin(100);
    }
}

TEST_F(TheEnd, ComesWhileSendsAreQueued)
{
    for (int round = 0; round < Rounds && !HasFailure(); ++round) {
        // Now and then there is no UI app, and what is sent fails.
        const auto screen = dice.onceIn(4) ? nullptr : livelyUi();
        takeLongerForPictures(5);
        startService();
        search();
        for (int results = dice.upTo(12); results >= 0; --results)
            askForResult();
        endWithin(200);
    }
}

TEST_F(TheEnd, ComesWhileRepliesAreUnderWay)
{
    for (int round = 0; round < Rounds && !HasFailure(); ++round) {
        auto screen = livelyUi();
        takeLongerForPictures(5);
        startService();
        for (int requests = 0; requests < 4; ++requests) {
            search();
            askForResult();
        }
        // The UI app leaves with requests unanswered: those replies are made up for it.
        EXPECT_FALSE(service->wait(dice.millisecondsUpTo(150)).inTime);
        if (dice.onceIn(2))
            screen.reset();
        endWithin(50);
    }
}

// The recogniser says what it likes, in whatever state; now and then one of the two apps is not there.
TEST_F(TheEnd, ComesWhileItIsSpokenTo)
{
    const auto screen = livelyUi();
    for (int round = 0; round < Rounds && !HasFailure(); ++round) {
        const auto partner = dice.onceIn(4) ? nullptr : std::make_unique<RawPeer>(CARVOY_PARTNER_APP_ID);
        const auto assistant = dice.onceIn(4) ? nullptr : std::make_unique<RawPeer>("org.tizen.nuvex-da");
        takeLongerForPictures(20);
        startService();
        TestSupport::Recogniser voice(ServiceId);
        search();
        for (int sentences = dice.upTo(30); sentences >= 0; --sentences)
            saySomething(voice);
        askForResult();
        endWithin(100);
    }
}

TEST_F(TheEnd, ComesAsSoonAsItHasStarted)
{
    for (int round = 0; round < Rounds && !HasFailure(); ++round) {
        startService(Until::OnBus);
        if (dice.onceIn(2))
            search();
        endWithin(3);
    }
}

}  // namespace

}  // namespace ServiceTest
