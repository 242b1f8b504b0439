// Messages as values: what they hold, and how they are read out of the platform's handles.
#include <type_traits>

#include "AppControl.h"
#include "AppControlHandle.h"
#include "ObservedTest.h"

using TestSupport::Call;
using TestSupport::Calls;
using Util::AppControlData;

namespace {

using List = std::vector<std::string>;
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

void expectEmpty(const AppControlData& data)
{
    EXPECT_EQ(data.getPackageName(), "");
    EXPECT_EQ(data.getOperation(), "");
    EXPECT_EQ(data.getUri(), "");
    EXPECT_EQ(data.getReplyCallback(), nullptr);
    EXPECT_EQ(data.getReplyCallbackUserData(), nullptr);
    EXPECT_EQ(data.getRequestedAppControl(), nullptr);
    EXPECT_EQ(static_cast<int>(data.getResultCode()), 1);
    EXPECT_TRUE(data.getExtraDataMap().empty());
    EXPECT_TRUE(data.getExtraVectorDataMap().empty());
}

// A request with everything in it, as another app sends it.
class AppControlDataFromARequest : public ObservedTest {
  protected:
    AppControlDataFromARequest()
    {
        app_control_set_app_id(request.get(), "org.example.sender");
        app_control_set_operation(request.get(), "http://example/op");
        app_control_set_uri(request.get(), "file:///uri");
        Calls::reset();
    }

    AppControlHandle request;
};

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

TEST_F(AppControlDataFromARequest, ANullHandleGivesAnEmptyOneWithoutAskingThePlatform)
{
    app_control_h none = nullptr;

    expectEmpty(AppControlData(none));
    EXPECT_TRUE(Calls::order({"app_control_get_app_id", "app_control_get_operation", "app_control_get_uri",
                              "app_control_foreach_extra_data"})
                    .empty());
}

TEST_F(AppControlDataFromARequest, HasTheSendersTexts)
{
    const AppControlData data(request.get());

    EXPECT_EQ(data.getPackageName(), "org.example.sender");
    EXPECT_EQ(data.getOperation(), "http://example/op");
    EXPECT_EQ(data.getUri(), "file:///uri");
    EXPECT_TRUE(data.getExtraDataMap().empty());
    EXPECT_TRUE(data.getExtraVectorDataMap().empty());
}

TEST_F(AppControlDataFromARequest, DoesNotRecordTheHandleOrAnythingToReply)
{
    const AppControlData data(request.get());

    EXPECT_EQ(data.getRequestedAppControl(), nullptr);
    EXPECT_EQ(static_cast<int>(data.getResultCode()), 1);
    EXPECT_EQ(data.getReplyCallback(), nullptr);
    EXPECT_EQ(data.getReplyCallbackUserData(), nullptr);
}

TEST_F(AppControlDataFromARequest, IsReadInAFixedOrder)
{
    request.addText("text", "value");
    request.addList("list", {"one"});
    Calls::reset();

    const AppControlData data(request.get());

    List names;
    for (const Call& call : Calls::all())
        if (call.name.rfind("app_control_", 0) == 0)
            names.push_back(call.name);
    EXPECT_EQ(names, (List{"app_control_get_app_id", "app_control_get_operation", "app_control_get_uri",
                           "app_control_foreach_extra_data", "app_control_is_extra_data_array",
                           "app_control_get_extra_data", "app_control_is_extra_data_array",
                           "app_control_get_extra_data_array"}));
}

TEST_F(AppControlDataFromARequest, OutlivesTheHandle)
{
    auto handle = std::make_unique<AppControlHandle>();
    handle->addText("text", "value");
    handle->addList("list", {"one"});
    AppControlData data(handle->get());
    handle.reset();

    EXPECT_EQ(data.getExtraData("text"), "value");
    EXPECT_EQ(data.getExtraVectorData("list"), List{"one"});
}

TEST_F(AppControlDataFromARequest, TextsThatWereNeverSetAreEmpty)
{
    AppControlHandle bare;

    expectEmpty(AppControlData(bare.get()));
    EXPECT_EQ(errors(), List());
}

TEST_F(AppControlDataFromARequest, ATextThatCannotBeReadIsEmptyAndTheOthersAreThere)
{
    for (const std::string name : {"app_id", "operation", "uri"}) {
        for (const int code : {static_cast<int>(APP_CONTROL_ERROR_OUT_OF_MEMORY), 0}) {
            SCOPED_TRACE(name + " with code " + std::to_string(code));
            Calls::reset();
            Calls::fail("app_control_get_" + name, code);
            const AppControlData data(request.get());

            EXPECT_EQ(data.getPackageName(), name == "app_id" ? "" : "org.example.sender");
            EXPECT_EQ(data.getOperation(), name == "operation" ? "" : "http://example/op");
            EXPECT_EQ(data.getUri(), name == "uri" ? "" : "file:///uri");
            EXPECT_EQ(errors(), List());
        }
    }
}

TEST_F(AppControlDataFromARequest, HasEveryTextAndList)
{
    request.addText("key_merchant", "freshmart");
    request.addList("names", {"milk", "", "Cr\xC3\xA8me"});
    request.addText("key_search_term", "milk");
    request.addList("one", {"x"});

    const AppControlData data(request.get());

    EXPECT_EQ(data.getExtraDataMap(), (Texts{{"key_merchant", "freshmart"}, {"key_search_term", "milk"}}));
    EXPECT_EQ(data.getExtraVectorDataMap(), (Lists{{"names", {"milk", "", "Cr\xC3\xA8me"}}, {"one", {"x"}}}));
}

TEST_F(AppControlDataFromARequest, HasTextsOfAnyLength)
{
    const std::string large(1'000'000, 'x');
    request.addText("text", large);
    request.addList("list", {large.c_str(), "short"});

    AppControlData data(request.get());

    EXPECT_EQ(data.getExtraData("text"), large);
    EXPECT_EQ(data.getExtraVectorData("list"), (List{large, "short"}));
}

TEST_F(AppControlDataFromARequest, AKeyOfUnknownKindIsLoggedAndLeftOutAndTheWalkGoesOn)
{
    request.addText("a", "1");
    request.addText("b", "2");
    request.addList("c", {"3"});
    Calls::fail("app_control_is_extra_data_array", APP_CONTROL_ERROR_INVALID_PARAMETER);

    const AppControlData data(request.get());

    EXPECT_EQ(data.getExtraDataMap(), (Texts{{"b", "2"}}));
    EXPECT_EQ(data.getExtraVectorDataMap(), (Lists{{"c", {"3"}}}));
    EXPECT_EQ(errors(), List{"AppControl.cpp: operator()(72) > app_control_is_extra_data_array() failed"});
}

TEST_F(AppControlDataFromARequest, EachKeyOfUnknownKindIsLogged)
{
    request.addText("a", "1");
    request.addList("b", {"2"});
    Calls::failAlways("app_control_is_extra_data_array", APP_CONTROL_ERROR_OUT_OF_MEMORY);

    const AppControlData data(request.get());

    EXPECT_TRUE(data.getExtraDataMap().empty());
    EXPECT_TRUE(data.getExtraVectorDataMap().empty());
    EXPECT_EQ(errors().size(), 2U);
}

TEST_F(AppControlDataFromARequest, AListIsAskedForWithNothingInHand)
{
    request.addList("list", {"one"});
    const AppControlData data(request.get());

    EXPECT_EQ(Calls::of("app_control_get_extra_data_array").at(0).arguments, (List{"list", "null", "-1"}));
}

TEST_F(AppControlDataFromARequest, AListThatCannotBeReadIsEmptyAndTheWalkGoesOn)
{
    for (const int code : {static_cast<int>(APP_CONTROL_ERROR_OUT_OF_MEMORY), 0}) {
        SCOPED_TRACE(code);
        Calls::reset();
        request.addList("a", {"1", "2"});
        request.addText("b", "3");
        Calls::fail("app_control_get_extra_data_array", code);

        const AppControlData data(request.get());

        EXPECT_EQ(data.getExtraVectorDataMap(), (Lists{{"a", {}}}));
        EXPECT_EQ(data.getExtraDataMap(), (Texts{{"b", "3"}}));
        EXPECT_EQ(errors(), List());
    }
}

TEST_F(AppControlDataFromARequest, AListOfNoLengthIsAKeyWithAnEmptyList)
{
    request.addList("list", {"one", "two"});
    for (const int length : {0, -1}) {
        SCOPED_TRACE(length);
        Calls::reset();
        Calls::cutLists(length);

        const AppControlData data(request.get());

        EXPECT_EQ(data.getExtraVectorDataMap(), (Lists{{"list", {}}}));
        EXPECT_EQ(errors(), List());
    }
}

TEST_F(AppControlDataFromARequest, ANullElementIsAnEmptyText)
{
    request.addList("list", {nullptr, "two", nullptr});
    AppControlData data(request.get());

    EXPECT_EQ(data.getExtraVectorData("list"), (List{"", "two", ""}));
}

TEST_F(AppControlDataFromARequest, ATextThatCannotBeReadIsAKeyWithAnEmptyText)
{
    request.addText("a", "1");
    request.addText("b", "2");
    for (const int code : {static_cast<int>(APP_CONTROL_ERROR_KEY_NOT_FOUND), 0}) {
        SCOPED_TRACE(code);
        Calls::reset();
        Calls::fail("app_control_get_extra_data", code);

        const AppControlData data(request.get());

        EXPECT_EQ(data.getExtraDataMap(), (Texts{{"a", ""}, {"b", "2"}}));
        EXPECT_EQ(errors(), List());
    }
}

TEST_F(AppControlDataFromARequest, AWalkThatFailsLeavesTheTexts)
{
    request.addText("a", "1");
    Calls::fail("app_control_foreach_extra_data", APP_CONTROL_ERROR_INVALID_PARAMETER);

    const AppControlData data(request.get());

    EXPECT_EQ(data.getOperation(), "http://example/op");
    EXPECT_TRUE(data.getExtraDataMap().empty());
    EXPECT_EQ(errors(), List());
}
