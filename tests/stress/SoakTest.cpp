// Thousands of searches of all kinds in one process: at rest it needs what it needed after the first hundred.
#include <deque>
#include <fstream>
#include <iomanip>

#include "BridgeProgram.h"
#include "Dice.h"
#include "VoiceWorld.h"

namespace ServiceTest {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using TestSupport::RawMessage;
using Texts = std::vector<std::string>;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IsMemoryOurOwn = false;  // what a sanitizer keeps is not a leak, and it looks for those itself
#else
constexpr bool IsMemoryOurOwn = true;
#endif

constexpr int WarmUp = 100;
constexpr int Pause = 500;  // searches between two looks at it

// What the allocator may hold on to more than it did at the first look: it serves the threads from several
// heaps, and does not give back what lies below a block in use.
constexpr long Slack = 3'000;  // KiB

int fromEnvironment(const char* name, int otherwise)
{
    const char* text = std::getenv(name);
    return text ? std::stoi(text) : otherwise;
}

/** What the service needs. */
struct Footprint {
    long resident = 0;  // KiB
    std::size_t files = 0;
    std::size_t threads = 0;
};

std::ostream& operator<<(std::ostream& stream, const Footprint& footprint)
{
    return stream << footprint.resident << " KiB, " << footprint.files << " open files, " << footprint.threads
                  << " threads";
}

class ASoak : public VoiceWorld {
  protected:
    void SetUp() override
    {
        VoiceWorld::SetUp();
        ui = std::make_unique<UiPeer>();
        bridge_ = std::make_unique<TestSupport::BridgeProgram>(root, tokenFile());
        startService(Until::ReadyForVoice, bridge_->variables());
        voice = std::make_unique<TestSupport::Recogniser>(ServiceId);
        resultMessage();
        threadsAtRest_ = threads();
        begin_ = Clock::now();
    }

    /** One search, and what an app, a shopper and the UI app may do about it; it may still be at work
     * afterwards. */
    void goOn()
    {
        ++searches_;
        EXPECT_EQ(search(someTerm(), dice_.onceIn(4) ? "greengrocer" : "freshmart"), "");
        if (dice_.onceIn(3))
            return;  // the next one follows at once
        if (dice_.onceIn(12))
            speak();
        if (dice_.onceIn(2))
            lookAtTheLists();
    }

    /** Waits until all is done, by a search whose pictures come last, and looks at the process. */
    Footprint rest()
    {
        answerAll();
        search("milk");
        EXPECT_EQ(askForResult(), "");
        const RawMessage result = nextResult();
        EXPECT_EQ(textOf(result, "key_search_term"), "milk");
        EXPECT_EQ(textOf(result, "key_total_num_of_products"), "6");
        EXPECT_EQ(ui->confirm(result), "");
        for (int picture = 0; picture < 6; ++picture)
            EXPECT_EQ(ui->nextPicture().index, std::to_string(picture));
        EXPECT_TRUE(waitForThreads(threadsAtRest_));
        return look();
    }

    void tell(const Footprint& footprint) const
    {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - begin_).count();
        std::cout << std::setw(5) << searches_ << " searches, " << std::setw(4) << seconds
                  << " s: " << footprint << std::endl;
    }

    bool isOver() const
    {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - begin_).count();
        return HasFailure() || searches_ >= most_ || (longest_ > 0 && seconds >= longest_);
    }

    int searches() const { return searches_; }

  private:
    std::string someTerm()
    {
        static const Texts words = {"milk",  "bread", "butter",      "cheese", "apples", "berry",
                                    "juice", "crème", "chocolate",   "egg",    "",       "organic",
                                    "green", "fresh", "granny & co", "100%",   "우유",   "no such thing"};
        std::string term = words[at(words.size())];
        if (dice_.onceIn(10))
            term += " " + std::string(at(2000), 'x');
        if (dice_.onceIn(3))
            term += " " + someTrouble();
        return term;
    }

    std::string someTrouble()
    {
        static const Texts troubles = {"~delay=30ms",
                                       "~status=503",
                                       "~status=401",
                                       "~truncate",
                                       "~reset",
                                       "~garbage",
                                       "~empty",
                                       "~html",
                                       "~odd-types",
                                       "~none",
                                       "~deep",
                                       "~big=200KB",
                                       "~slow-images=200ms",
                                       "~image-404",
                                       "~image-404=2",
                                       "~image-status=500",
                                       "~image-redirect",
                                       "~no-such-trouble"};
        // Its picture keeps a thread for seven seconds.
        return dice_.onceIn(15) ? "~image-stall=1" : troubles[at(troubles.size())];
    }

    void speak()
    {
        static const Texts answers = {Nlu::item("\"1\""),
                                      Nlu::item("\"99\""),
                                      Nlu::action("Show Cart Success"),
                                      Nlu::action("Commerce Add To Cart"),
                                      "{broken",
                                      ""};
        voice->result(dice_.upTo(1), {"as spoken"},
                      {answers[at(answers.size())], answers[at(answers.size())]});
    }

    /** The UI app gets the lists, and answers them, yes or no, at once or later. */
    void lookAtTheLists()
    {
        EXPECT_EQ(askForResult(), "");
        unanswered_.push_back(nextResult());
        if (!dice_.onceIn(4))
            answerAll();
    }

    void answerAll()
    {
        for (const RawMessage& result : unanswered_)
            dice_.onceIn(6) ? ui->refuse(result) : ui->confirm(result);
        unanswered_.clear();
    }

    /** What comes before it are pictures. */
    RawMessage nextResult()
    {
        for (;;) {
            RawMessage message = ui->next();
            if (message.operation == serviceOperation("result"))
                return message;
        }
    }

    Footprint look() const
    {
        Footprint footprint;
        const std::string process = "/proc/" + std::to_string(service->pid());
        std::ifstream status(process + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.compare(0, 6, "VmRSS:") == 0)
                footprint.resident = std::stol(line.substr(6));
        }
        footprint.files =
            static_cast<std::size_t>(std::distance(fs::directory_iterator(process + "/fd"), {}));
        footprint.threads = threads();
        return footprint;
    }

    std::size_t at(std::size_t size)
    {
        return static_cast<std::size_t>(dice_.upTo(static_cast<int>(size) - 1));
    }

    const int most_ = fromEnvironment("CARVOY_SOAK_SEARCHES", 5000);
    const int longest_ = fromEnvironment("CARVOY_SOAK_SECONDS", 0);
    Dice dice_;
    std::unique_ptr<TestSupport::BridgeProgram> bridge_;
    std::deque<RawMessage> unanswered_;
    std::size_t threadsAtRest_ = 0;
    int searches_ = 0;
    Clock::time_point begin_;
};

TEST_F(ASoak, NeedsNoMoreThanAfterTheFirstHundredSearches)
{
    while (searches() < WarmUp && !HasFailure())
        goOn();
    const Footprint first = rest();
    tell(first);
    while (!isOver()) {
        goOn();
        if (searches() % Pause == 0)
            tell(rest());
    }
    const Footprint last = rest();
    tell(last);

    EXPECT_EQ(last.files, first.files);
    EXPECT_EQ(last.threads, first.threads);
    if (IsMemoryOurOwn) {
        EXPECT_LE(last.resident, first.resident + Slack);
    }
    stopService();
    EXPECT_EQ(service->errors(), "");
}

}  // namespace

}  // namespace ServiceTest
