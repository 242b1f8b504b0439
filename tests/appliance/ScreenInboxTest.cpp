#include "Inbox.h"

#include <Ecore.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Patience.h"

namespace {

using Screen::Command;
using Screen::Inbox;
using Screen::SayCommand;
using Words = std::vector<std::string>;

Command saying(const std::string& sentence)
{
    return SayCommand{sentence};
}

class AnInbox : public testing::Test {
  protected:
    AnInbox()
    {
        ecore_app_no_system_modules();
        ecore_init();
        open();
    }

    ~AnInbox() override
    {
        inbox_.reset();
        ecore_shutdown();
    }

    void open()
    {
        inbox_ = std::make_unique<Inbox>([this](const Command& command) {
            threads_.push_back(std::this_thread::get_id());
            said_.push_back(std::get<SayCommand>(command).sentence);
        });
    }

    bool say(const std::string& sentence) { return inbox_->put(saying(sentence)); }

    bool waitForWords(std::size_t count)
    {
        bool isTimeUp = false;
        const std::chrono::duration<double> limit = TestSupport::Patience;
        Ecore_Timer* timer = ecore_timer_add(limit.count(), giveUp, &isTimeUp);
        while (said_.size() < count && !isTimeUp) {
            ecore_main_loop_iterate_may_block(EINA_TRUE);
        }
        isTimeUp ? nullptr : ecore_timer_del(timer);
        return !isTimeUp;
    }

    Words saidBy(char name) const
    {
        Words of;
        std::copy_if(said_.begin(), said_.end(), std::back_inserter(of),
                     [name](const std::string& word) { return word[0] == name; });
        return of;
    }

    static Eina_Bool giveUp(void* isTimeUp)
    {
        *static_cast<bool*>(isTimeUp) = true;
        return ECORE_CALLBACK_CANCEL;
    }

    Words said_;
    std::vector<std::thread::id> threads_;
    std::unique_ptr<Inbox> inbox_;
};

TEST_F(AnInbox, HandsOutInTheOrderOfArrivalOnTheMainLoop)
{
    Words sent;
    std::thread another([&] {
        for (int i = 0; i < 10; ++i) {
            sent.push_back(std::to_string(i));
            EXPECT_TRUE(say(sent.back()));
        }
    });
    another.join();
    EXPECT_TRUE(said_.empty()) << "the loop has not run yet";
    ASSERT_TRUE(waitForWords(10));
    EXPECT_EQ(said_, sent);
    EXPECT_EQ(threads_, std::vector<std::thread::id>(10, std::this_thread::get_id()));
}

TEST_F(AnInbox, TakesNoMoreThanMayWait)
{
    Words sent;
    for (std::size_t i = 0; i < Inbox::Waiting; ++i) {
        sent.push_back(std::to_string(i));
        ASSERT_TRUE(say(sent.back()));
    }
    EXPECT_EQ(sent.size(), 64U);
    EXPECT_FALSE(say("one too many"));
    ASSERT_TRUE(waitForWords(sent.size()));
    sent.emplace_back("there is room again");
    EXPECT_TRUE(say(sent.back()));
    ASSERT_TRUE(waitForWords(sent.size()));
    EXPECT_EQ(said_, sent);
}

TEST_F(AnInbox, TakesWhatComesWhileItHandsOut)
{
    inbox_ = std::make_unique<Inbox>([this](const Command& command) {
        said_.push_back(std::get<SayCommand>(command).sentence);
        if (said_.size() == 1) {
            EXPECT_TRUE(say("third"));
        }
    });
    EXPECT_TRUE(say("first"));
    EXPECT_TRUE(say("second"));
    ASSERT_TRUE(waitForWords(3));
    EXPECT_EQ(said_, (Words{"first", "second", "third"}));
}

TEST_F(AnInbox, DropsWhatWaitsWhenItIsDestroyed)
{
    EXPECT_TRUE(say("dropped"));
    inbox_.reset();
    open();
    EXPECT_TRUE(say("taken"));
    ASSERT_TRUE(waitForWords(1));
    EXPECT_EQ(said_, Words{"taken"});
}

TEST_F(AnInbox, KeepsTheOrderOfEachOfManyThreads)
{
    constexpr std::size_t wordsEach = 500;
    const std::string names = "abcd";
    std::atomic<bool> isOver{false};
    std::vector<std::thread> threads;
    for (const char name : names) {
        threads.emplace_back([this, name, &isOver] {
            // Refused while too many wait: the main loop makes room.
            for (std::size_t word = 0; word < wordsEach && !isOver;) {
                word += say(name + std::to_string(word)) ? 1 : 0;
            }
        });
    }
    EXPECT_TRUE(waitForWords(names.size() * wordsEach));
    isOver = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const char name : names) {
        const Words of = saidBy(name);
        ASSERT_EQ(of.size(), wordsEach);
        for (std::size_t word = 0; word < wordsEach; ++word) {
            ASSERT_EQ(of[word], name + std::to_string(word));
        }
    }
}

}  // namespace
