#include "CardStore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "ScratchRoot.h"

namespace {

std::filesystem::path freshFile(const std::string& name)
{
    return std::filesystem::path(TestSupport::ScratchRoot::file(name)) / "card.json";
}

Ui::CardContent cardOf(int sequence, std::size_t products)
{
    Ui::CardContent card;
    card.sequence = sequence;
    card.products.assign(products, Ui::Product{"Whole Milk", "1 gal", "", "", "$4.49", "v1", ""});
    return card;
}

TEST(ACardStore, ReadsWhatItWrote)
{
    const Ui::CardStore store(freshFile("round-trip"));
    store.write(cardOf(7, 2));
    const auto card = store.read();
    ASSERT_TRUE(card);
    EXPECT_EQ(card->sequence, 7);
    EXPECT_EQ(card->products.size(), 2U);
}

TEST(ACardStore, WithoutAFileReadsNothing)
{
    EXPECT_FALSE(Ui::CardStore(freshFile("nothing")).read());
}

TEST(ACardStore, ReadsNothingFromADamagedFile)
{
    const std::filesystem::path file = freshFile("damaged");
    std::filesystem::create_directories(file.parent_path());
    for (const char* text : {"", "{", "[]", "{\"sequence\": \"one\"}", "null"}) {
        std::ofstream(file) << text;
        EXPECT_FALSE(Ui::CardStore(file).read()) << text;
    }
}

TEST(ACardStore, SaysThatItCannotWrite)
{
    const std::filesystem::path file = freshFile("blocked");
    std::ofstream(file.parent_path()) << "a file where the folder should be";
    EXPECT_THROW(Ui::CardStore(file).write({}), std::runtime_error);
}

TEST(ACardStore, NeverShowsAReaderHalfACard)
{
    const std::filesystem::path file = freshFile("whole");
    const Ui::CardStore store(file);
    store.write(cardOf(0, 50));
    std::atomic<bool> writing{true};
    std::thread writer([&] {
        for (int i = 1; i <= 200; ++i) {
            store.write(cardOf(i, 50));
        }
        writing = false;
    });
    while (writing) {
        const auto card = Ui::CardStore(file).read();
        ASSERT_TRUE(card);
        ASSERT_EQ(card->products.size(), 50U);
    }
    writer.join();
    EXPECT_EQ(store.read()->sequence, 200);
}

}  // namespace
