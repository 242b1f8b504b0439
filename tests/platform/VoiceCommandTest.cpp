// Commands of voice control, and lists of them: plain data, without a client.
#include <gtest/gtest.h>
#include <voice_control_command.h>
#include <voice_control_command_expand.h>

#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

namespace {

using Handles = std::vector<vc_cmd_h>;

bool collect(vc_cmd_h command, void* handles)
{
    static_cast<Handles*>(handles)->push_back(command);
    return true;
}

class AVoiceCommand : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(vc_cmd_create(&command), VC_ERROR_NONE); }
    void TearDown() override { EXPECT_EQ(vc_cmd_destroy(command), VC_ERROR_NONE); }

    std::string text() const
    {
        char* out = nullptr;
        EXPECT_EQ(vc_cmd_get_command(command, &out), VC_ERROR_NONE);
        std::string copy = out ? out : "(none)";
        free(out);
        return copy;
    }

    vc_cmd_h command = nullptr;
};

TEST_F(AVoiceCommand, BeginsWithoutTextTypeAndFormat)
{
    int type = -1;
    int format = -1;
    EXPECT_EQ(text(), "(none)");
    EXPECT_EQ(vc_cmd_get_type(command, &type), VC_ERROR_NONE);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(vc_cmd_get_format(command, &format), VC_ERROR_NONE);
    EXPECT_EQ(format, VC_CMD_FORMAT_FIXED);
}

TEST_F(AVoiceCommand, KeepsACopyOfItsText)
{
    char original[] = "#org.tizen.commerce";
    EXPECT_EQ(vc_cmd_set_command(command, original), VC_ERROR_NONE);
    original[0] = '!';
    EXPECT_EQ(text(), "#org.tizen.commerce");
    EXPECT_EQ(vc_cmd_set_command(command, ""), VC_ERROR_NONE);
    EXPECT_EQ(text(), "");
}

TEST_F(AVoiceCommand, LosesItsTextToNull)
{
    EXPECT_EQ(vc_cmd_set_command(command, "text"), VC_ERROR_NONE);
    EXPECT_EQ(vc_cmd_set_command(command, nullptr), VC_ERROR_NONE);
    char marker = 0;
    char* out = &marker;
    EXPECT_EQ(vc_cmd_get_command(command, &out), VC_ERROR_NONE);
    EXPECT_EQ(out, &marker);
}

TEST_F(AVoiceCommand, HandsOutANewTextEachTime)
{
    vc_cmd_set_command(command, "text");
    char* first = nullptr;
    char* second = nullptr;
    EXPECT_EQ(vc_cmd_get_command(command, &first), VC_ERROR_NONE);
    EXPECT_EQ(vc_cmd_get_command(command, &second), VC_ERROR_NONE);
    EXPECT_NE(first, second);
    free(first);
    free(second);
}

TEST_F(AVoiceCommand, TakesAnyTypeAndFormat)
{
    for (const int number : {VC_COMMAND_TYPE_BACKGROUND, VC_CMD_FORMAT_PARTIAL, -1, 0, 99,
                             std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        int type = 0;
        int format = 0;
        EXPECT_EQ(vc_cmd_set_type(command, number), VC_ERROR_NONE);
        EXPECT_EQ(vc_cmd_set_format(command, number), VC_ERROR_NONE);
        EXPECT_EQ(vc_cmd_get_type(command, &type), VC_ERROR_NONE);
        EXPECT_EQ(vc_cmd_get_format(command, &format), VC_ERROR_NONE);
        EXPECT_EQ(type, number);
        EXPECT_EQ(format, number);
    }
}

TEST_F(AVoiceCommand, ThatCameWithNoResultHasNoAnswer)
{
    char marker = 0;
    char* json = &marker;
    for (const int format : {0, 1, 2, 3, 4, 6, -1}) {
        vc_cmd_set_format(command, format);
        EXPECT_EQ(vc_cmd_get_nlu_json(command, &json), VC_ERROR_NOT_SUPPORTED) << format;
    }
    vc_cmd_set_format(command, VC_CMD_FORMAT_ACTION);
    EXPECT_EQ(vc_cmd_get_nlu_json(command, &json), VC_ERROR_OPERATION_FAILED);
    EXPECT_EQ(json, &marker);
}

TEST_F(AVoiceCommand, RefusesNull)
{
    int number = 7;
    char marker = 0;
    char* text = &marker;
    EXPECT_EQ(vc_cmd_create(nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_destroy(nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_set_command(nullptr, "text"), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_get_command(nullptr, &text), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_get_command(command, nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_set_type(nullptr, 1), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_get_type(nullptr, &number), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_get_type(command, nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_set_format(nullptr, 1), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_get_format(nullptr, &number), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_get_format(command, nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_get_nlu_json(nullptr, &text), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_get_nlu_json(command, nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(text, &marker);
}

class AVoiceCommandList : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(vc_cmd_list_create(&list), VC_ERROR_NONE); }

    vc_cmd_h add()
    {
        vc_cmd_h command = nullptr;
        EXPECT_EQ(vc_cmd_create(&command), VC_ERROR_NONE);
        EXPECT_EQ(vc_cmd_list_add(list, command), VC_ERROR_NONE);
        return command;
    }

    int count() const
    {
        int count = -1;
        EXPECT_EQ(vc_cmd_list_get_count(list, &count), VC_ERROR_NONE);
        return count;
    }

    vc_cmd_list_h list = nullptr;
};

TEST_F(AVoiceCommandList, IsWalkedInItsOrder)
{
    Handles added;
    for (int i = 0; i < 100; ++i)
        added.push_back(add());
    Handles walked;
    EXPECT_EQ(vc_cmd_list_foreach_commands(list, collect, &walked), VC_ERROR_NONE);
    EXPECT_EQ(walked, added);
    EXPECT_EQ(count(), 100);
    EXPECT_EQ(vc_cmd_list_destroy(list, true), VC_ERROR_NONE);
}

TEST_F(AVoiceCommandList, IsWalkedUntilTheCallbackHasEnough)
{
    add();
    add();
    add();
    int calls = 0;
    const auto stopAtTwo = [](vc_cmd_h, void* made) { return ++*static_cast<int*>(made) < 2; };
    EXPECT_EQ(vc_cmd_list_foreach_commands(list, stopAtTwo, &calls), VC_ERROR_NONE);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(vc_cmd_list_destroy(list, true), VC_ERROR_NONE);
}

TEST_F(AVoiceCommandList, SaysThatItIsEmpty)
{
    Handles walked;
    EXPECT_EQ(count(), 0);
    EXPECT_EQ(vc_cmd_list_foreach_commands(list, collect, &walked), VC_ERROR_EMPTY);
    EXPECT_TRUE(walked.empty());
    EXPECT_EQ(vc_cmd_list_destroy(list, true), VC_ERROR_NONE);
}

TEST_F(AVoiceCommandList, TakesACommandOnce)
{
    const vc_cmd_h command = add();
    EXPECT_EQ(vc_cmd_list_add(list, command), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(vc_cmd_list_destroy(list, true), VC_ERROR_NONE);
}

TEST_F(AVoiceCommandList, LeavesItsCommandsWhereItIsToldTo)
{
    const vc_cmd_h command = add();
    EXPECT_EQ(vc_cmd_list_destroy(list, false), VC_ERROR_NONE);
    EXPECT_EQ(vc_cmd_set_type(command, 2), VC_ERROR_NONE);
    EXPECT_EQ(vc_cmd_destroy(command), VC_ERROR_NONE);
}

TEST_F(AVoiceCommandList, MayShareItsCommandsWithAnother)
{
    vc_cmd_list_h another = nullptr;
    ASSERT_EQ(vc_cmd_list_create(&another), VC_ERROR_NONE);
    EXPECT_EQ(vc_cmd_list_add(another, add()), VC_ERROR_NONE);
    EXPECT_EQ(vc_cmd_list_destroy(another, false), VC_ERROR_NONE);
    EXPECT_EQ(vc_cmd_list_destroy(list, true), VC_ERROR_NONE);
}

TEST_F(AVoiceCommandList, RefusesNull)
{
    int number = 7;
    const vc_cmd_h command = add();
    EXPECT_EQ(vc_cmd_list_create(nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_list_destroy(nullptr, true), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_list_get_count(nullptr, &number), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_list_get_count(list, nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_list_add(nullptr, command), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_list_add(list, nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_list_foreach_commands(nullptr, collect, nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(vc_cmd_list_foreach_commands(list, nullptr, nullptr), VC_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(number, 7);
    EXPECT_EQ(vc_cmd_list_destroy(list, true), VC_ERROR_NONE);
}

}  // namespace
