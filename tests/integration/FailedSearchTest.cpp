// Every way in which a search can fail: what is logged, what is kept, and that the next one works.
#include <gtest/gtest.h>

#include <filesystem>

#include "FailedSearch.h"
#include "SiteValues.h"

namespace ServiceTest {

namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

using Logged::NoTokenFile;
using Logged::Parse;
using Logged::Send;

class World;

struct Failure {
    const char* name;
    std::function<void(World&)> arrange;
    Texts logged;
    bool isLoggedIn;
    bool isLinked;
};

std::ostream& operator<<(std::ostream& stream, const Failure& failure)
{
    return stream << failure.name;
}

class World : public FailedSearch, public testing::WithParamInterface<Failure> {
  public:
    using FailedSearch::shop;
    using FailedSearch::term;

    void answer(const Answer& answer) { merchant->answer(Merchant::SearchPath, answer); }
    void answer(const std::string& body) { answer(Answer{200, body}); }
    void close() { merchant.reset(); }
    void tokens(const std::string& content) { writeTokens(content); }
    void noTokenFile() { fs::remove(tokenFile()); }
    void tokenFolder()
    {
        noTokenFile();
        fs::create_directory(tokenFile());
    }
    void noTokenFolder() { fs::remove_all(fs::path(tokenFile()).parent_path()); }
};

using AFailedSearch = World;

TEST_P(AFailedSearch, IsLoggedAndKeptAndLeavesTheNextOneUnharmed)
{
    GetParam().arrange(*this);

    expectFailure(GetParam().logged, GetParam().isLoggedIn, GetParam().isLinked);
}

Failure status(const char* name, int code)
{
    return {name,
            [code](World& world) {
                world.answer(Answer{code, "{\"products\": [{\"name\": \"x\"}]}"});
            },
            {Send + "curl perform failed: " + std::to_string(code)},
            true,
            false};
}

Failure badAnswer(const char* name, const std::string& body, const std::string& message)
{
    return {name, [body](World& world) { world.answer(body); }, {Parse + message}, true, true};
}

Failure noRequest(const char* name, const std::function<void(World&)>& arrange, const Texts& logged)
{
    return {name, arrange, logged, false, false};
}

const std::string NotJson = "json_parser_load_from_data() failed";
const std::string NoTokens = Send + "Invalid access token";

const Failure Failures[] = {
    noRequest("NoTerm", [](World& world) { world.term = ""; }, {Send + "Invalid extra data"}),
    noRequest("NoMerchant", [](World& world) { world.shop = ""; }, {Send + "Invalid extra data"}),
    noRequest("NoTokenFile", [](World& world) { world.noTokenFile(); }, {NoTokenFile, NoTokens}),
    noRequest("NoTokenFolder", [](World& world) { world.noTokenFolder(); }, {NoTokenFile, NoTokens}),
    noRequest("FolderForATokenFile", [](World& world) { world.tokenFolder(); }, {NoTokens}),
    noRequest("EmptyTokenFile", [](World& world) { world.tokens(""); }, {NoTokens}),
    noRequest("EmptyFirstLine", [](World& world) { world.tokens("\nsession,access"); }, {NoTokens}),
    noRequest("NoAccessToken", [](World& world) { world.tokens("session,"); }, {NoTokens}),
    noRequest("NoSessionToken", [](World& world) { world.tokens(",access"); }, {NoTokens}),
    noRequest("NotLoggedIn", [](World& world) { world.answer(Answer{401}); }, {Send + "Not logged in"}),
    status("Forbidden", 403),
    status("Created", 201),
    status("ServerError", 500),
    status("Unavailable", 503),
    Failure{"Refused", [](World& world) { world.close(); }, Logged::noAnswer("Couldn't connect to server"),
            true, false},
    badAnswer("Garbage", "\x01\x02 garbage \xff", NotJson),
    badAnswer("Html", "<html><body>Welcome</body></html>", NotJson),
    badAnswer("HalfJson", "{\"products\": [{\"name\":", NotJson),
    badAnswer("Empty", "", "json_parser_get_root() failed"),
    badAnswer("Nested", std::string(100'000, '['), NotJson),
    badAnswer("NestedWell", "{\"products\": " + std::string(100'000, '[') + std::string(100'000, ']') + "}",
              NotJson),
    badAnswer("Array", "[{\"products\": []}]", "Invalid json type"),
    badAnswer("NoProducts", "{\"items\": []}", "no member: products"),
    badAnswer("ProductsOfAnotherType", "{\"products\": {}}", "json_object_get_array_member() failed"),
    badAnswer("NullProducts", "{\"products\": null}", "json_object_get_array_member() failed"),
    badAnswer("NoneFound", "{\"products\": []}", "empty json array"),
};

INSTANTIATE_TEST_SUITE_P(By, AFailedSearch, testing::ValuesIn(Failures),
                         [](const auto& failure) { return failure.param.name; });

}  // namespace

}  // namespace ServiceTest
