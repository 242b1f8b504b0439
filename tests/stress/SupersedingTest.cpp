// Searches that follow each other faster than their pictures.
#include "Dice.h"
#include "ServiceWorld.h"

namespace ServiceTest {

namespace {

using TestSupport::RawMessage;

constexpr int Searches = 100;
constexpr int Pictures = 3;
constexpr int SearchesForEachResult = 3;

std::string termOf(int number)
{
    return "search-" + std::to_string(number);
}

std::string pathOf(const std::string& term, int picture)
{
    return "/" + term + "/" + std::to_string(picture) + ".png";
}

std::string bytesOf(const std::string& term, int picture)
{
    return pathOf(term, picture) + std::string(20'000, '.');
}

std::string answerFor(const std::string& term)
{
    std::vector<Product> products;
    for (int i = 0; i < Pictures; ++i)
        products.push_back({term, pathOf(term, i)});
    return answerOf(products);
}

std::string termIn(const Asked& asked)
{
    const std::string key = "query=";
    const std::size_t begin = asked.target.find(key) + key.size();
    return asked.target.substr(begin, asked.target.find('&', begin) - begin);
}

class AStormOfSearches : public ServiceWorld {
  protected:
    void SetUp() override
    {
        ui = std::make_unique<UiPeer>();
        merchant->script(Merchant::SearchPath, [](const Asked& asked) {
            return Answer{200, answerFor(termIn(asked))};
        });
        for (int number = 0; number <= Searches; ++number)
            stockPictures(termOf(number));
        startService();
        resultMessage();
        atRest = threads();
    }

    void stockPictures(const std::string& term)
    {
        for (int i = 0; i < Pictures; ++i) {
            Answer answer{200, bytesOf(term, i), "image/png"};
            answer.delay = dice.millisecondsUpTo(25);
            merchant->answer(pathOf(term, i), answer);
        }
    }

    /** Returns the number of results that were asked for. */
    int blow()
    {
        int results = 0;
        for (int number = 0; number < Searches; ++number) {
            EXPECT_EQ(search(termOf(number)), "");
            if (number % SearchesForEachResult == 1) {
                EXPECT_EQ(askForResult(), "");
                ++results;
            }
        }
        return results;
    }

    /** Confirms the results of the storm; its pictures come as they may, but each belongs to a product. */
    void confirm(int results)
    {
        while (results > 0) {
            const RawMessage message = ui->next();
            if (message.operation == serviceOperation("result")) {
                EXPECT_EQ(ui->confirm(message), "");
                --results;
            } else {
                expectPlausible(message);
            }
        }
    }

    void expectPlausible(const RawMessage& picture)
    {
        const int index = std::stoi(textOf(picture, "key_product_image_num"));
        EXPECT_LT(index, Pictures);
        EXPECT_EQ(textOf(picture, "key_product_image_path"), fileOf(index));
    }

    /** The next result; pictures that were sent before it are the storm's. */
    RawMessage nextResultAfterPictures()
    {
        for (;;) {
            RawMessage message = ui->next();
            if (message.operation == serviceOperation("result"))
                return message;
            expectPlausible(message);
        }
    }

    std::string fileOf(int index) const
    {
        return picturesFolder() + "/" + std::to_string(index + 1) + ".png";
    }

    Dice dice;
    std::size_t atRest = 0;
};

TEST_F(AStormOfSearches, LeavesTheLastSearchItsOwnPicturesAndNoOther)
{
    confirm(blow());
    const std::string last = termOf(Searches);

    search(last);
    askForResult();
    const RawMessage result = nextResultAfterPictures();
    EXPECT_EQ(textOf(result, "key_search_term"), last);
    EXPECT_EQ(listOf(result, "key_product_names"), std::vector<std::string>(Pictures, last));
    EXPECT_EQ(ui->confirm(result), "");

    for (int i = 0; i < Pictures; ++i) {
        const Picture picture = ui->nextPicture();
        EXPECT_EQ(picture.index, std::to_string(i));
        EXPECT_EQ(picture.path, fileOf(i));
        EXPECT_TRUE(contentOf(picture.path) == bytesOf(last, i)) << picture.path;
    }
    EXPECT_TRUE(waitForThreads(atRest));
    resultMessage();
    EXPECT_EQ(pictureFiles(), (std::vector<std::string>{"1.png", "2.png", "3.png"}));
    for (int i = 0; i < Pictures; ++i)
        EXPECT_TRUE(contentOf(fileOf(i)) == bytesOf(last, i)) << fileOf(i);
    EXPECT_EQ(status(), (StatusRecord{1, 1, Pictures, {}, {}}));
    stopService();
    EXPECT_EQ(service->errors(), "");
}

}  // namespace

}  // namespace ServiceTest
