// The HTTP client as an object: its options, its callback, its escaping, and its hold on libcurl.
#include "Curl.h"

#include <memory>
#include <sstream>
#include <thread>
#include <type_traits>

#include "CurlOptions.h"
#include "ObservedTest.h"

using TestSupport::Calls;
using Util::Curl;

namespace {

using WriteCallback = size_t (*)(void*, size_t, size_t, void*);

static_assert(std::has_virtual_destructor_v<Curl>);
static_assert(!std::is_copy_constructible_v<Curl> && !std::is_copy_assignable_v<Curl>);
static_assert(!std::is_move_constructible_v<Curl> && !std::is_move_assignable_v<Curl>);

WriteCallback callbackOf(const std::string& option)
{
    return reinterpret_cast<WriteCallback>(pointerOf(option));
}

class CurlObject : public ObservedTest {};

}  // namespace

TEST_F(CurlObject, SetsWhatEveryRequestNeedsInAFixedOrder)
{
    const Curl curl;

    EXPECT_EQ(options(), (List{"HEADERFUNCTION", "HEADERDATA", "WRITEFUNCTION", "WRITEDATA", "VERBOSE",
                               "TIMEOUT", "NOSIGNAL"}));
    EXPECT_EQ(valuesOf("VERBOSE"), List{"0"});
    EXPECT_EQ(valuesOf("TIMEOUT"), List{"60"});
    EXPECT_EQ(valuesOf("NOSIGNAL"), List{"1"});
}

TEST_F(CurlObject, TakesHeadersAndBodyWithOneCallbackIntoTwoStreams)
{
    const Curl curl;

    EXPECT_EQ(pointerOf("HEADERFUNCTION"), pointerOf("WRITEFUNCTION"));
    EXPECT_NE(pointerOf("HEADERDATA"), pointerOf("WRITEDATA"));
}

TEST_F(CurlObject, InitialisesLibcurlBeforeItMakesItsHandle)
{
    const Curl curl;

    EXPECT_EQ(Calls::order({"curl_global_init", "curl_easy_init"}),
              (List{"curl_global_init", "curl_easy_init"}));
    EXPECT_EQ(Calls::of("curl_global_init").at(0).arguments, List{"3"});
}

TEST_F(CurlObject, TwoAtOnceInitialiseOnceAndTheSecondToGoCleansUp)
{
    auto first = std::make_unique<Curl>();
    auto second = std::make_unique<Curl>();
    EXPECT_EQ(Calls::count("curl_global_init"), 1U);

    first.reset();
    EXPECT_EQ(Calls::count("curl_global_cleanup"), 0U);
    second.reset();
    EXPECT_EQ(Calls::count("curl_global_cleanup"), 1U);
}

TEST_F(CurlObject, OneAfterTheOtherInitialiseAndCleanUpEachTime)
{
    for (int i = 0; i < 3; ++i)
        Curl();

    EXPECT_EQ(Calls::order({"curl_global_init", "curl_global_cleanup"}),
              (List{"curl_global_init", "curl_global_cleanup", "curl_global_init", "curl_global_cleanup",
                    "curl_global_init", "curl_global_cleanup"}));
}

TEST_F(CurlObject, ManyThreadsCleanUpAsOftenAsTheyInitialise)
{
    const Curl outer;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] {
            for (int j = 0; j < 50; ++j)
                Curl();
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(Calls::count("curl_global_init"), 1U);
    EXPECT_EQ(Calls::count("curl_global_cleanup"), 0U);
}

TEST_F(CurlObject, EndsWithItsHandleItsHeadersAndThenLibcurl)
{
    {
        Curl curl;
        curl.appendHeader("X-One: 1");
        Calls::reset();
    }

    EXPECT_EQ(Calls::order({"curl_easy_cleanup", "curl_slist_free_all", "curl_global_cleanup"}),
              (List{"curl_easy_cleanup", "curl_slist_free_all", "curl_global_cleanup"}));
}

TEST_F(CurlObject, EndsWithoutAListWhereNoHeaderWasAppended)
{
    {
        const Curl curl;
    }

    EXPECT_EQ(Calls::count("curl_slist_free_all"), 0U);
}

TEST_F(CurlObject, WritesEveryByteItIsGiven)
{
    const Curl curl;
    std::stringstream stream;
    char data[] = "a\0b";

    EXPECT_EQ(callbackOf("WRITEFUNCTION")(data, 1, 3, &stream), 3U);
    EXPECT_EQ(callbackOf("WRITEFUNCTION")(data, 3, 1, &stream), 3U);
    EXPECT_EQ(stream.str(), std::string("a\0ba\0b", 6));
}

TEST_F(CurlObject, WritesNothingForASizeOrCountOfZero)
{
    const Curl curl;
    std::stringstream stream;
    char data[] = "abc";

    EXPECT_EQ(callbackOf("WRITEFUNCTION")(data, 0, 3, &stream), 0U);
    EXPECT_EQ(callbackOf("WRITEFUNCTION")(data, 1, 0, &stream), 0U);
    EXPECT_EQ(stream.str(), "");
}

TEST_F(CurlObject, NeverTellsLibcurlOfAnErrorOfTheStream)
{
    const Curl curl;
    std::stringstream stream;
    stream.setstate(std::ios::badbit);
    char data[] = "abc";

    EXPECT_EQ(callbackOf("WRITEFUNCTION")(data, 1, 3, &stream), 3U);
}

TEST_F(CurlObject, WithoutAHandleNothingIsAnswered)
{
    Calls::fail("curl_easy_init", 0);
    Curl curl;

    EXPECT_EQ(curl.mHandle, nullptr);
    EXPECT_EQ(curl.perform(), 0);
    EXPECT_EQ(errors().size(), 1U);
    EXPECT_EQ(curl.getBody(), "");
}

TEST_F(CurlObject, AHandleThatCouldNotBePreparedSendsNothing)
{
    for (std::size_t option : {1, 2, 3, 4, 6}) {  // the streams, the time limit
        Calls::fail("curl_easy_setopt", CURLE_OUT_OF_MEMORY, option);
        Curl curl;
        EXPECT_EQ(curl.perform(), 0) << option;
    }

    EXPECT_EQ(Calls::count("curl_easy_perform"), 0U);
    EXPECT_EQ(errorMessages(), List(5, "curl_easy_perform() failed: Out of memory"));
}

TEST_F(CurlObject, EscapesWhatAUrlCannotHold)
{
    Curl curl;

    EXPECT_EQ(curl.encode(""), "");
    EXPECT_EQ(curl.encode("oat milk"), "oat%20milk");
    EXPECT_EQ(curl.encode("a&b=c"), "a%26b%3Dc");
    EXPECT_EQ(curl.encode("AZaz09-._~"), "AZaz09-._~");
    EXPECT_EQ(curl.encode("/?#+%\"'"), "%2F%3F%23%2B%25%22%27");
    EXPECT_EQ(curl.encode("\x01\r\n\x7F"), "%01%0D%0A%7F");
    EXPECT_EQ(errors(), List());
}

TEST_F(CurlObject, EscapesTheBytesOfUtf8AndOfAnythingElse)
{
    Curl curl;

    EXPECT_EQ(curl.encode("Cr\xC3\xA8me"), "Cr%C3%A8me");
    EXPECT_EQ(curl.encode("\xEC\x9A\xB0\xEC\x9C\xA0"), "%EC%9A%B0%EC%9C%A0");
    EXPECT_EQ(curl.encode("\xFF\xFE"), "%FF%FE");
}

TEST_F(CurlObject, EscapesZeroBytes)
{
    Curl curl;

    EXPECT_EQ(curl.encode(std::string("a\0b", 3)), "a%00b");
    EXPECT_EQ(curl.encode(std::string("\0", 1)), "%00");
    EXPECT_EQ(Calls::of("curl_easy_escape").at(0).arguments.at(1), "3");
}

TEST_F(CurlObject, EscapesLongTexts)
{
    Curl curl;
    std::string expected;
    for (int i = 0; i < 100'000; ++i)
        expected += "%20";

    EXPECT_EQ(curl.encode(std::string(100'000, ' ')), expected);
}

TEST_F(CurlObject, ATextThatCannotBeEscapedComesBackAsItIs)
{
    Curl curl;
    Calls::fail("curl_easy_escape", 0);

    EXPECT_EQ(curl.encode("oat milk"), "oat milk");
    EXPECT_EQ(errors(), List{"Curl.cpp: encode(107) > curl_easy_escape failed"});
    EXPECT_EQ(curl.encode("oat milk"), "oat%20milk");
}
