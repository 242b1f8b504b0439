// The real service between the assistant and the partner app.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Grammar.h"
#include "ToolFixture.h"

namespace {

using namespace TestSupport;

nlohmann::json jsonOf(const Ended& ended)
{
    const nlohmann::json json = nlohmann::json::parse(ended.output, nullptr, false);
    EXPECT_TRUE(json.is_object()) << ended.output << ended.errors;
    return json;
}

TEST(ARun, EndsWithTheChoiceOfTheSecondProduct)
{
    const Ended run = tool({"run", "--no-pictures"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(has(run.output, "“show me the second one”")) << run.output;
    EXPECT_TRUE(has(run.output, "✓ partner app  show_detailed_view  key_merchant=freshmart")) << run.output;
    EXPECT_TRUE(has(run.output, "✓ assistant    close_app")) << run.output;
    EXPECT_TRUE(has(run.output, "The partner app shows “Skim Milk” (freshmart, ")) << run.output;
    EXPECT_TRUE(has(run.output, "The assistant's view is closed.")) << run.output;
}

TEST(ARun, ChoosesTheOnlyProductThatItFound)
{
    const Ended run = tool({"run", "--no-pictures", "--merchant", "greengrocer", "gala apples"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(has(run.output, ": 1 product\n")) << run.output;
    EXPECT_TRUE(has(run.output, "“show me the first one”")) << run.output;
    EXPECT_TRUE(has(run.output, "The partner app shows “Gala Apples”")) << run.output;
}

TEST(ARun, HasNothingToSayWhereNothingWasFound)
{
    const Ended run = tool({"run", "--json", "nothing-of-this-name"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(jsonOf(run)["voice"].is_null());
}

TEST(ARun, SaysNothingWhereItMustNot)
{
    const Ended run = tool({"run", "--no-pictures", "--no-say"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_FALSE(has(run.output, "partner app")) << run.output;
    EXPECT_EQ(tool({"run", "--no-say", "--say", "check out"}).status, 2);
}

TEST(ARun, SaysWhatItIsTold)
{
    const Ended run = tool({"run", "--json", "--no-pictures", "--say", "Show me number 6!"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(run.errors, "");
    const nlohmann::json json = jsonOf(run);
    const nlohmann::json& voice = json["voice"];
    EXPECT_EQ(voice["sentence"], "Show me number 6!");
    EXPECT_EQ(voice["partner"]["page"], "product");
    EXPECT_EQ(voice["partner"]["product"]["variantRef"], json["card"]["products"][5]["variantRef"]);
    EXPECT_EQ(voice["partner"]["product"]["name"], json["card"]["products"][5]["name"]);
    EXPECT_EQ(voice["assistant"]["view"], "closed");
}

TEST(ARun, FailsWhereItsSentenceDoes)
{
    const Ended run = tool({"run", "--no-pictures", "--say", "sing a song"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(has(run.errors, "✗ not understood")) << run.errors;
}

TEST_F(ARunningAppliance, TakesACustomerToTheCheckOut)
{
    up();
    ASSERT_EQ(on({"search", "--no-pictures", "milk"}).status, 0);
    const Ended second = on({"say", "show me the second one"});
    EXPECT_EQ(second.status, 0) << second.output << second.errors;
    EXPECT_TRUE(has(second.output, "“Skim Milk”")) << second.output;
    EXPECT_TRUE(has(second.output, "The assistant's view is closed.")) << second.output;
    const Ended add = on({"say", "add", "to", "cart"});
    EXPECT_EQ(add.status, 0) << add.output;
    EXPECT_EQ(count(add.output, "✓ "), 1U) << add.output;
    EXPECT_TRUE(has(add.output, "✓ partner app  click_add_cart\n")) << add.output;
    EXPECT_TRUE(has(add.output, "The cart holds 1 product.")) << add.output;
    EXPECT_TRUE(has(add.output, "The assistant's view is open.")) << add.output;
    EXPECT_TRUE(has(on({"say", "show my cart"}).output, "The partner app shows the cart.")) << add.output;
    const Ended checkOut = on({"say", "check out"});
    EXPECT_EQ(checkOut.status, 0) << checkOut.output;
    EXPECT_TRUE(has(checkOut.output, "The partner app shows the check-out.")) << checkOut.output;
    down();
}

TEST_F(ARunningAppliance, ChoosesFromTheLastSearch)
{
    up();
    ASSERT_EQ(on({"search", "--no-pictures", "milk"}).status, 0);
    const nlohmann::json bread = jsonOf(on({"search", "--json", "--no-pictures", "bread"}));
    const nlohmann::json turn = jsonOf(on({"say", "--json", "the first one"}));
    EXPECT_EQ(turn["partner"]["product"]["variantRef"], bread["card"]["products"][0]["variantRef"]);
    down();
}

TEST_F(ARunningAppliance, TellsThatASentenceLedToNothing)
{
    up();
    ASSERT_EQ(on({"search", "--no-pictures", "milk"}).status, 0);
    for (const char* sentence : {"show me number 7", "show me number 0", "show me number 999999999999"}) {
        const Ended beyond = on({"say", "--timeout", "0.5", sentence});
        EXPECT_EQ(beyond.status, 1) << sentence;
        EXPECT_EQ(beyond.errors,
                  "✗ partner app  show_detailed_view did not come within 0.5 s\n"
                  "✗ assistant    close_app did not come within 0.5 s\n"
                  "The last search has 6 products.\n");
    }
    EXPECT_EQ(on({"say", "show my cart"}).status, 0);
    down();
}

TEST_F(ARunningAppliance, ListsWhatItUnderstandsWhereItDoesNot)
{
    up();
    const Ended unknown = on({"say", "open the pod bay doors"});
    EXPECT_EQ(unknown.status, 1);
    for (const Assistant::Form& form : Assistant::Forms) {
        EXPECT_TRUE(has(unknown.errors, form.words)) << form.words;
    }
    EXPECT_TRUE(has(on({"log", "-n", "1000"}).output, "Rejected event"));
    down();
}

TEST_F(ARunningAppliance, FailsWhereTheAppDoesNotActOnAMessage)
{
    up();
    const Ended add = on({"say", "add to cart"});
    EXPECT_EQ(add.status, 1);
    EXPECT_EQ(add.errors, "✗ partner app  click_add_cart ignored: no product is shown\n");
    EXPECT_FALSE(has(add.output, "✓")) << add.output;
    down();
}

TEST_F(ARunningAppliance, TakesAnswersInPlaceOfASentence)
{
    up();
    const Ended several = on({"say", "--json", "--nlu", R"({"actionName": " Show Cart Success\n"})", "--nlu",
                              "broken", "--nlu", R"({"actionName": "Commerce Check Out"})", "anything"});
    EXPECT_EQ(several.status, 0) << several.errors;
    const nlohmann::json turn = jsonOf(several);
    EXPECT_EQ(turn["delivered"].size(), 3U);
    ASSERT_EQ(turn["partner"]["messages"].size(), 2U);
    EXPECT_EQ(turn["partner"]["page"], "check-out");
    const nlohmann::json lists =
        jsonOf(on({"say", "--json", "--nlu", R"(["a","b"])", "--nlu", "{}", "[show,me]"}));
    EXPECT_EQ(lists["sentence"], "[show,me]");
    EXPECT_EQ(lists["delivered"], nlohmann::json({R"(["a","b"])", "{}"}));
    const Ended none = on({"say", "--nlu", R"({"actionName": "Sing"})", "anything"});
    EXPECT_EQ(none.status, 0);
    EXPECT_TRUE(has(none.output, "Nothing is awaited")) << none.output;
    down();
}

TEST_F(ARunningAppliance, RefusesASentenceThatIsNoText)
{
    up();
    const Ended bytes = on({"say", "check \xFF out"});
    EXPECT_EQ(bytes.status, 1);
    EXPECT_TRUE(has(bytes.errors, "a text is not valid")) << bytes.errors;
    down();
}

TEST_F(ARunningAppliance, ShowsWhereVoiceControlStands)
{
    up();
    ASSERT_EQ(on({"say", "show my cart"}).status, 0);  // whose delivery waits until the client is ready
    const Ended status = on({"status"});
    EXPECT_TRUE(has(status.output, "Voice control: ready, called “Carvoy”, commands: #org.tizen.commerce"))
        << status.output;
    const nlohmann::json voice = jsonOf(on({"status", "--json"}))["voice"];
    EXPECT_EQ(voice["state"], 2);
    EXPECT_EQ(voice["commands"], nlohmann::json({"#org.tizen.commerce"}));
    down();
}

TEST(TheTool, SaysNothingToNobody)
{
    EXPECT_EQ(tool({"say", "check out"}).status, 3);
    EXPECT_EQ(tool({"say"}).status, 2);
    EXPECT_EQ(tool({"say", ""}).status, 2);
    EXPECT_EQ(tool({"run", "--say", ""}).status, 2);
    EXPECT_EQ(tool({"say", "--timeout", "0", "check out"}).status, 2);
    EXPECT_EQ(tool({"say", "--timeout", "nan", "check out"}).status, 2);
    Words many = {"say", "anything"};
    for (int i = 0; i < 51; ++i) {
        many.insert(many.end(), {"--nlu", "{}"});
    }
    const Ended tooMany = tool(many);
    EXPECT_EQ(tooMany.status, 2);
    EXPECT_TRUE(has(tooMany.errors, "not more than 50 times")) << tooMany.errors;
}

TEST(TheTool, ListsTheSentencesInItsHelp)
{
    const Ended help = tool({"say", "--help"});
    EXPECT_EQ(help.status, 0);
    for (const Assistant::Form& form : Assistant::Forms) {
        EXPECT_TRUE(has(help.output, std::string("\n  ") + form.words + "\n")) << form.words;
    }
}

}  // namespace
