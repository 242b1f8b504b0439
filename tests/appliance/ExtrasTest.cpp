#include "Extras.h"

#include <gtest/gtest.h>

#include "Exit.h"

namespace {

using Tool::operationUri;
using Tool::parseExtras;
using Words = std::vector<std::string>;

TEST(AnExtra, IsSplitAtItsFirstEqualsSign)
{
    const auto extras = parseExtras({"key=value", "formula=a=b"}, {});
    EXPECT_EQ(extras.text("key"), "value");
    EXPECT_EQ(extras.text("formula"), "a=b");
}

TEST(AnExtraList, IsSplitAtItsCommas)
{
    EXPECT_EQ(parseExtras({}, {"k=a,b,c"}).list("k"), (Words{"a", "b", "c"}));
    EXPECT_EQ(parseExtras({}, {"k=one"}).list("k"), Words{"one"});
    EXPECT_EQ(parseExtras({}, {"k=a,,c"}).list("k"), (Words{"a", "", "c"}));
    EXPECT_EQ(parseExtras({}, {"k=,"}).list("k"), (Words{"", ""}));
}

TEST(AnExtraList, KeepsWhatABackslashProtects)
{
    EXPECT_EQ(parseExtras({}, {"k=a\\,b,c\\\\d,e\\"}).list("k"), (Words{"a,b", "c\\d", "e\\"}));
}

void expectRefused(const Words& texts, const Words& lists)
{
    try {
        parseExtras(texts, lists);
        ADD_FAILURE() << "not refused";
    } catch (const Tool::Failure& failure) {
        EXPECT_EQ(failure.status(), Tool::Exit::Usage);
    }
}

TEST(AnExtra, WithoutAKeyOrAValueIsRefused)
{
    for (const char* text : {"", "key", "=value", "key=", "="}) {
        expectRefused({text}, {});
        expectRefused({}, {text});
    }
}

TEST(AnExtra, UnderAKeyThatIsUsedAlreadyIsRefused)
{
    expectRefused({"k=1", "k=2"}, {});
    expectRefused({"k=1"}, {"k=a,b"});
    expectRefused({}, {"k=a", "k=b"});
}

TEST(AnOperation, IsWrittenShortOrWhole)
{
    EXPECT_EQ(operationUri("service:search"), "http://carvoy-service/appcontrol/operation/search");
    EXPECT_EQ(operationUri("platform:view"), "http://tizen.org/appcontrol/operation/view");
    EXPECT_EQ(operationUri("assistant:close_app"), "http://nuvex-da/appcontrol/operation/close_app");
    EXPECT_EQ(operationUri("platform:setting/wifi"), "http://tizen.org/appcontrol/operation/setting/wifi");
    EXPECT_EQ(operationUri("http://example.org/op"), "http://example.org/op");
}

TEST(AnOperation, IsShortAgainWhereItHasAShortForm)
{
    for (const char* operation : {"service:search", "platform:view", "assistant:close_app"}) {
        EXPECT_EQ(Tool::shortOperation(operationUri(operation)), operation);
    }
    for (const char* uri :
         {"", "http://example.org/op", "http://tizen.org/appcontrol/operation/", "search"}) {
        EXPECT_EQ(Tool::shortOperation(uri), uri);
    }
}

TEST(AnOperation, OfNoKnownNamespaceIsRefused)
{
    for (const char* operation : {"", "search", "service:", ":search", "services:search", "Service:search"}) {
        EXPECT_THROW(operationUri(operation), Tool::Failure) << operation;
    }
}

}  // namespace
