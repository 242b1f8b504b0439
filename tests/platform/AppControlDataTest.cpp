// What a handle keeps, without a bus.
#include <app_control.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace {

class AnAppControl : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(app_control_create(&handle), APP_CONTROL_ERROR_NONE); }
    void TearDown() override { EXPECT_EQ(app_control_destroy(handle), APP_CONTROL_ERROR_NONE); }

    std::string extra(const char* key) const
    {
        char* text = nullptr;
        EXPECT_EQ(app_control_get_extra_data(handle, key, &text), APP_CONTROL_ERROR_NONE);
        std::string copy = text ? text : "(null)";
        free(text);
        return copy;
    }

    std::vector<std::string> list(const char* key) const
    {
        char** out = nullptr;
        int length = -1;
        EXPECT_EQ(app_control_get_extra_data_array(handle, key, &out, &length), APP_CONTROL_ERROR_NONE);
        std::vector<std::string> copy;
        for (int i = 0; i < length; ++i) {
            copy.emplace_back(out[i] ? out[i] : "(null)");
            free(out[i]);
        }
        free(out);
        return copy;
    }

    std::vector<std::string> keys() const
    {
        std::vector<std::string> seen;
        const auto visit = [](app_control_h, const char* key, void* data) {
            static_cast<std::vector<std::string>*>(data)->emplace_back(key);
            return true;
        };
        EXPECT_EQ(app_control_foreach_extra_data(handle, visit, &seen), APP_CONTROL_ERROR_NONE);
        return seen;
    }

    app_control_h handle = nullptr;
    const char* texts[2] = {"one", "two"};
};

using Call = std::function<int(app_control_h)>;

struct BadCall {
    const char* name;
    Call call;
    int expected;
};

bool visitNothing(app_control_h, const char*, void*)
{
    return true;
}

const char* twoTexts[] = {"one", "two"};
char* outText = nullptr;
char** outList = nullptr;
int outLength = 0;
bool outBool = false;
app_control_h outHandle = nullptr;

// "text" holds a single text and "list" a text list in the handle that each call gets.
const std::vector<BadCall> badCalls{
    {"CreateIntoNull", [](auto) { return app_control_create(nullptr); }, -22},
    {"DestroyNull", [](auto) { return app_control_destroy(nullptr); }, -22},
    {"CloneNull", [](auto) { return app_control_clone(&outHandle, nullptr); }, -22},
    {"CloneIntoNull", [](auto h) { return app_control_clone(nullptr, h); }, -22},
    {"SetOperationOfNull", [](auto) { return app_control_set_operation(nullptr, "a"); }, -22},
    {"SetUriOfNull", [](auto) { return app_control_set_uri(nullptr, "a"); }, -22},
    {"SetAppIdOfNull", [](auto) { return app_control_set_app_id(nullptr, "a"); }, -22},
    {"SetMimeOfNull", [](auto) { return app_control_set_mime(nullptr, "a"); }, -22},
    {"SetCategoryOfNull", [](auto) { return app_control_set_category(nullptr, "a"); }, -22},
    {"GetOperationOfNull", [](auto) { return app_control_get_operation(nullptr, &outText); }, -22},
    {"GetOperationIntoNull", [](auto h) { return app_control_get_operation(h, nullptr); }, -22},
    {"GetUriOfNull", [](auto) { return app_control_get_uri(nullptr, &outText); }, -22},
    {"GetUriIntoNull", [](auto h) { return app_control_get_uri(h, nullptr); }, -22},
    {"GetAppIdOfNull", [](auto) { return app_control_get_app_id(nullptr, &outText); }, -22},
    {"GetAppIdIntoNull", [](auto h) { return app_control_get_app_id(h, nullptr); }, -22},
    {"GetMimeOfNull", [](auto) { return app_control_get_mime(nullptr, &outText); }, -22},
    {"GetMimeIntoNull", [](auto h) { return app_control_get_mime(h, nullptr); }, -22},
    {"GetCategoryOfNull", [](auto) { return app_control_get_category(nullptr, &outText); }, -22},
    {"GetCategoryIntoNull", [](auto h) { return app_control_get_category(h, nullptr); }, -22},
    {"AddToNull", [](auto) { return app_control_add_extra_data(nullptr, "k", "v"); }, -22},
    {"AddNullKey", [](auto h) { return app_control_add_extra_data(h, nullptr, "v"); }, -22},
    {"AddEmptyKey", [](auto h) { return app_control_add_extra_data(h, "", "v"); }, -22},
    {"AddNullValue", [](auto h) { return app_control_add_extra_data(h, "k", nullptr); }, -22},
    {"AddEmptyValue", [](auto h) { return app_control_add_extra_data(h, "k", ""); }, -22},
    {"AddReservedAulKey", [](auto h) { return app_control_add_extra_data(h, "__AUL_X", "v"); }, -129},
    {"AddReservedSvcKey", [](auto h) { return app_control_add_extra_data(h, "__APP_SVC_", "v"); }, -129},
    {"AddTextOverList", [](auto h) { return app_control_add_extra_data(h, "list", "v"); }, -129},
    {"AddListToNull", [](auto) { return app_control_add_extra_data_array(nullptr, "k", twoTexts, 2); }, -22},
    {"AddListUnderNullKey", [](auto h) { return app_control_add_extra_data_array(h, nullptr, twoTexts, 2); },
     -22},
    {"AddListUnderEmptyKey", [](auto h) { return app_control_add_extra_data_array(h, "", twoTexts, 2); },
     -22},
    {"AddNullList", [](auto h) { return app_control_add_extra_data_array(h, "k", nullptr, 2); }, -22},
    {"AddListOfNone", [](auto h) { return app_control_add_extra_data_array(h, "k", twoTexts, 0); }, -22},
    {"AddListOfLess", [](auto h) { return app_control_add_extra_data_array(h, "k", twoTexts, -1); }, -22},
    {"AddReservedList", [](auto h) { return app_control_add_extra_data_array(h, "__AUL_", twoTexts, 2); },
     -129},
    {"AddListOverText", [](auto h) { return app_control_add_extra_data_array(h, "text", twoTexts, 2); },
     -129},
    {"RemoveFromNull", [](auto) { return app_control_remove_extra_data(nullptr, "k"); }, -22},
    {"RemoveNullKey", [](auto h) { return app_control_remove_extra_data(h, nullptr); }, -22},
    {"RemoveEmptyKey", [](auto h) { return app_control_remove_extra_data(h, ""); }, -22},
    {"RemoveReservedKey", [](auto h) { return app_control_remove_extra_data(h, "__APP_SVC_X"); }, -129},
    {"RemoveMissingKey", [](auto h) { return app_control_remove_extra_data(h, "missing"); }, -126},
    {"GetFromNull", [](auto) { return app_control_get_extra_data(nullptr, "text", &outText); }, -22},
    {"GetNullKey", [](auto h) { return app_control_get_extra_data(h, nullptr, &outText); }, -22},
    {"GetEmptyKey", [](auto h) { return app_control_get_extra_data(h, "", &outText); }, -22},
    {"GetIntoNull", [](auto h) { return app_control_get_extra_data(h, "text", nullptr); }, -22},
    {"GetMissingKey", [](auto h) { return app_control_get_extra_data(h, "missing", &outText); }, -126},
    {"GetTextOfList", [](auto h) { return app_control_get_extra_data(h, "list", &outText); }, -17825758},
    {"GetListFromNull",
     [](auto) { return app_control_get_extra_data_array(nullptr, "list", &outList, &outLength); }, -22},
    {"GetListOfNullKey",
     [](auto h) { return app_control_get_extra_data_array(h, nullptr, &outList, &outLength); }, -22},
    {"GetListOfEmptyKey",
     [](auto h) { return app_control_get_extra_data_array(h, "", &outList, &outLength); }, -22},
    {"GetListIntoNull",
     [](auto h) { return app_control_get_extra_data_array(h, "list", nullptr, &outLength); }, -22},
    {"GetListWithoutLength",
     [](auto h) { return app_control_get_extra_data_array(h, "list", &outList, nullptr); }, -22},
    {"GetMissingList",
     [](auto h) { return app_control_get_extra_data_array(h, "missing", &outList, &outLength); }, -126},
    {"GetListOfText",
     [](auto h) { return app_control_get_extra_data_array(h, "text", &outList, &outLength); }, -17825758},
    {"IsArrayOfNull", [](auto) { return app_control_is_extra_data_array(nullptr, "list", &outBool); }, -22},
    {"IsArrayOfNullKey", [](auto h) { return app_control_is_extra_data_array(h, nullptr, &outBool); }, -22},
    {"IsArrayOfEmptyKey", [](auto h) { return app_control_is_extra_data_array(h, "", &outBool); }, -22},
    {"IsArrayIntoNull", [](auto h) { return app_control_is_extra_data_array(h, "list", nullptr); }, -22},
    {"WalkNull", [](auto) { return app_control_foreach_extra_data(nullptr, visitNothing, nullptr); }, -22},
    {"WalkWithNull", [](auto h) { return app_control_foreach_extra_data(h, nullptr, nullptr); }, -22},
    {"CallerOfNull", [](auto) { return app_control_get_caller(nullptr, &outText); }, -22},
    {"CallerIntoNull", [](auto h) { return app_control_get_caller(h, nullptr); }, -22},
    {"CallerOfOwnRequest", [](auto h) { return app_control_get_caller(h, &outText); }, -22},
    {"ReplyRequestedOfNull", [](auto) { return app_control_is_reply_requested(nullptr, &outBool); }, -22},
    {"ReplyRequestedIntoNull", [](auto h) { return app_control_is_reply_requested(h, nullptr); }, -22},
    {"ReplyRequestedOfOwnRequest", [](auto h) { return app_control_is_reply_requested(h, &outBool); }, -22},
    {"SendNull", [](auto) { return app_control_send_launch_request(nullptr, nullptr, nullptr); }, -22},
    {"ReplyWithNull",
     [](auto h) { return app_control_reply_to_launch_request(nullptr, h, APP_CONTROL_RESULT_SUCCEEDED); },
     -22},
    {"ReplyToNull",
     [](auto h) { return app_control_reply_to_launch_request(h, nullptr, APP_CONTROL_RESULT_SUCCEEDED); },
     -22},
    {"ReplyToOwnRequest",
     [](auto h) { return app_control_reply_to_launch_request(h, h, APP_CONTROL_RESULT_SUCCEEDED); }, -22},
};

void PrintTo(const BadCall& call, std::ostream* out)
{
    *out << call.name;
}

class ABadCall : public testing::TestWithParam<BadCall> {};

TEST_P(ABadCall, ReturnsItsCodeAndWritesNothing)
{
    app_control_h handle = nullptr;
    app_control_create(&handle);
    app_control_add_extra_data(handle, "text", "value");
    app_control_add_extra_data_array(handle, "list", twoTexts, 2);

    EXPECT_EQ(GetParam().call(handle), GetParam().expected);
    EXPECT_EQ(outText, nullptr);
    EXPECT_EQ(outList, nullptr);
    EXPECT_EQ(outLength, 0);
    EXPECT_FALSE(outBool);
    EXPECT_EQ(outHandle, nullptr);
    app_control_destroy(handle);
}

INSTANTIATE_TEST_SUITE_P(OfAppControl, ABadCall, testing::ValuesIn(badCalls),
                         [](const auto& entry) { return std::string(entry.param.name); });

struct TextField {
    const char* name;
    int (*set)(app_control_h, const char*);
    int (*get)(app_control_h, char**);
};

void PrintTo(const TextField& field, std::ostream* out)
{
    *out << field.name;
}

class ATextField : public testing::TestWithParam<TextField> {};

TEST_P(ATextField, IsNullUntilSetAndAfterBeingCleared)
{
    app_control_h handle = nullptr;
    app_control_create(&handle);
    char* text = const_cast<char*>("untouched");
    EXPECT_EQ(GetParam().get(handle, &text), APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(text, nullptr);

    EXPECT_EQ(GetParam().set(handle, "würde"), APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(GetParam().get(handle, &text), APP_CONTROL_ERROR_NONE);
    EXPECT_STREQ(text, "würde");
    free(text);

    EXPECT_EQ(GetParam().set(handle, nullptr), APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(GetParam().get(handle, &text), APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(text, nullptr);
    app_control_destroy(handle);
}

INSTANTIATE_TEST_SUITE_P(
    OfAppControl, ATextField,
    testing::Values(TextField{"Operation", app_control_set_operation, app_control_get_operation},
                    TextField{"Uri", app_control_set_uri, app_control_get_uri},
                    TextField{"AppId", app_control_set_app_id, app_control_get_app_id},
                    TextField{"Mime", app_control_set_mime, app_control_get_mime},
                    TextField{"Category", app_control_set_category, app_control_get_category}),
    [](const auto& entry) { return std::string(entry.param.name); });

TEST_F(AnAppControl, KeepsTheLastTextUnderAKey)
{
    app_control_add_extra_data(handle, "key", "first");
    app_control_add_extra_data(handle, "key", "second");
    EXPECT_EQ(extra("key"), "second");
}

TEST_F(AnAppControl, KeepsTheLastListUnderAKey)
{
    const char* three[] = {"a", "b", "c"};
    app_control_add_extra_data_array(handle, "key", three, 3);
    app_control_add_extra_data_array(handle, "key", texts, 2);
    EXPECT_EQ(list("key"), (std::vector<std::string>{"one", "two"}));
}

TEST_F(AnAppControl, GivesNullElementsOfAListBack)
{
    const char* holes[] = {nullptr, "", "x", nullptr};
    app_control_add_extra_data_array(handle, "key", holes, 4);
    EXPECT_EQ(list("key"), (std::vector<std::string>{"(null)", "", "x", "(null)"}));
}

TEST_F(AnAppControl, TellsListsFromTexts)
{
    app_control_add_extra_data(handle, "text", "value");
    app_control_add_extra_data_array(handle, "list", texts, 2);
    bool array = true;
    EXPECT_EQ(app_control_is_extra_data_array(handle, "text", &array), APP_CONTROL_ERROR_NONE);
    EXPECT_FALSE(array);
    EXPECT_EQ(app_control_is_extra_data_array(handle, "list", &array), APP_CONTROL_ERROR_NONE);
    EXPECT_TRUE(array);
    EXPECT_EQ(app_control_is_extra_data_array(handle, "missing", &array), APP_CONTROL_ERROR_NONE);
    EXPECT_FALSE(array);
}

TEST_F(AnAppControl, WalksItsKeysInTheOrderOfInsertion)
{
    for (const char* key : {"zebra", "apple", "mango", "zebra"})
        app_control_add_extra_data(handle, key, "value");
    app_control_add_extra_data_array(handle, "banana", texts, 2);
    EXPECT_EQ(keys(), (std::vector<std::string>{"zebra", "apple", "mango", "banana"}));
}

TEST_F(AnAppControl, PutsAKeyThatWasRemovedAtTheEndWhenItComesBack)
{
    for (const char* key : {"a", "b", "c"})
        app_control_add_extra_data(handle, key, "value");
    EXPECT_EQ(app_control_remove_extra_data(handle, "a"), APP_CONTROL_ERROR_NONE);
    app_control_add_extra_data_array(handle, "a", texts, 2);
    EXPECT_EQ(keys(), (std::vector<std::string>{"b", "c", "a"}));
}

TEST_F(AnAppControl, StopsTheWalkWhenTheVisitorSaysSo)
{
    for (const char* key : {"a", "b", "c"})
        app_control_add_extra_data(handle, key, "value");
    int visits = 0;
    const auto visit = [](app_control_h, const char*, void* data) { return ++*static_cast<int*>(data) < 2; };
    EXPECT_EQ(app_control_foreach_extra_data(handle, visit, &visits), APP_CONTROL_ERROR_NONE);
    EXPECT_EQ(visits, 2);
}

TEST_F(AnAppControl, IsIndependentOfItsClone)
{
    app_control_set_operation(handle, "operation");
    app_control_add_extra_data(handle, "key", "value");
    app_control_h clone = nullptr;
    ASSERT_EQ(app_control_clone(&clone, handle), APP_CONTROL_ERROR_NONE);
    app_control_add_extra_data(clone, "key", "changed");
    app_control_set_operation(clone, nullptr);

    EXPECT_EQ(extra("key"), "value");
    char* operation = nullptr;
    app_control_get_operation(handle, &operation);
    EXPECT_STREQ(operation, "operation");
    free(operation);
    EXPECT_EQ(app_control_destroy(clone), APP_CONTROL_ERROR_NONE);
}

TEST(TheNumbersOfAppControl, AreThePlatforms)
{
    EXPECT_EQ(APP_CONTROL_ERROR_APP_NOT_FOUND, -17825759);
    EXPECT_EQ(APP_CONTROL_ERROR_INVALID_DATA_TYPE, -17825758);
    EXPECT_EQ(APP_CONTROL_ERROR_LAUNCH_REJECTED, -17825757);
    EXPECT_EQ(APP_CONTROL_ERROR_LAUNCH_FAILED, -17825756);
    EXPECT_EQ(APP_CONTROL_ERROR_KEY_NOT_FOUND, -126);
    EXPECT_EQ(APP_CONTROL_ERROR_KEY_REJECTED, -129);
    EXPECT_EQ(APP_CONTROL_ERROR_TIMED_OUT, -1073741823);
    EXPECT_EQ(APP_CONTROL_ERROR_IO_ERROR, -5);
    EXPECT_EQ(APP_CONTROL_ERROR_PERMISSION_DENIED, -13);
    EXPECT_EQ(APP_CONTROL_ERROR_OUT_OF_MEMORY, -12);
}

}  // namespace
