// Messages read out of the platform's handles, whatever the platform makes of it.
#include <memory>

#include "AppControl.h"
#include "AppControlHandle.h"
#include "EmptyMessage.h"
#include "ObservedTest.h"

using TestSupport::Call;
using TestSupport::Calls;
using Util::AppControlData;

namespace {

using Texts = AppControlData::ExtraDataMap;
using Lists = AppControlData::ExtraVectorDataMap;

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
