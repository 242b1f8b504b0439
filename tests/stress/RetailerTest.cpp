// Searches at the retailer that follow each other faster than their pictures, whose threads go on with what
// the next search has found.
#include <map>

#include "Dice.h"
#include "RetailerWorld.h"

namespace ServiceTest {

namespace {

using TestSupport::RawMessage;

constexpr int Searches = 60;
constexpr int Products = 6;  // of the last search; the others have fewer, or none

class AStormAtTheRetailer : public RetailerWorld {
  protected:
    void SetUp() override
    {
        RetailerWorld::SetUp();
        startRetailer();
    }

    static std::string pathOf(const std::string& term, int position)
    {
        return "/" + term + "/" + std::to_string(position) + ".png";
    }

    /** Every product has a picture of its own, and every second one a badge; they take their time. */
    void stockFor(const std::string& term, int products)
    {
        std::vector<Item> items;
        for (int i = 0; i < products; ++i)
            items.push_back({term, pathOf(term, i), "1000", "", "", i % 2 == 0 ? "90" : ""});
        stock(items);
        for (int i = 0; i < products; ++i)
            retailer->answer(pathOf(term, i), pictureOf(pathOf(term, i)));
    }

    Answer pictureOf(const std::string& path)
    {
        Answer answer{200, pictureBytes(path), "image/png"};
        answer.delay = dice.millisecondsUpTo(30);
        return answer;
    }

    /** Returns the number of results that were asked for. */
    int blow()
    {
        int results = 0;
        for (int number = 0; number < Searches; ++number) {
            const std::string term = "search-" + std::to_string(number);
            stockFor(term, dice.upTo(Products - 1));
            EXPECT_EQ(search(term), "");
            if (dice.onceIn(3)) {
                EXPECT_EQ(ask("result"), "");
                ++results;
            }
        }
        return results;
    }

    /** The next result; the pictures before it are those of the storm. */
    RawMessage nextResult()
    {
        for (;;) {
            RawMessage message = ui->next();
            if (message.operation == serviceOperation("result"))
                return message;
        }
    }

    Dice dice;
};

TEST_F(AStormAtTheRetailer, LeavesTheLastSearchEachOfItsOwnPicturesOnce)
{
    for (int results = blow(); results > 0; --results)
        EXPECT_EQ(ui->confirm(nextResult()), "");
    stockFor("last", Products);
    search("last");
    ask("result");
    const RawMessage result = nextResult();
    EXPECT_EQ(textOf(result, "key_search_term"), "last");
    EXPECT_EQ(ui->confirm(result), "");

    std::map<std::string, int> seen;
    for (int i = 0; i < Products + Products / 2; ++i) {
        const Picture picture = ui->nextRetailerPicture();
        const bool isBadge = picture.type == "2";
        const std::string bytes = isBadge ? "90" : pathOf("last", std::stoi(picture.index));
        EXPECT_EQ(picture.path, picturesFolder() + "/" + std::to_string(std::stoi(picture.index) + 1) +
                                    picture.type + ".png");
        EXPECT_TRUE(contentOf(picture.path) == pictureBytes(bytes)) << picture.path;
        EXPECT_EQ(++seen[picture.path], 1) << picture.path;
    }
    waitForPictures();
    EXPECT_EQ(textOf(resultMessage(), "key_search_term"), "last") << "no picture came again";
    EXPECT_EQ(pictureFiles().size(), seen.size());
    stopService();
    EXPECT_EQ(service->errors(), "");
}

}  // namespace

}  // namespace ServiceTest
