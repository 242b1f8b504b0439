#include "JsonReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Calls.h"
#include "GLibWatch.h"

namespace Carvoy {

namespace {

class JsonReaderTest : public testing::Test {
  protected:
    bool load(const std::string& text) { return JsonReader::load(parser_.get(), text); }

    /** The root of a text that must load as an object. */
    JsonObject* object(const std::string& text)
    {
        EXPECT_TRUE(load(text)) << text;
        return json_node_get_object(json_parser_get_root(parser_.get()));
    }

    JsonArray* array(const std::string& elements)
    {
        return JsonReader::arrayMember(object("{\"list\": " + elements + "}"), "list");
    }

    std::optional<int> number(const std::string& value)
    {
        return JsonReader::intMember(object("{\"number\": " + value + "}"), "number");
    }

    /** What loadObject() finds wrong; empty for nothing. */
    static std::string refusalOf(const std::string& text)
    {
        JsonParserPtr parser;
        JsonObject* root = nullptr;
        const char* fault = JsonReader::loadObject(parser, text, root);
        EXPECT_EQ(root == nullptr, fault != nullptr) << text.substr(0, 100);
        return fault ? fault : "";
    }

    GLibWatch watch_;
    JsonParserPtr parser_{json_parser_new()};
};

// One value of each type that JSON has, and what it is.
struct Value {
    const char* kind;
    const char* text;
};

const std::vector<Value> EVERY_KIND = {
    {"string", "\"text\""},   {"empty string", "\"\""}, {"int", "12"},    {"double", "1.5"},
    {"bool", "true"},         {"null", "null"},         {"array", "[1]"}, {"empty array", "[]"},
    {"object", "{\"a\": 1}"}, {"empty object", "{}"}};

bool isOneOf(const std::string& kind, const std::vector<std::string>& kinds)
{
    return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
}

}  // namespace

TEST_F(JsonReaderTest, AnArrayMemberIsOnlyFoundWhereItIsAnArray)
{
    for (const auto& [kind, text] : EVERY_KIND) {
        JsonArray* found =
            JsonReader::arrayMember(object(std::string("{\"member\": ") + text + "}"), "member");
        EXPECT_EQ(found != nullptr, isOneOf(kind, {"array", "empty array"})) << kind;
    }
    EXPECT_EQ(JsonReader::arrayMember(object("{}"), "member"), nullptr);
}

// Half of a character: json-glib takes the escape for what it says.
TEST_F(JsonReaderTest, ATextThatIsNotUtf8IsNone)
{
    for (const char* half : {R"("\ud83dx")", R"("milk \ud83d!")"}) {
        JsonObject* root = object(std::string("{\"member\": ") + half + "}");
        EXPECT_EQ(JsonReader::stringMember(root, "member"), nullptr) << half;
        std::string slot = "as it was";
        JsonReader::assignString(slot, root, "member");
        EXPECT_EQ(slot, "as it was") << half;
    }
    EXPECT_STREQ(JsonReader::stringMember(object(R"({"member": "\ud83d\ude00"})"), "member"), "😀");
}

// Unicode keeps them free of characters, and the bus refuses them with the whole message.
TEST_F(JsonReaderTest, ATextWithANoncharacterIsNone)
{
    for (const char* point :
         {"\\uffff", "\\ufffe", "\\ufdd0", "\\ufdef", "\\ud83f\\udfff", "\\udbff\\udffe", "\xEF\xBF\xBF"}) {
        JsonObject* root = object("{\"member\": \"milk " + std::string(point) + "!\"}");
        EXPECT_EQ(JsonReader::stringMember(root, "member"), nullptr) << point;
    }
    for (const char* point : {"\\ufffd", "\\ufdcf", "\\ufdf0", "\\ud83f\\udffd", "\\ud840\\udc00"}) {
        JsonObject* root = object("{\"member\": \"" + std::string(point) + "\"}");
        EXPECT_NE(JsonReader::stringMember(root, "member"), nullptr) << point;
    }
}

// json-glib takes the first of them, loses an object or array behind it, and never releases that.
TEST_F(JsonReaderTest, SeveralValuesInARowAreNotLoaded)
{
    for (const char* text : {"[][]", "{} {}", "1 []", "\"\"[]", "null{}", "{}\n[{}]", "/ a /{}{}", "'a'[]",
                             "{'}': 1}{}", "{\"a\": \"{\"}[]", "[/ ] /]{}", "var a = {}; {}", "[] var a = []",
                             "null var a = []", "var a = {} var b = {}", "{\"a\": \"\\ud83d\\\"\"}[]"}) {
        const JsonParserPtr parser(json_parser_new());
        EXPECT_FALSE(JsonReader::load(parser.get(), text)) << text;
    }
}

TEST_F(JsonReaderTest, OneValueIsLoadedWhateverStandsAroundIt)
{
    for (const char* text : {" [] ", "\xEF\xBB\xBF{}", "var a = {};", "var a1 = / b / []", "/ {} / [] / {} /",
                             "1", "\"{}[]\"", "[[], {}, [{}]]", "{\"a\": {}, \"b\": []}"}) {
        const JsonParserPtr parser(json_parser_new());
        EXPECT_TRUE(JsonReader::load(parser.get(), text)) << text;
    }
}

// Behind "var name =" json-glib overlooks a mistake that a semicolon follows, and begins anew.
TEST_F(JsonReaderTest, AMistakeInAnAssignmentHidesNoSecondValue)
{
    for (const char* text :
         {"[] var a = }; []", "[]/ / var a = }; []", "var a = [[]; [] []", "var a = [[}; [] []",
          "var a = [}; [] []", "/ / var a = [[]; [] []", "var a = x; [] []", "var a = x; []",
          "var a = var ;; [] [] =", "/ / var a = var ;; [] [] =", "var a = var {} =; []",
          "var a = var '' =; []", "var a = var \"\"; [] [] =", "var a = };", "var a = [[];"}) {
        const JsonParserPtr parser(json_parser_new());
        EXPECT_FALSE(JsonReader::load(parser.get(), text)) << text;
    }
    for (const char* text : {"var a = {};", "var a = [];", "var a = / ; ] / [{}] / } / ;",
                             "var a / x / = [\"];\"];", "var a=var b=[];", "var a = / ] / ['};'];"}) {
        const JsonParserPtr parser(json_parser_new());
        EXPECT_TRUE(JsonReader::load(parser.get(), text)) << text;
    }
}

// json-glib refuses both anyway, but never releases what it has read of the text.
TEST_F(JsonReaderTest, TwoHalvesThatMakeNoCharacterAreNotLoaded)
{
    for (const char* text : {R"(["\ud83d\ud83d"])", R"(["\udc00\udc00"])", R"(["\ud83d\u0041"])",
                             R"(["\ud83d\u"])", R"(["\ud83d\udzz"])", R"(["\ud83d\ue000")"}) {
        const JsonParserPtr parser(json_parser_new());
        EXPECT_FALSE(JsonReader::load(parser.get(), text)) << text;
    }
}

TEST_F(JsonReaderTest, ARootObjectIsLoadedIntoAParserOfItsOwn)
{
    JsonParserPtr parser;
    JsonObject* root = nullptr;
    ASSERT_EQ(JsonReader::loadObject(parser, R"({"n": 1})", root), nullptr);
    EXPECT_EQ(JsonReader::intMember(root, "n"), 1);

    // The next root takes the place of the first, and so does its parser.
    ASSERT_EQ(JsonReader::loadObject(parser, R"({"n": 2})", root), nullptr);
    EXPECT_EQ(JsonReader::intMember(root, "n"), 2);
    EXPECT_EQ(json_node_get_object(json_parser_get_root(parser.get())), root);
}

TEST_F(JsonReaderTest, WhatIsNoRootObjectIsToldInWords)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"{", "json_parser_load_from_data() failed"},
        {std::string(1025, '['), "json_parser_load_from_data() failed"},
        {"", "json_parser_get_root() failed"},
        {" \n", "json_parser_get_root() failed"},
        {"[]", "Invalid json type"},
        {"null", "Invalid json type"},
        {"1", "Invalid json type"},
        {"\"text\"", "Invalid json type"}};
    for (const auto& [text, message] : cases)
        EXPECT_EQ(refusalOf(text), message) << text.substr(0, 20);
    EXPECT_EQ(refusalOf("{}"), "");
}

TEST_F(JsonReaderTest, WithoutAParserOrItsObjectNothingIsLoaded)
{
    TestSupport::Calls::fail("json_parser_new", ENOMEM);
    EXPECT_EQ(refusalOf("{}"), "Couldn't create json parser");
    TestSupport::Calls::fail("json_node_get_object", 0);
    EXPECT_EQ(refusalOf("{}"), "json_node_get_object() failed");
}

TEST_F(JsonReaderTest, AnObjectMemberIsOnlyFoundWhereItIsAnObject)
{
    for (const auto& [kind, text] : EVERY_KIND) {
        JsonObject* found =
            JsonReader::objectMember(object(std::string("{\"member\": ") + text + "}"), "member");
        EXPECT_EQ(found != nullptr, isOneOf(kind, {"object", "empty object"})) << kind;
    }
    EXPECT_EQ(JsonReader::objectMember(object("{}"), "member"), nullptr);
    JsonObject* inner = JsonReader::objectMember(object(R"({"member": {"n": 3}})"), "member");
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(JsonReader::intMember(inner, "n"), 3);
}

TEST_F(JsonReaderTest, ASlotIsOnlyWrittenWhereThereIsAText)
{
    for (const auto& [kind, text] : EVERY_KIND) {
        std::string slot = "before";
        JsonReader::assignString(slot, object(std::string("{\"member\": ") + text + "}"), "member");
        EXPECT_EQ(slot, kind == std::string("string")         ? "text"
                        : kind == std::string("empty string") ? ""
                                                              : "before")
            << kind;
    }
    std::string slot = "before";
    JsonReader::assignString(slot, object("{}"), "member");
    EXPECT_EQ(slot, "before");
}

TEST_F(JsonReaderTest, AnObjectElementIsOnlyFoundWhereItIsAnObject)
{
    for (const auto& [kind, text] : EVERY_KIND) {
        JsonObject* found = JsonReader::objectElement(array(std::string("[") + text + "]"), 0);
        EXPECT_EQ(found != nullptr, isOneOf(kind, {"object", "empty object"})) << kind;
    }
}

TEST_F(JsonReaderTest, AnObjectElementBehindTheEndIsNotFound)
{
    EXPECT_EQ(JsonReader::objectElement(array("[]"), 0), nullptr);
    EXPECT_EQ(JsonReader::objectElement(array("[{}, {}]"), 2), nullptr);
    EXPECT_EQ(JsonReader::objectElement(array("[{}]"), std::numeric_limits<unsigned>::max()), nullptr);
}

TEST_F(JsonReaderTest, AnObjectElementIsTheOneAtItsIndex)
{
    JsonObject* second = JsonReader::objectElement(array(R"([{"n": 1}, {"n": 2}])"), 1);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(JsonReader::intMember(second, "n"), 2);
}

TEST_F(JsonReaderTest, TheFirstObjectOfAnArrayIsItsElementZero)
{
    JsonObject* first = JsonReader::firstObjectOf(object(R"({"list": [{"n": 1}, {"n": 2}]})"), "list");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(JsonReader::intMember(first, "n"), 1);
}

TEST_F(JsonReaderTest, ThereIsNoFirstObjectWhereALinkOfTheChainIsMissing)
{
    for (const char* text :
         {"{}", R"({"list": null})", R"({"list": {}})", R"({"list": "text"})", R"({"list": []})",
          R"({"list": [null]})", R"({"list": [[]]})", R"({"list": [1]})", R"({"list": [null, {}]})"})
        EXPECT_EQ(JsonReader::firstObjectOf(object(text), "list"), nullptr) << text;
}

TEST_F(JsonReaderTest, AStringMemberIsOnlyFoundWhereItIsAString)
{
    for (const auto& [kind, text] : EVERY_KIND) {
        const char* found =
            JsonReader::stringMember(object(std::string("{\"member\": ") + text + "}"), "member");
        EXPECT_EQ(found != nullptr, isOneOf(kind, {"string", "empty string"})) << kind;
    }
    EXPECT_EQ(JsonReader::stringMember(object("{}"), "member"), nullptr);
}

TEST_F(JsonReaderTest, AStringMemberIsReadAsUtf8)
{
    EXPECT_STREQ(
        JsonReader::stringMember(object(R"({"s": "cr\u00e8me \u20ac \uD83E\uDD5B \"q\" \/ \n"})"), "s"),
        "cr\u00e8me \u20ac \U0001F95B \"q\" / \n");
    EXPECT_STREQ(JsonReader::stringMember(object("{\"s\": \"\u00df\u5357\"}"), "s"), "\u00df\u5357");
}

TEST_F(JsonReaderTest, ANumberIsOnlyReadFromANumber)
{
    for (const auto& [kind, text] : EVERY_KIND)
        EXPECT_EQ(number(text).has_value(), isOneOf(kind, {"int", "double"})) << kind;
    EXPECT_EQ(JsonReader::intMember(object("{}"), "number"), std::nullopt);
}

TEST_F(JsonReaderTest, ANumberThatFitsIsReadAsItIs)
{
    EXPECT_EQ(number("0"), 0);
    EXPECT_EQ(number("-7"), -7);
    EXPECT_EQ(number("2147483647"), 2147483647);
    EXPECT_EQ(number("-2147483648"), std::numeric_limits<int>::min());
}

TEST_F(JsonReaderTest, ANumberBeyond32BitsKeepsItsLow32Bits)
{
    EXPECT_EQ(number("2147483648"), std::numeric_limits<int>::min());
    EXPECT_EQ(number("4294967295"), -1);
    EXPECT_EQ(number("4294967296"), 0);
    EXPECT_EQ(number("4294968046"), 750);
    EXPECT_EQ(number("9223372036854775807"), -1);
    EXPECT_EQ(number("-9223372036854775808"), 0);
}

TEST_F(JsonReaderTest, AFractionIsCutOff)
{
    EXPECT_EQ(number("12.99"), 12);
    EXPECT_EQ(number("-12.99"), -12);
    EXPECT_EQ(number("0.5"), 0);
    EXPECT_EQ(number("1e3"), 1000);
    EXPECT_EQ(number("4294968046.5"), 750);
}

TEST_F(JsonReaderTest, AFractionBeyond64BitsIsNoNumber)
{
    EXPECT_EQ(number("9223372036854775808.0"), std::nullopt);
    EXPECT_EQ(number("-9223372036854775808.5"), std::nullopt);
    EXPECT_EQ(number("1e19"), std::nullopt);
    EXPECT_EQ(number("-1e300"), std::nullopt);
    EXPECT_EQ(number("1e999"), std::nullopt);
}

// The parser itself cuts it to 64 bits, or sets all of them; what is read is the low 32 of those.
TEST_F(JsonReaderTest, AnIntegerBeyond64BitsIsStillOneNumber)
{
    EXPECT_EQ(number("9223372036854775808"), 0);
    EXPECT_EQ(number("18446744073709551616"), -1);
    EXPECT_EQ(number("123456789012345678901234567890"), -1);
}

TEST_F(JsonReaderTest, TheLastOfTwoMembersOfOneNameCounts)
{
    EXPECT_EQ(JsonReader::intMember(object(R"({"n": 1, "n": 2})"), "n"), 2);
}

TEST_F(JsonReaderTest, AParserCanLoadOneTextAfterTheOther)
{
    EXPECT_TRUE(load("{\"n\": 1}"));
    EXPECT_FALSE(load("{\"n\": "));
    EXPECT_EQ(JsonReader::intMember(object("{\"n\": 3}"), "n"), 3);
}

}  // namespace Carvoy
