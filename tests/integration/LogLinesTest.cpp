// The fixed log statements as they come out of a running service.
#include <algorithm>
#include <filesystem>
#include <set>

#include "VoiceWorld.h"

namespace ServiceTest {

namespace {

namespace fs = std::filesystem;

/** "main.cpp:29 main": where a statement stands. */
using Place = std::string;

Place placeOf(const LogLine& line)
{
    return line.file + ":" + std::to_string(line.line) + " " + line.function;
}

std::vector<std::string> fieldsOf(const std::string& row)
{
    std::vector<std::string> fields;
    std::size_t begin = 0;
    for (std::size_t comma = row.find(','); comma != std::string::npos; comma = row.find(',', begin)) {
        fields.push_back(row.substr(begin, comma - begin));
        begin = comma + 1;
    }
    fields.push_back(row.substr(begin));
    return fields;
}

struct Row {
    Place place;
    std::vector<std::string> rest;  // the fields behind the place
};

std::vector<Row> readTable(const std::string& name)
{
    std::vector<Row> rows;
    for (const std::string& line : linesOf(contentOf(std::string(TEST_DATA) + "/" + name))) {
        const std::vector<std::string> fields = fieldsOf(line);
        rows.push_back(
            {fields.at(0) + ":" + fields.at(2) + " " + fields.at(1), {fields.begin() + 3, fields.end()}});
    }
    rows.erase(rows.begin());
    return rows;
}

/** The text up to the first conversion of its format. */
std::string literalOf(const std::string& format)
{
    return format.substr(0, format.find('%'));
}

bool fits(const LogLine& line, const std::string& level, const std::string& format)
{
    const std::string literal = literalOf(format);
    const bool isWhole = literal == format;
    const std::string begin = isWhole ? line.message : line.message.substr(0, literal.size());
    return line.level == level && begin == literal;
}

class TheLog : public VoiceWorld {
  protected:
    void SetUp() override
    {
        VoiceWorld::SetUp();
        ui = std::make_unique<UiPeer>();
        stock(threeProducts());
        startListening();
    }

    void searchAndWait()
    {
        search();
        resultMessage();
    }

    void provokeTheDelivery()
    {
        merchant->answer("/p/whole.png", {404});
        search();
        ui->refuse(resultMessage());
        EXPECT_TRUE(log.waitFor("Failed to startDownload for index 0"));
        EXPECT_TRUE(log.waitFor("Invalid app control response"));
    }

    void provokeTheStores()
    {
        for (const char* file : {"/data-store.sqlite", "/vconf/db/nuvex/e-commerce/response"}) {
            fs::remove(root + file);
            fs::create_directory(root + file);
        }
        searchAndWait();
    }

    void provokeTheMerchant()
    {
        merchant->answer(Merchant::SearchPath, {200, "garbage"});
        searchAndWait();
        merchant.reset();
        searchAndWait();
        fs::remove(tokenFile());
        searchAndWait();
    }

    // libcurl escapes texts of up to 24 million bytes, and a blank becomes three.
    void provokeTheEscape()
    {
        writeTokens();
        EXPECT_EQ(search(std::string(9'000'000, ' ')), "");
        resultMessage();
    }

    void provokeTheSender()
    {
        ui.reset();
        ASSERT_TRUE(TestSupport::waitForName("org.tizen.carvoy", false));
        askForResult();
        EXPECT_TRUE(log.waitFor("Failed to launch request"));
    }

    // Each voice command of the four, whatever a command can lack, and the other events; then a client that
    // is no longer ready when the service ends.
    void provokeTheVoice()
    {
        const std::string choice = R"({"actionName": "Commerce Searched Item")";
        voice->serviceState(2);
        voice->error(1);
        voice->language("ko_KR");
        voice->result(1, {"as spoken"}, {});
        say({});
        say({Nlu::action("Commerce Add To Cart"), Nlu::action("Commerce Check Out"),
             Nlu::action("Show Cart Success"), Nlu::item("\"1\""), "", "{broken", choice + "}",
             choice + R"(, "actionData": {}})"});
        voice->clientState(1);
        EXPECT_TRUE(log.waitFor("Previous(Ready) -> Current(Initialized)"));
    }

    std::set<Place> placesLogged() const
    {
        std::set<Place> places;
        for (const LogLine& line : log.lines())
            places.insert(placeOf(line));
        return places;
    }
};

TEST_F(TheLog, ShowsEveryFixedStatementThatCanBeReachedFromOutside)
{
    provokeTheDelivery();
    provokeTheStores();
    provokeTheMerchant();
    provokeTheEscape();
    provokeTheSender();
    provokeTheVoice();
    stopService();

    std::set<Place> expected;
    for (const Row& row : readTable("log-lines.csv"))
        expected.insert(row.place);
    for (const Row& row : readTable("log-lines-not-from-outside.csv"))
        EXPECT_EQ(expected.erase(row.place), 1U) << row.place;
    const std::set<Place> logged = placesLogged();
    std::set<Place> missing;
    std::set_difference(expected.begin(), expected.end(), logged.begin(), logged.end(),
                        std::inserter(missing, missing.end()));
    EXPECT_EQ(missing, std::set<Place>{});
    for (const Row& row : readTable("log-lines-not-from-outside.csv"))
        EXPECT_EQ(logged.count(row.place), 0U) << row.place << " can be reached after all";
}

TEST_F(TheLog, GivesEachFixedStatementItsLevelAndItsText)
{
    provokeTheDelivery();
    provokeTheStores();
    provokeTheMerchant();
    provokeTheVoice();
    stopService();

    for (const Row& row : readTable("log-lines.csv")) {
        for (const LogLine& line : log.lines()) {
            const bool isOther = placeOf(line) != row.place;
            EXPECT_TRUE(isOther || fits(line, row.rest.at(0), row.rest.at(1))) << line.text();
        }
    }
}

TEST_F(TheLog, HoldsNoLineOutOfTheServicesForm)
{
    provokeTheDelivery();
    provokeTheMerchant();
    provokeTheVoice();
    stopService();

    for (const LogLine& line : log.lines()) {
        EXPECT_NE(line.level, "") << line.message;
        EXPECT_EQ(line.file.find('/'), std::string::npos) << line.text();
    }
}

TEST_F(TheLog, SaysTheSameAsStandardOutput)
{
    provokeTheDelivery();
    provokeTheMerchant();
    provokeTheVoice();
    stopService();

    std::multiset<std::string> plain;
    for (const LogLine& line : log.lines())
        plain.insert(line.plain());
    const std::vector<std::string> output = linesOf(service->output());
    EXPECT_EQ(std::multiset<std::string>(output.begin(), output.end()), plain);
    EXPECT_EQ(service->output().find('\033'), std::string::npos);
}

TEST_F(TheLog, NamesTheThreadThatFetchesPictures)
{
    provokeTheDelivery();

    const std::vector<LogLine> lines = log.lines();
    const auto failed = std::find_if(lines.begin(), lines.end(), [](const LogLine& line) {
        return line.message == "Failed to startDownload for index 0";
    });
    ASSERT_NE(failed, lines.end());
    EXPECT_NE(failed->thread, service->pid());
}

}  // namespace

}  // namespace ServiceTest
