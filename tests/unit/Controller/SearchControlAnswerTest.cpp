// Answers that cannot be used, and answers that try to harm.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "GLibWatch.h"
#include "Products.h"
#include "RepeatedText.h"
#include "SearchControlFixture.h"

using TestSupport::Calls;

namespace Carvoy {

namespace {

using Texts = std::vector<std::string>;

constexpr size_t MEBIBYTE = 1024 * 1024;

class SearchControlAnswerTest : public SearchControlFixture {
  protected:
    /** Parses an answer that must be refused with this message and no other. */
    void expectRefused(const std::string& body, const std::string& message)
    {
        const size_t before = loggedErrors().size();
        search_->init();
        EXPECT_EQ(search_->parseResult(body), 1) << body.substr(0, 100);
        const Texts errors = loggedErrors();
        ASSERT_EQ(errors.size(), before + 1) << body.substr(0, 100);
        EXPECT_EQ(errors.back(), "parseResult: " + message) << body.substr(0, 100);
    }

    GLibWatch watch_;
};

}  // namespace

TEST_F(SearchControlAnswerTest, WithoutAParserNothingIsParsed)
{
    Calls::fail("json_parser_new", ENOMEM);
    expectRefused(Products::answer({"{}"}), "Couldn't create json parser");
}

TEST_F(SearchControlAnswerTest, WhatIsNotJsonIsRefused)
{
    for (const char* body : {"<html>", "milk", "{", "{\"products\": [{}]", "{\"products\": [{}]}}",
                             "{\"products\": [{},]}", "{\"products\" [{}]}", "{products: [{}]}", "\""})
        expectRefused(body, "json_parser_load_from_data() failed");
}

TEST_F(SearchControlAnswerTest, AnAnswerWithoutAValueHasNoRoot)
{
    for (const char* body : {"", " ", "\r\n\t \n", "/* nothing */"})
        expectRefused(body, "json_parser_get_root() failed");
}

TEST_F(SearchControlAnswerTest, ARootThatIsNoObjectIsRefused)
{
    for (const char* body : {"[]", R"([{"products": [{}]}])", "\"products\"", "1", "1.5", "true", "null"})
        expectRefused(body, "Invalid json type");
}

TEST_F(SearchControlAnswerTest, ARootWhoseObjectCannotBeHadIsRefused)
{
    Calls::fail("json_node_get_object", 0);
    expectRefused(Products::answer({"{}"}), "json_node_get_object() failed");
}

TEST_F(SearchControlAnswerTest, AnObjectWithoutProductsIsRefused)
{
    for (const char* body : {"{}", R"({"Products": [{}]})", R"({"result": {"products": [{}]}})"})
        expectRefused(body, "no member: products");
}

TEST_F(SearchControlAnswerTest, ProductsThatAreNoArrayAreRefused)
{
    for (const std::string& value : Products::everyValueBut("array"))
        expectRefused("{\"products\": " + value + "}", "json_object_get_array_member() failed");
}

TEST_F(SearchControlAnswerTest, AnEmptyArrayOfProductsIsRefused)
{
    expectRefused("{\"products\": []}", "empty json array");
    EXPECT_EQ(result().text("key_total_num_of_products"), "0");
}

TEST_F(SearchControlAnswerTest, InvalidUtf8IsRefused)
{
    for (const char* bytes : {"\xff", "\xc3", "\xe2\x82", "\xed\xa0\x80", "\xc0\xaf", "\xf5\x80\x80\x80"})
        expectRefused(Products::answer({std::string("{\"name\": \"") + bytes + "\"}"}),
                      "json_parser_load_from_data() failed");
}

TEST_F(SearchControlAnswerTest, AZeroByteIsRefused)
{
    const std::string zero(1, '\0');
    for (const std::string& body :
         {zero, zero + Products::answer({"{}"}), Products::answer({"{}"}) + zero,
          Products::answer({"{\"name\": \"a" + zero + "b\"}"}), Products::answer({"{" + zero + "}"})})
        expectRefused(body, "json_parser_load_from_data() failed");
}

TEST_F(SearchControlAnswerTest, AnEscapedZeroByteHarmsNothing)
{
    ASSERT_EQ(search_->parseResult(Products::answer({R"({"name": "a\u0000b"})", R"({"name": "c"})"})), 0);
    EXPECT_EQ(result().list("key_product_names").at(1), "c");
}

TEST_F(SearchControlAnswerTest, AnAnswerNestedTooDeepIsRefused)
{
    for (const std::string& body :
         {repeat("[", 100000) + repeat("]", 100000),
          repeat("{\"products\":", 100000) + "1" + repeat("}", 100000),
          repeat("[{\"products\":", 100000) + "1" + repeat("}]", 100000), repeat("[", 100000),
          Products::answer({repeat("[", 100000) + repeat("]", 100000)}),
          Products::answer({"/* \" */" + repeat("[", 100000)}),
          Products::answer({"'\"', " + repeat("[", 100000)})})
        expectRefused(body, "json_parser_load_from_data() failed");
}

TEST_F(SearchControlAnswerTest, TheDeepestAnswerThatIsTakenHas1024Levels)
{
    // The answer's own object and array are two of them.
    ASSERT_EQ(
        search_->parseResult(Products::answer({repeat("[", 1022) + repeat("]", 1022), R"({"name": "a"})"})),
        0);
    EXPECT_EQ(result().list("key_product_names"), (Texts{"", "a"}));
    expectRefused(Products::answer({repeat("[", 1023) + repeat("]", 1023)}),
                  "json_parser_load_from_data() failed");
}

TEST_F(SearchControlAnswerTest, BracketsWithinANameAreHarmless)
{
    const std::string name = repeat("[{", 100000);
    ASSERT_EQ(search_->parseResult(Products::answer({"{\"name\": \"" + name + "\"}"})), 0);
    EXPECT_EQ(result().list("key_product_names"), Texts{name});
}

TEST_F(SearchControlAnswerTest, AnAnswerOf50MegabytesIsRead)
{
    const std::string other = "{\"name\": \"Milk\", \"text\": \"" + std::string(1000, 'x') + "\"},";
    const std::string body = "{\"products\": [" + repeat(other, 50 * MEBIBYTE / other.size() + 1) + "{}]}";
    ASSERT_GE(body.size(), 50 * MEBIBYTE);
    ASSERT_EQ(search_->parseResult(body), 0);

    const SentMessage message = result();
    EXPECT_EQ(message.text("key_total_num_of_products"), "6");
    EXPECT_EQ(message.list("key_product_names"), Texts(6, "Milk"));
}

TEST_F(SearchControlAnswerTest, AGoodAnswerBehindABadOneIsRead)
{
    expectRefused("{\"products\": [", "json_parser_load_from_data() failed");
    ASSERT_EQ(search_->parseResult(Products::answer({R"({"name": "Milk"})"})), 0);
    EXPECT_EQ(result().list("key_product_names"), Texts{"Milk"});
}

}  // namespace Carvoy
