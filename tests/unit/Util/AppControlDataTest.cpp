// Messages as values: what they hold, and what copies share.
#include <memory>
#include <type_traits>

#include "AppControl.h"
#include "EmptyMessage.h"
#include "ObservedTest.h"

using Util::AppControlData;

namespace {

using Texts = AppControlData::ExtraDataMap;
using Lists = AppControlData::ExtraVectorDataMap;

static_assert(std::has_virtual_destructor_v<AppControlData>);
static_assert(std::is_copy_constructible_v<AppControlData> && std::is_copy_assignable_v<AppControlData>);

void onReply(app_control_h, app_control_h, app_control_result_e, void*) {}

// Stands for a request that is being answered; nothing looks into it.
app_control_h someRequest()
{
    static int place;
    return reinterpret_cast<app_control_h>(&place);
}

AppControlData filled()
{
    static int userData;
    AppControlData data;
    data.setPackageName("org.example.app").setOperation("http://example/op").setUri("file:///uri");
    data.setReplyCallback(onReply, &userData);
    data.setRequestedAppControl(someRequest());
    data.setResultCode(APP_CONTROL_RESULT_CANCELED);
    data.addExtraData("key", "value").addExtraVectorData("list", {"one", "two"});
    return data;
}

void expectSame(const AppControlData& data, const AppControlData& expected)
{
    EXPECT_EQ(data.getPackageName(), expected.getPackageName());
    EXPECT_EQ(data.getOperation(), expected.getOperation());
    EXPECT_EQ(data.getUri(), expected.getUri());
    EXPECT_EQ(data.getReplyCallback(), expected.getReplyCallback());
    EXPECT_EQ(data.getReplyCallbackUserData(), expected.getReplyCallbackUserData());
    EXPECT_EQ(data.getRequestedAppControl(), expected.getRequestedAppControl());
    EXPECT_EQ(data.getResultCode(), expected.getResultCode());
    EXPECT_EQ(data.getExtraDataMap(), expected.getExtraDataMap());
    EXPECT_EQ(data.getExtraVectorDataMap(), expected.getExtraVectorDataMap());
}

}  // namespace

TEST(AppControlData, ANewOneIsEmpty)
{
    expectEmpty(AppControlData());
}

TEST(AppControlData, KeepsWhatItIsGiven)
{
    static int userData;
    AppControlData data;
    data.setPackageName("org.example.app");
    data.setOperation("http://example/op");
    data.setUri("file:///uri");
    data.setReplyCallback(onReply, &userData);
    data.setRequestedAppControl(someRequest());
    data.setResultCode(APP_CONTROL_RESULT_FAILED);

    EXPECT_EQ(data.getPackageName(), "org.example.app");
    EXPECT_EQ(data.getOperation(), "http://example/op");
    EXPECT_EQ(data.getUri(), "file:///uri");
    EXPECT_EQ(data.getReplyCallback(), &onReply);
    EXPECT_EQ(data.getReplyCallbackUserData(), &userData);
    EXPECT_EQ(data.getRequestedAppControl(), someRequest());
    EXPECT_EQ(data.getResultCode(), APP_CONTROL_RESULT_FAILED);
}

TEST(AppControlData, TextSettersAndExtrasReturnTheObject)
{
    AppControlData data;

    EXPECT_EQ(&data.setPackageName("a"), &data);
    EXPECT_EQ(&data.setOperation("b"), &data);
    EXPECT_EQ(&data.setUri("c"), &data);
    EXPECT_EQ(&data.addExtraData("key", "value"), &data);
    EXPECT_EQ(&data.addExtraVectorData("key", {"value"}), &data);
    EXPECT_EQ(&data.clearExtraData(), &data);
    EXPECT_EQ(&data.clearExtraVectorData(), &data);
}

TEST(AppControlData, GettersGiveTheStoredTextsAndMapsThemselves)
{
    const AppControlData data = filled();

    EXPECT_EQ(&data.getPackageName(), &data.getPackageName());
    EXPECT_EQ(&data.getOperation(), &data.getOperation());
    EXPECT_EQ(&data.getUri(), &data.getUri());
    EXPECT_EQ(&data.getExtraDataMap(), &data.getExtraDataMap());
    EXPECT_EQ(&data.getExtraVectorDataMap(), &data.getExtraVectorDataMap());
}

TEST(AppControlData, ACopyHasEveryField)
{
    const AppControlData data = filled();

    expectSame(AppControlData(data), data);
}

TEST(AppControlData, AnAssignedOneHasEveryFieldAndNoneOfItsOwn)
{
    const AppControlData data = filled();
    AppControlData other;
    other.addExtraData("own", "x").addExtraVectorData("own list", {"x"});

    other = data;

    expectSame(other, data);
}

TEST(AppControlData, CopiesShareNothing)
{
    AppControlData data = filled();
    const AppControlData copy(data);

    data.getExtraData("key") = "changed";
    data.getExtraVectorData("list").clear();
    data.setPackageName("changed");

    expectSame(copy, filled());
}

TEST(AppControlData, ACopyOutlivesTheOriginal)
{
    auto data = std::make_unique<AppControlData>(filled());
    const AppControlData copy(*data);
    data.reset();

    expectSame(copy, filled());
}

TEST(AppControlData, AMissingTextReadsAsEmptyAndIsThereFromThenOn)
{
    AppControlData data;

    EXPECT_EQ(data.getExtraData("missing"), "");
    EXPECT_EQ(data.getExtraDataMap(), (Texts{{"missing", ""}}));
    EXPECT_TRUE(data.getExtraVectorDataMap().empty());
}

TEST(AppControlData, AMissingListReadsAsEmptyAndIsThereFromThenOn)
{
    AppControlData data;

    EXPECT_EQ(data.getExtraVectorData("missing"), List());
    EXPECT_EQ(data.getExtraVectorDataMap(), (Lists{{"missing", {}}}));
    EXPECT_TRUE(data.getExtraDataMap().empty());
}

TEST(AppControlData, WhatIsReadCanBeWrittenInPlace)
{
    AppControlData data;
    data.getExtraData("key") = "value";
    data.getExtraVectorData("list").emplace_back("one");

    EXPECT_EQ(data.getExtraDataMap(), (Texts{{"key", "value"}}));
    EXPECT_EQ(data.getExtraVectorDataMap(), (Lists{{"list", {"one"}}}));
}

TEST(AppControlData, AddingAKeyTwiceKeepsTheSecondValue)
{
    AppControlData data;
    data.addExtraData("key", "first").addExtraData("key", "second");
    data.addExtraVectorData("key", {"first", "list"}).addExtraVectorData("key", {"second"});

    EXPECT_EQ(data.getExtraDataMap(), (Texts{{"key", "second"}}));
    EXPECT_EQ(data.getExtraVectorDataMap(), (Lists{{"key", {"second"}}}));
}

TEST(AppControlData, TheSameKeyCanHoldATextAndAList)
{
    AppControlData data;
    data.addExtraData("key", "text").addExtraVectorData("key", {"list"});

    EXPECT_EQ(data.getExtraData("key"), "text");
    EXPECT_EQ(data.getExtraVectorData("key"), List{"list"});
}

TEST(AppControlData, AnAddedListIsACopy)
{
    List list = {"one", "two"};
    AppControlData data;
    data.addExtraVectorData("list", list);
    list.clear();

    EXPECT_EQ(data.getExtraVectorData("list"), (List{"one", "two"}));
}

TEST(AppControlData, KeysAreInByteOrder)
{
    const List inOrder = {"", "A", "a", "aa", "ab", "b", "z", "\xC3\xA9"};
    AppControlData data;
    for (auto key = inOrder.rbegin(); key != inOrder.rend(); ++key)
        data.addExtraData(*key, "x").addExtraVectorData(*key, {"x"});

    List texts;
    for (const auto& extra : data.getExtraDataMap())
        texts.push_back(extra.first);
    List lists;
    for (const auto& extra : data.getExtraVectorDataMap())
        lists.push_back(extra.first);
    EXPECT_EQ(texts, inOrder);
    EXPECT_EQ(lists, inOrder);
}

TEST(AppControlData, ClearingTheTextsLeavesTheLists)
{
    AppControlData data = filled();
    data.clearExtraData();

    EXPECT_TRUE(data.getExtraDataMap().empty());
    EXPECT_EQ(data.getExtraVectorDataMap(), filled().getExtraVectorDataMap());
}

TEST(AppControlData, ClearingTheListsLeavesTheTexts)
{
    AppControlData data = filled();
    data.clearExtraVectorData();

    EXPECT_TRUE(data.getExtraVectorDataMap().empty());
    EXPECT_EQ(data.getExtraDataMap(), filled().getExtraDataMap());
}

TEST(AppControlData, ClearingResetsEveryField)
{
    AppControlData data = filled();
    data.clearData();

    expectEmpty(data);
}
