#include "JsonFile.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "CardJson.h"
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

std::optional<Ui::CardContent> cardIn(const std::filesystem::path& file)
{
    return Appliance::readJsonFile(file, Ui::cardFromJson);
}

const char CardOfAnUnknownState[] =
    R"({"sequence": 1, "results": 1, "state": "shwon", "merchant": "", "term": "",
    "total": 0, "products": [], "messages": []})";

TEST(AJsonFile, IsReadAsItWasWritten)
{
    const std::filesystem::path file = freshFile("round-trip");
    Appliance::replaceJsonFile(file, Ui::toJson(cardOf(7, 2)));
    const auto card = cardIn(file);
    ASSERT_TRUE(card);
    EXPECT_EQ(card->sequence, 7);
    EXPECT_EQ(card->products.size(), 2U);
}

TEST(AJsonFile, ThatIsNotThereReadsAsNothing)
{
    EXPECT_FALSE(cardIn(freshFile("nothing")));
    EXPECT_FALSE(Appliance::readJsonFile(freshFile("nothing")));
}

TEST(AJsonFile, ThatIsDamagedReadsAsNothing)
{
    const std::filesystem::path file = freshFile("damaged");
    std::filesystem::create_directories(file.parent_path());
    for (const char* text : {"", "{", "[]", "{\"sequence\": \"one\"}", "null", CardOfAnUnknownState}) {
        std::ofstream(file) << text;
        EXPECT_FALSE(cardIn(file)) << text;
    }
}

TEST(AJsonFile, ThatCannotBeWrittenIsToldOf)
{
    const std::filesystem::path file = freshFile("blocked");
    std::ofstream(file.parent_path()) << "a file where the folder should be";
    EXPECT_THROW(Appliance::replaceJsonFile(file, {}), std::runtime_error);
}

TEST(AJsonFile, HoldsAlsoTextsThatAreNotUtf8)
{
    const std::filesystem::path file = freshFile("bytes");
    Appliance::replaceJsonFile(file, {{"text", "a\xFF"}});
    EXPECT_EQ((*Appliance::readJsonFile(file))["text"], "a\xEF\xBF\xBD");
}

TEST(AJsonFile, NeverShowsAReaderHalfOfIt)
{
    const std::filesystem::path file = freshFile("whole");
    Appliance::replaceJsonFile(file, Ui::toJson(cardOf(0, 50)));
    std::atomic<bool> writing{true};
    std::thread writer([&] {
        for (int i = 1; i <= 200; ++i) {
            Appliance::replaceJsonFile(file, Ui::toJson(cardOf(i, 50)));
        }
        writing = false;
    });
    while (writing) {
        const auto card = cardIn(file);
        ASSERT_TRUE(card);
        ASSERT_EQ(card->products.size(), 50U);
    }
    writer.join();
    EXPECT_EQ(cardIn(file)->sequence, 200);
}

}  // namespace
