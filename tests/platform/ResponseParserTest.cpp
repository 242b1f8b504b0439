// The assistant's response parser: what it reads, and what it answers where that is not there.
#include <gtest/gtest.h>
#include <nuvex-da-parser.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <type_traits>

namespace {

struct Destroy {
    void operator()(ndp_response_data_h response) const { ndp_response_data_destroy(response); }
};
using Response = std::unique_ptr<std::remove_pointer_t<ndp_response_data_h>, Destroy>;

// Null where the text cannot be parsed, which is a failure of the test.
Response parsed(const std::string& json)
{
    ndp_response_data_h response = nullptr;
    EXPECT_EQ(ndp_response_data_parse(json.c_str(), &response), NDP_ERROR_NONE) << json.substr(0, 200);
    return Response(response);
}

int parse(const std::string& json)
{
    ndp_response_data_h response = nullptr;
    const int code = ndp_response_data_parse(json.c_str(), &response);
    EXPECT_EQ(response != nullptr, code == NDP_ERROR_NONE) << json.substr(0, 200);
    const Response owner(response);
    return code;
}

std::string take(int code, char* text)
{
    std::string copy = code == NDP_ERROR_NONE ? text : std::to_string(code);
    free(text);
    return copy;
}

/** The text, or the code where there is none. */
std::string actionName(const Response& response)
{
    char* name = nullptr;
    const int code = ndp_response_data_get_action_name(response.get(), &name);
    return take(code, name);
}

std::string actionNameOf(const std::string& value)
{
    return actionName(parsed("{\"actionName\": " + value + "}"));
}

int getActionData(const std::string& json)
{
    ndp_action_data_h data = nullptr;
    const Response response = parsed(json);
    const int code = ndp_response_data_get_action_data(response.get(), &data);
    EXPECT_EQ(data != nullptr, code == NDP_ERROR_NONE);
    return code;
}

int getCommerceData(const std::string& actionData, ndp_commerce_data_h* commerce, Response& response)
{
    ndp_action_data_h data = nullptr;
    response = parsed("{\"actionData\": " + actionData + "}");
    EXPECT_EQ(ndp_response_data_get_action_data(response.get(), &data), NDP_ERROR_NONE);
    return ndp_commerce_action_data_get_representative_commerce_data(data, commerce);
}

int getCommerceData(const std::string& actionData)
{
    ndp_commerce_data_h commerce = nullptr;
    Response response;
    const int code = getCommerceData(actionData, &commerce, response);
    EXPECT_EQ(commerce != nullptr, code == NDP_ERROR_NONE);
    return code;
}

/** The text `id` of a commerce data that is this object, or the code where there is none. */
std::string idOf(const std::string& commerceData)
{
    ndp_commerce_data_h commerce = nullptr;
    Response response;
    EXPECT_EQ(getCommerceData("{\"representativeCommerceData\": " + commerceData + "}", &commerce, response),
              NDP_ERROR_NONE);
    char* id = nullptr;
    const int code = ndp_commerce_data_get_id(commerce, &id);
    return take(code, id);
}

const std::string NoSuchValue = std::to_string(NDP_ERROR_NO_SUCH_VALUE);
const std::string InvalidType = std::to_string(NDP_ERROR_INVALID_TYPE);

TEST(AResponse, HasANameAndAnItem)
{
    const Response response = parsed(R"({"actionName": "Commerce Searched Item",
                                         "actionData": {"representativeCommerceData": {"id": "2"}}})");
    EXPECT_EQ(actionName(response), "Commerce Searched Item");
    ndp_action_data_h data = nullptr;
    ndp_commerce_data_h commerce = nullptr;
    char* id = nullptr;
    EXPECT_EQ(ndp_response_data_get_action_data(response.get(), &data), NDP_ERROR_NONE);
    EXPECT_EQ(ndp_commerce_action_data_get_representative_commerce_data(data, &commerce), NDP_ERROR_NONE);
    EXPECT_EQ(ndp_commerce_data_get_id(commerce, &id), NDP_ERROR_NONE);
    EXPECT_STREQ(id, "2");
    free(id);
}

TEST(AResponse, GivesTheSameAgainAndANewTextEachTime)
{
    const Response response = parsed(R"({"actionName": "n", "actionData": {}})");
    char* first = nullptr;
    char* second = nullptr;
    ndp_action_data_h data = nullptr;
    ndp_action_data_h again = nullptr;
    EXPECT_EQ(ndp_response_data_get_action_name(response.get(), &first), NDP_ERROR_NONE);
    EXPECT_EQ(ndp_response_data_get_action_name(response.get(), &second), NDP_ERROR_NONE);
    EXPECT_NE(first, second);
    EXPECT_STREQ(first, second);
    free(first);
    free(second);
    EXPECT_EQ(ndp_response_data_get_action_data(response.get(), &data), NDP_ERROR_NONE);
    EXPECT_EQ(ndp_response_data_get_action_data(response.get(), &again), NDP_ERROR_NONE);
    EXPECT_EQ(data, again);
}

TEST(AResponse, IsNeededByEveryFunction)
{
    char marker = 0;
    char* text = &marker;
    ndp_response_data_h response = nullptr;
    ndp_action_data_h data = nullptr;
    ndp_commerce_data_h commerce = nullptr;
    EXPECT_EQ(ndp_response_data_parse(nullptr, &response), NDP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ndp_response_data_parse("{}", nullptr), NDP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ndp_response_data_destroy(nullptr), NDP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ndp_response_data_get_action_name(nullptr, &text), NDP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ndp_response_data_get_action_data(nullptr, &data), NDP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ndp_commerce_action_data_get_representative_commerce_data(nullptr, &commerce),
              NDP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ndp_commerce_data_get_id(nullptr, &text), NDP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(response, nullptr);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(commerce, nullptr);
    EXPECT_EQ(text, &marker);
}

TEST(AResponse, CannotBeReadToNowhere)
{
    const Response response = parsed(R"({"actionData": {"representativeCommerceData": {"id": "2"}}})");
    ndp_action_data_h data = nullptr;
    ndp_commerce_data_h commerce = nullptr;
    ASSERT_EQ(ndp_response_data_get_action_data(response.get(), &data), NDP_ERROR_NONE);
    ASSERT_EQ(ndp_commerce_action_data_get_representative_commerce_data(data, &commerce), NDP_ERROR_NONE);
    EXPECT_EQ(ndp_response_data_get_action_name(response.get(), nullptr), NDP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ndp_response_data_get_action_data(response.get(), nullptr), NDP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ndp_commerce_action_data_get_representative_commerce_data(data, nullptr),
              NDP_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ndp_commerce_data_get_id(commerce, nullptr), NDP_ERROR_INVALID_PARAMETER);
}

TEST(AResponse, IsJson)
{
    for (const char* json : {"",
                             " ",
                             "\n",
                             "{",
                             "}",
                             "[",
                             "{]",
                             "{}}",
                             "{\"a\"}",
                             "{\"a\":}",
                             "{\"a\": 1,}",
                             "{a: 1}",
                             "{'a': 1}",
                             "{\"a\": 'b'}",
                             "{\"a\": 1} x",
                             "{} {}",
                             "1 {}",
                             "{} 1",
                             "{} \"a\"",
                             "{}, {}",
                             "{},",
                             "{:}",
                             "{\"a\" 1}",
                             "{\"a\": 1 2}",

                             "{\"a\": +1}",

                             "[1 2]",
                             "[1,]",
                             "nonsense",
                             "tru",
                             "// c\n{}",
                             "{} // c",
                             "/* c */ {}",
                             "# c\n{}",
                             "var a = {};",
                             "{\"a\": \"b}",
                             "{\"a\": \"\\",
                             "{\"a\": \"b\\\"}",
                             "\xef\xbb\xbf{}",
                             "{\"a\": \"\xff\"}",
                             "{\"a\": \xc3\xbc}",
                             "{\"a\": NaN}",
                             "{\"a\": undefined}",
                             "{\"a\": =}",
                             "{;}"})
        EXPECT_EQ(parse(json), NDP_ERROR_PARSE_JSON_FAILED) << json;
}

TEST(AResponse, IsAnObject)
{
    for (const char* json : {"[]", "[{}]", "null", "true", "1", "-1.5e3", "\"text\"", " [ 1 ] "})
        EXPECT_EQ(parse(json), NDP_ERROR_INVALID_TYPE) << json;
    for (const char* json : {"{}", " {} ", "\n\t{\r\n}\n", "{\"\": {\"a\": [1, 2.5e-3, true, false, null]}}"})
        EXPECT_EQ(parse(json), NDP_ERROR_NONE) << json;
}

std::string nestedArrays(int levels)
{
    return "{\"a\": " + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
}

std::string nestedObjects(int levels)
{
    std::string json;
    for (int i = 1; i < levels; ++i)
        json += "{\"a\":";
    return json + "{}" + std::string(levels - 1, '}');
}

TEST(AResponse, IsNestedAThousandAndTwentyFourLevelsDeepAtMost)
{
    EXPECT_EQ(parse(nestedArrays(1024)), NDP_ERROR_NONE);
    EXPECT_EQ(parse(nestedObjects(1024)), NDP_ERROR_NONE);
    for (const int levels : {1025, 100'000, 1'000'000}) {
        EXPECT_EQ(parse(nestedArrays(levels)), NDP_ERROR_PARSE_JSON_FAILED);
        EXPECT_EQ(parse(nestedObjects(levels)), NDP_ERROR_PARSE_JSON_FAILED);
        EXPECT_EQ(parse(std::string(levels, '[')), NDP_ERROR_PARSE_JSON_FAILED);
        EXPECT_EQ(parse(std::string(levels, '{')), NDP_ERROR_PARSE_JSON_FAILED);
        EXPECT_EQ(parse(std::string(levels, ']') + std::string(levels, '[')), NDP_ERROR_PARSE_JSON_FAILED);
    }
}

// Brackets in texts nest nothing, and no text hides brackets that do.
TEST(AResponse, MayHaveAnyBracketsInItsTexts)
{
    const std::string many(100'000, '[');
    EXPECT_EQ(actionNameOf("\"" + many + "\""), many);
    EXPECT_EQ(actionNameOf("\"\\\"" + many + "\""), "\"" + many);
    for (const std::string start : {"{\"a\": \"\\\\\", \"b\": ", "{\"a\": '\"', \"b\": ", "/* \" */ {\"b\": ",
                                    "// \"\n{\"b\": ", "# \"\n{\"b\": "})
        EXPECT_EQ(parse(start + many + std::string(100'000, ']') + "}"), NDP_ERROR_PARSE_JSON_FAILED)
            << start;
}

// json-glib takes what stands behind half of a surrogate pair, or behind too few digits, for a part of the
// escape.
TEST(AResponse, HasNoEscapeThatTakesTheEndOfItsTextWithIt)
{
    const std::string many(100'000, '[');
    for (const std::string escape :
         {"\\ud83d", "\\udc00", "\\ud8", "\\u0", "\\u00e", "\\ud83d\\udc", "\\u0\\"}) {
        EXPECT_EQ(parse("{\"a\": [\"" + escape + "\", \"," + many + "\"]}"), NDP_ERROR_PARSE_JSON_FAILED)
            << escape;
        EXPECT_EQ(parse("{\"" + escape + "\": \"\", \"\": \":" + many + "\"}"), NDP_ERROR_PARSE_JSON_FAILED)
            << escape;
    }
    for (const std::string text :
         {"\\ud83dx", "\\ud83d\\\"", "\\ud83d\\\\", "\\u0g", "\\u", "\\ud83d\\ude00"})
        EXPECT_EQ(parse("{\"a\": [\"" + text + many + "\", \"," + many + "\"]}"), NDP_ERROR_NONE) << text;
}

// json-glib refuses these as well, but never releases what it has read of the text.
TEST(AResponse, HasNoPairOfHalvesThatDoNotBelongTogether)
{
    for (const char* pair :
         {"\\ud83d\\ud83d", "\\udc00\\udc00", "\\ud83d\\u0041", "\\ud83d\\u", "\\ud83d\\udzz"})
        EXPECT_EQ(parse("{\"a\": \"" + std::string(pair) + "\"}"), NDP_ERROR_PARSE_JSON_FAILED) << pair;
}

TEST(AnActionName, IsTheTextAsItIs)
{
    EXPECT_EQ(actionNameOf(R"("Commerce Check Out")"), "Commerce Check Out");
    EXPECT_EQ(actionNameOf(R"(" \tCommerce Check Out\r\n\u000b")"), " \tCommerce Check Out\r\n\v");
    EXPECT_EQ(actionNameOf(R"("")"), "");
    EXPECT_EQ(actionNameOf("\"Süß 🥛\""), "Süß 🥛");
    EXPECT_EQ(actionNameOf(R"("S\u00fc\u00df \ud83e\udd5b")"), "Süß 🥛");
    EXPECT_EQ(actionNameOf(R"("\"\\\/\b\f")"), "\"\\/\b\f");
    EXPECT_EQ(actionNameOf(R"("cut\u0000off")"), "cut");
    const std::string large(10'000'000, 'x');
    EXPECT_EQ(actionNameOf("\"" + large + "\""), large);
}

TEST(AnActionName, IsNeverHalfASurrogatePair)
{
    for (const char* text :
         {"\\ud800", "\\udc00", "\\ud800\\ud800", "\\udc00\\ud800", "\\ud800\\u0041", "\\u12"})
        EXPECT_EQ(parse("{\"actionName\": \"" + std::string(text) + "\"}"), NDP_ERROR_PARSE_JSON_FAILED)
            << text;
    for (const char* text : {"\\ud800x", "x\\ud800x", "\\ud800\\n"})
        EXPECT_EQ(actionNameOf("\"" + std::string(text) + "\""), InvalidType) << text;
}

TEST(AnActionName, MayBeMissing)
{
    EXPECT_EQ(actionName(parsed("{}")), NoSuchValue);
    EXPECT_EQ(actionName(parsed(R"({"actionname": "n", "actionData": {"actionName": "n"}})")), NoSuchValue);
    EXPECT_EQ(actionNameOf("null"), NoSuchValue);
}

TEST(AnActionName, IsNothingButText)
{
    for (const char* value : {"1", "1.5", "true", "false", "[]", "[\"n\"]", "{}", "{\"actionName\": \"n\"}"})
        EXPECT_EQ(actionNameOf(value), InvalidType) << value;
}

TEST(AnActionName, IsTheLastOneWhereThereAreTwo)
{
    EXPECT_EQ(actionName(parsed(R"({"actionName": "first", "actionName": "last"})")), "last");
    EXPECT_EQ(actionName(parsed(R"({"actionName": "first", "actionName": null})")), NoSuchValue);
    EXPECT_EQ(actionName(parsed(R"({"actionName": 1, "actionName": "last"})")), "last");
}

TEST(AnActionData, IsAnObject)
{
    EXPECT_EQ(getActionData(R"({"actionData": {}})"), NDP_ERROR_NONE);
    EXPECT_EQ(getActionData("{}"), NDP_ERROR_NO_SUCH_VALUE);
    EXPECT_EQ(getActionData(R"({"actionData": null})"), NDP_ERROR_NO_SUCH_VALUE);
    for (const char* value : {"1", "true", "\"text\"", "[]", "[{}]"})
        EXPECT_EQ(getActionData("{\"actionData\": " + std::string(value) + "}"), NDP_ERROR_INVALID_TYPE)
            << value;
}

TEST(ARepresentativeCommerceData, IsAnObject)
{
    EXPECT_EQ(getCommerceData(R"({"representativeCommerceData": {}})"), NDP_ERROR_NONE);
    EXPECT_EQ(getCommerceData("{}"), NDP_ERROR_NO_SUCH_VALUE);
    EXPECT_EQ(getCommerceData(R"({"representativeCommerceData": null})"), NDP_ERROR_NO_SUCH_VALUE);
    for (const char* value : {"1", "true", "\"text\"", "[]", "[{}]"})
        EXPECT_EQ(getCommerceData("{\"representativeCommerceData\": " + std::string(value) + "}"),
                  NDP_ERROR_INVALID_TYPE)
            << value;
}

TEST(AnId, IsText)
{
    EXPECT_EQ(idOf(R"({"id": "2"})"), "2");
    EXPECT_EQ(idOf(R"({"id": " 2\n"})"), " 2\n");
    EXPECT_EQ(idOf(R"({"id": ""})"), "");
    EXPECT_EQ(idOf("{}"), NoSuchValue);
    EXPECT_EQ(idOf(R"({"id": null})"), NoSuchValue);
    for (const char* value : {"2", "2.0", "true", "[\"2\"]", "{\"id\": \"2\"}"})
        EXPECT_EQ(idOf("{\"id\": " + std::string(value) + "}"), InvalidType) << value;
}

}  // namespace
