#include "Grammar.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

namespace {

using namespace Assistant;

std::string actionOf(const std::string& sentence)
{
    const auto meaning = understand(sentence);
    return meaning ? meaning->action : "";
}

std::string itemOf(const std::string& sentence)
{
    const auto meaning = understand(sentence);
    return meaning && meaning->action == SearchedItem ? meaning->item : "none: " + sentence;
}

// What may stand at one place of a form: each alternative, and nothing where it may be left out.
std::vector<std::string> choicesAt(const std::string& part)
{
    if (part.front() == '<') {
        return part == "<nth>" ? std::vector<std::string>{"second", "2nd"}
                               : std::vector<std::string>{"two", "2"};
    }
    const bool mayLack = part.front() == '[';
    std::istringstream in(mayLack ? part.substr(1, part.size() - 2) : part);
    std::vector<std::string> choices;
    for (std::string choice; std::getline(in, choice, '|');) {
        choices.push_back(choice);
    }
    if (mayLack) {
        choices.emplace_back();
    }
    return choices;
}

// Every sentence that a form stands for.
std::vector<std::string> sentencesOf(const Form& form)
{
    std::vector<std::string> sentences = {""};
    std::istringstream in(form.words);
    for (std::string part; in >> part;) {
        std::vector<std::string> longer;
        for (const std::string& sentence : sentences) {
            for (const std::string& choice : choicesAt(part)) {
                longer.push_back(choice.empty() ? sentence
                                                : sentence + (sentence.empty() ? "" : " ") + choice);
            }
        }
        sentences = longer;
    }
    return sentences;
}

TEST(TheGrammar, UnderstandsEverySentenceOfEachForm)
{
    for (const Form& form : Forms) {
        const std::vector<std::string> sentences = sentencesOf(form);
        EXPECT_FALSE(sentences.empty());
        for (const std::string& sentence : sentences) {
            const auto meaning = understand(sentence);
            ASSERT_TRUE(meaning) << sentence;
            EXPECT_EQ(meaning->action, form.action) << sentence;
            EXPECT_EQ(meaning->item, form.action == std::string(SearchedItem) ? "2" : "") << sentence;
        }
    }
}

TEST(TheGrammar, KnowsWhatPeopleSay)
{
    for (const char* sentence :
         {"add to cart", "add it to my cart", "add this to the cart", "put it in my cart"}) {
        EXPECT_EQ(actionOf(sentence), "Commerce Add To Cart") << sentence;
    }
    for (const char* sentence : {"check out", "checkout", "pay now"}) {
        EXPECT_EQ(actionOf(sentence), "Commerce Check Out") << sentence;
    }
    for (const char* sentence : {"show my cart", "show the cart", "show me my cart", "what's in my cart",
                                 "what’s in my cart", "open my cart"}) {
        EXPECT_EQ(actionOf(sentence), "Show Cart Success") << sentence;
    }
    for (const char* sentence : {"show me the second one", "open the 2nd product", "choose the second",
                                 "show number two", "show me item 2", "the second one"}) {
        EXPECT_EQ(itemOf(sentence), "2");
    }
}

TEST(TheGrammar, CountsToTenInWordsAndOnInDigits)
{
    const std::vector<std::pair<std::string, std::string>> words = {
        {"first", "one"}, {"second", "two"},    {"third", "three"},  {"fourth", "four"}, {"fifth", "five"},
        {"sixth", "six"}, {"seventh", "seven"}, {"eighth", "eight"}, {"ninth", "nine"},  {"tenth", "ten"}};
    for (std::size_t i = 0; i < words.size(); ++i) {
        EXPECT_EQ(itemOf("the " + words[i].first + " one"), std::to_string(i + 1));
        EXPECT_EQ(itemOf("show number " + words[i].second), std::to_string(i + 1));
    }
    EXPECT_EQ(itemOf("show me the 21st one"), "21");
    EXPECT_EQ(itemOf("show me the 3rd one"), "3");
    EXPECT_EQ(itemOf("show me the 11th one"), "11");
    EXPECT_EQ(itemOf("show me number 999999999999"), "999999999999");
    EXPECT_EQ(itemOf("show me number 0"), "0");
    EXPECT_EQ(itemOf("show me number 007"), "007");
    const std::string digits(100'000, '9');
    EXPECT_EQ(itemOf("show me number " + digits), digits);
}

TEST(TheGrammar, DoesNotMindCaseBlanksAndTheEndMark)
{
    for (const char* sentence : {"Add To Cart", "ADD TO CART!", "  add\t to \n cart ", "add to cart.",
                                 "add to cart ?!", "add to cart...", "add to cart \r\n"}) {
        EXPECT_EQ(actionOf(sentence), AddToCart) << sentence;
    }
    EXPECT_EQ(itemOf("Show me the 2ND one?"), "2");
}

TEST(TheGrammar, UnderstandsNothingElse)
{
    for (const char* sentence : {"",
                                 " ",
                                 "...",
                                 "add",
                                 "add to",
                                 "add to cart please",
                                 "please add to cart",
                                 "addtocart",
                                 "add, to cart",
                                 ".add to cart",
                                 "add it this to cart",
                                 "check",
                                 "check out now",
                                 "show me",
                                 "show me the one",
                                 "show me the eleventh one",
                                 "show me the 2 one",
                                 "show me the nd one",
                                 "show me the 2xnd one",
                                 "show me number",
                                 "show me number -1",
                                 "show me number 2nd",
                                 "show me number eleven",
                                 "show me number 1 2",
                                 "the second",
                                 "second one",
                                 "show the first cart",
                                 "show|open my cart",
                                 "<nth>",
                                 "the <nth> one",
                                 "[me]",
                                 "открой корзину",
                                 "add to cart\x01",
                                 "add\x1B to cart",
                                 "add to cart\xFF"}) {
        EXPECT_FALSE(understand(sentence)) << sentence;
    }
    EXPECT_FALSE(understand(std::string("add to cart\0", 12)));
    EXPECT_FALSE(understand(std::string(1'000'000, 'a')));
    EXPECT_FALSE(understand(std::string(1'000'000, ' ')));
}

TEST(TheAnswer, NamesTheAction)
{
    EXPECT_EQ(nlohmann::json::parse(nluOf({CheckOut, ""})),
              nlohmann::json({{"actionName", "Commerce Check Out"}}));
}

TEST(TheAnswer, CarriesTheItemAsAText)
{
    const auto expected = nlohmann::json::parse(
        R"({"actionName": "Commerce Searched Item",
            "actionData": {"representativeCommerceData": {"id": "2"}}})");
    EXPECT_EQ(nlohmann::json::parse(nluOf({SearchedItem, "2"})), expected);
}

}  // namespace
