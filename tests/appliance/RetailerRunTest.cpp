// The tool's searches at the retailer, with all programs.
#include <gtest/gtest.h>


#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>

#include "LoginFile.h"
#include "ScratchRoot.h"
#include "SiteValues.h"
#include "ToolFixture.h"

namespace {

using namespace TestSupport;
namespace fs = std::filesystem;

const fs::path LoginFile = CARVOY_RETAILER_LOGIN_FILE;

std::optional<std::string> loginContent()
{
    std::ifstream in(LoginFile);
    if (!in) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void writeLogin(const std::string& content)
{
    fs::create_directories(LoginFile.parent_path());
    std::ofstream(LoginFile) << content;
}

// A user who is logged in; what was there before is put back.
template <typename Base>
class LoggedIn : public Base {
  protected:
    void SetUp() override
    {
        before_ = loginContent();
        writeLogin("login\n");
    }

    void TearDown() override
    {
        if (before_) {
            writeLogin(*before_);
        } else {
            fs::remove(LoginFile);
        }
    }

  private:
    std::optional<std::string> before_;
};

using ARunAtTheRetailer = LoggedIn<testing::Test>;
using AnApplianceWithARetailer = LoggedIn<ARunningAppliance>;

Ended retailerRun(Words arguments, const ChildProcess::Variables& variables = {})
{
    arguments.insert(arguments.begin(), {"run", "--retailer"});
    return tool(arguments, variables);
}

std::string rootIn(const std::string& output)
{
    const std::size_t start = output.find('/', output.find("✓ picture 1"));
    const std::string path = output.substr(start, output.find('\n', start) - start);
    EXPECT_TRUE(has(path, "/media/tmp/")) << output;
    return path.substr(0, path.find("/media/tmp/"));
}

// With ROOT in the place of the run's own folder.
std::string withoutRoot(std::string output)
{
    const std::string root = rootIn(output);
    for (std::size_t at = 0; (at = output.find(root, at)) != std::string::npos;) {
        output.replace(at, root.size(), "ROOT");
    }
    return output;
}

const char MilkRun[] =
    "“우유” at the retailer: 6 products\n"
    "\n"
    "#  Product                     Type  Discount       Before    Price\n"
    "1  초록들 유기농 우유 900mL    11    1,000원 할인           4,980원\n"
    "2  햇살목장 저지방 우유 1L     30    1+1                    2,850원\n"
    "3  가벼운 무지방 우유 930mL                                 2,790원\n"
    "4  속편한 락토프리 우유 900mL  A0    카드 20% 할인          3,480원\n"
    "5  초코 우유 200mL 3입         60    2+1                    2,480원\n"
    "6  딸기 우유 200mL 3입         60    2+1                    2,480원\n"
    "\n"
    "✓ picture 1  ROOT/media/tmp/10.jpg\n"
    "✓ badge   1  ROOT/media/tmp/12.png\n"
    "✓ picture 2  ROOT/media/tmp/20.gif\n"
    "✓ badge   2  ROOT/media/tmp/22.png\n"
    "✓ picture 3  ROOT/media/tmp/30.png\n"
    "✓ badge   3  ROOT/media/tmp/32.png\n"
    "✓ picture 4  ROOT/media/tmp/40.jpg\n"
    "✓ badge   4  ROOT/media/tmp/42.png\n"
    "✓ picture 5  ROOT/media/tmp/50.gif\n"
    "✓ badge   5  ROOT/media/tmp/52.png\n"
    "✓ picture 6  ROOT/media/tmp/60.jpg\n"
    "✓ badge   6  ROOT/media/tmp/62.png\n"
    "\n"
    "Status record “Commerce”\n"
    "\n"
    "isLoggedIn  isLinked  totalCount  productCountInCart  currentViewType\n"
    "         1         1           6                   –                –\n"
    "\n"
    "db/nuvex/e-commerce/response = 1\n";

TEST_F(ARunAtTheRetailer, ShowsTheCardWithBothKindsOfPictures)
{
    const Ended run = retailerRun({"우유"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(withoutRoot(run.output), MilkRun);
    EXPECT_LE(count(run.errors, "waiting for picture 6 of 6\n"), 1U) << run.errors;
    EXPECT_FALSE(fs::exists(rootIn(run.output)));
    EXPECT_EQ(loginContent(), "login\n");
}

TEST_F(ARunAtTheRetailer, LooksTheSameInALocaleWithoutUtf8)
{
    const Ended run = retailerRun({}, {{"LC_ALL", "C"}});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(withoutRoot(run.output), MilkRun);
}

TEST_F(ARunAtTheRetailer, IsOneObjectInJson)
{
    const Ended run = retailerRun({"--json", "흰우유"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.errors, "");
    const nlohmann::json json = nlohmann::json::parse(run.output, nullptr, false);
    ASSERT_TRUE(json.is_object()) << run.output;
    EXPECT_EQ(json["card"]["source"], "retailer");
    EXPECT_EQ(json["card"]["merchant"], "");
    ASSERT_EQ(json["card"]["total"], 2);
    const nlohmann::json& product = json["card"]["products"][0];
    EXPECT_EQ(product["name"], "햇살목장 흰우유 1L");
    EXPECT_EQ(product["price"], "2,980원");
    EXPECT_EQ(product["discount"], "10%");
    EXPECT_EQ(product["discountType"], "10");
    EXPECT_EQ(product["id"], "1000024500137");
    EXPECT_TRUE(has(product["picture"], "/media/tmp/10.png"));
    EXPECT_TRUE(has(product["badge"], "/media/tmp/12.png"));
    EXPECT_EQ(json["card"]["products"][1]["badge"], "");
    EXPECT_EQ(json["loginTrouble"], "");
    EXPECT_EQ(json["errors"], nlohmann::json::array());
    EXPECT_EQ(json["status"]["Commerce"]["isLinked"], 1);
    EXPECT_TRUE(json["voice"].is_null());
}

TEST_F(ARunAtTheRetailer, MayBeLoggedOut)
{
    writeLogin("as for the login: yes\n");
    const Ended run = retailerRun({"--logged-out"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.output,
              "“우유” at the retailer: 0 products\n"
              "\n"
              "✗ not logged in at the retailer: " +
                  LoginFile.string() +
                  " begins with “logout”\n"
                  "\n"
                  "Status record “Commerce”\n"
                  "\n"
                  "isLoggedIn  isLinked  totalCount  productCountInCart  currentViewType\n"
                  "         0         0           0                   –                –\n"
                  "\n"
                  "db/nuvex/e-commerce/response = 1\n");
    EXPECT_EQ(loginContent(), "as for the login: yes\n");
}

TEST_F(ARunAtTheRetailer, LeavesALoginFileThatSomebodyWrote)
{
    writeLogin("LOGIN\n");
    const Ended run = retailerRun({"--json", "우유"});
    EXPECT_EQ(run.status, 1);
    const nlohmann::json json = nlohmann::json::parse(run.output, nullptr, false);
    ASSERT_TRUE(json.is_object()) << run.output;
    EXPECT_EQ(json["loginTrouble"], LoginFile.string() + " begins with “LOGIN”");
    EXPECT_EQ(json["errors"], nlohmann::json({"No matching value for emart - ecommerce login: LOGIN"}));
    EXPECT_EQ(json["status"]["Commerce"]["isLoggedIn"], 0);
    EXPECT_EQ(loginContent(), "LOGIN\n");
}

TEST_F(ARunAtTheRetailer, LogsInWhereThereIsNoFile)
{
    fs::remove(LoginFile);
    const Ended run = retailerRun({"--no-pictures", "흰우유"});
    EXPECT_EQ(run.status, 0) << run.errors << run.output;
    EXPECT_EQ(loginContent(), "login\n");
}

TEST_F(ARunAtTheRetailer, WaitsForAnotherSearchThere)
{
    Tool::EventLoop loop;
    const Tool::LoginHold other(loop, LoginFile, false, Patience);
    const Ended run = retailerRun({"--timeout", "0.2"});
    EXPECT_EQ(run.status, 4);
    EXPECT_EQ(run.output, "");
    EXPECT_TRUE(has(run.errors, "\nwaiting for another search at the retailer\n")) << run.errors;
    EXPECT_TRUE(has(run.errors, "appliance: another search at the retailer is under way\n")) << run.errors;
    const Ended atMerchant = tool({"run", "--no-pictures", "--no-say"});
    EXPECT_EQ(atMerchant.status, 0) << atMerchant.errors;
}

struct Trouble {
    const char* words;
    const char* error;
};

class ATroubledRun : public LoggedIn<testing::TestWithParam<Trouble>> {};

TEST_P(ATroubledRun, FailsAndSaysWhy)
{
    const Ended run = retailerRun({"우유", GetParam().words});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(has(run.output, "at the retailer: 0 products\n\n✗ " + std::string(GetParam().error) + "\n"))
        << run.output;
    EXPECT_FALSE(has(run.output, "not logged in at the retailer"));
    EXPECT_TRUE(has(run.output, "Status record"));
}

INSTANTIATE_TEST_SUITE_P(OfTheRetailer, ATroubledRun,
                         testing::Values(Trouble{"~status=503", "curl perform failed: 503"},
                                         Trouble{"~status=403", "curl perform failed: 403"},
                                         Trouble{"~status=401", "Not logged in"},
                                         Trouble{"~garbage", "json_parser_load_from_data() failed"},
                                         Trouble{"~none", "empty json array"}));

TEST_F(ARunAtTheRetailer, TellsOfAPictureThatCannotBeHad)
{
    const Ended run = retailerRun({"우유 ~image-404=2"});
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(count(run.output, "✓ picture"), 5U) << run.output;
    EXPECT_EQ(count(run.output, "✓ badge"), 6U);
    EXPECT_TRUE(has(run.output, "✗ picture 2  Failed to startDownload for index 1, type: 0: ")) << run.output;
}

TEST_F(ARunAtTheRetailer, AwaitsNoPictureThatThereIsNot)
{
    const Ended odd = retailerRun({"우유 ~odd-types"});
    EXPECT_EQ(odd.status, 0) << odd.errors;
    EXPECT_TRUE(has(odd.output, "at the retailer: 6 products")) << odd.output;
    EXPECT_FALSE(has(odd.output, "✓ "));
    EXPECT_TRUE(has(odd.output, "\n\nStatus record")) << odd.output;
    EXPECT_FALSE(has(odd.output, "\n\n\n")) << odd.output;
    const Ended withoutBadges = retailerRun({"크림 롤케이크"});
    EXPECT_EQ(withoutBadges.status, 0) << withoutBadges.errors;
    EXPECT_EQ(count(withoutBadges.output, "✓ picture"), 1U) << withoutBadges.output;
    EXPECT_EQ(count(withoutBadges.output, "✓ badge"), 0U) << withoutBadges.output;
}

TEST_F(ARunAtTheRetailer, ThatTakesTooLongEnds)
{
    const Ended run = retailerRun({"--timeout", "1", "우유 ~image-stall"});
    EXPECT_EQ(run.status, 4);
    EXPECT_TRUE(has(run.errors, "came in time")) << run.errors;
}

TEST_F(ARunAtTheRetailer, KnowsNeitherMerchantsNorVoice)
{
    const auto refused = [](const Words& arguments, const std::string& why) {
        const Ended end = tool(arguments);
        EXPECT_EQ(end.status, 2);
        EXPECT_EQ(end.output, "");
        EXPECT_TRUE(has(end.errors, why)) << end.errors;
    };
    for (const char* command : {"run", "search"}) {
        refused({command, "--retailer", "--merchant", "freshmart", "우유"}, "--merchant excludes --retailer");
        refused({command, "--merchant", "freshmart", "--retailer", "우유"}, "--merchant excludes --retailer");
        refused({command, "--logged-out", "우유"}, "--logged-out requires --retailer");
    }
    refused({"run", "--retailer", "--say", "check out"},
            "--say: voice chooses among what a merchant's search found, and excludes --retailer");
    for (const char* command : {"run", "search"}) {
        refused({command, "--retailer", ""}, "TERM: it is empty");
        refused({command, ""}, "TERM: it is empty");
        EXPECT_TRUE(has(tool({command, "--help"}).output, "--retailer --logged-out"));
    }
    refused({"search", "--retailer"}, "TERM is required");
    EXPECT_TRUE(has(tool({"run", "--help"}).output, "--retailer"));
}

TEST_F(AnApplianceWithARetailer, AnswersSearchesOfThisAndThat)
{
    fs::remove(ScratchRoot::file("up") + "/log/retailer.log");  // the retailer appends to it
    up();
    const Ended search = on({"search", "--retailer", "흰우유"});
    EXPECT_EQ(search.status, 0) << search.errors;
    EXPECT_EQ(count(search.output, "✓ picture"), 2U) << search.output;
    EXPECT_EQ(count(search.output, "✓ badge"), 1U) << search.output;

    const Ended again = on({"result", "--retailer"});
    EXPECT_EQ(again.status, 0) << again.errors;
    EXPECT_EQ(again.output, search.output);

    EXPECT_EQ(on({"search", "--retailer", "--logged-out", "흰우유"}).status, 1);
    const Ended nothing = on({"result", "--retailer"});
    EXPECT_EQ(nothing.output, "“흰우유” at the retailer: 0 products\n");

    const Ended milk = on({"search", "milk"});
    EXPECT_EQ(milk.status, 0) << milk.errors;
    EXPECT_EQ(count(milk.output, "✓ picture"), 6U) << milk.output;
    EXPECT_TRUE(has(on({"result"}).output, "“milk” at freshmart: 6 products"));
    EXPECT_EQ(on({"search", "--retailer", "흰우유"}).status, 0);
    const nlohmann::json merchants = nlohmann::json::parse(on({"result", "--json"}).output);
    EXPECT_EQ(merchants["source"], "merchant");
    EXPECT_EQ(merchants["total"], 6);
    down();

    std::ifstream log(root_ + "/log/retailer.log");
    const std::string requests(std::istreambuf_iterator<char>(log), {});
    EXPECT_EQ(count(requests, " POST /api/refrigerator/search/datas.ssg 200\n"), 2U) << requests;
    EXPECT_EQ(count(requests, " GET /ui/app/6001/icon/90.png 200\n"), 2U) << requests;
}

TEST_F(AnApplianceWithARetailer, TakesRequestsOfOthers)
{
    up();
    EXPECT_EQ(on({"send", "--extra", "key_search_term=흰우유", "org.tizen.carvoy-retailer", "service:search"})
                  .status,
              0);
    const Ended result = on({"result", "--retailer", "--json"});
    EXPECT_EQ(result.status, 0) << result.errors;
    const nlohmann::json card = nlohmann::json::parse(result.output, nullptr, false);
    ASSERT_TRUE(card.is_object()) << result.output;
    EXPECT_EQ(card["term"], "흰우유");
    EXPECT_EQ(card["total"], 2);
    down();
}

// The thread that fetches the first search's second picture gives it up while the second search's is under
// way.
TEST_F(AnApplianceWithARetailer, DoesNotTakeAnEarlierSearchsFailureForItsOwn)
{
    up();
    ChildProcess earlier({APPLIANCE_TOOL, "search", "--root", root_, "--retailer", "우유 ~image-stall=2"});
    ASSERT_TRUE(earlier.waitForOutput("✓ badge   1")) << earlier.output();
    const Ended search = on({"search", "--retailer", "--json", "흰우유 ~slow-images=4s"});
    EXPECT_EQ(search.status, 0) << search.errors;
    const nlohmann::json json = nlohmann::json::parse(search.output, nullptr, false);
    ASSERT_TRUE(json.is_object()) << search.output;
    EXPECT_EQ(json["picturesGivenUp"], nlohmann::json::array());
    EXPECT_EQ(json["errors"], nlohmann::json::array());
    EXPECT_TRUE(has(json["card"]["products"][1]["picture"], "/media/tmp/20."));
    EXPECT_EQ(earlier.wait().status, 1);
    EXPECT_TRUE(has(earlier.errors(), "a newer search took the card")) << earlier.errors();
    down();
}

TEST_F(AnApplianceWithARetailer, EndsWellWithPicturesUnderWay)
{
    up();
    EXPECT_EQ(on({"search", "--retailer", "--no-pictures", "우유 ~slow-images=3s"}).status, 0);
    down();
    EXPECT_FALSE(fs::exists(root_ + "/media/tmp"));
}

TEST_F(AnApplianceWithARetailer, EndsWhenTheRetailersServiceDoes)
{
    up();
    kill(processes().at("carvoy-retailer"), SIGKILL);
    EXPECT_EQ(up_->wait().status, 1);
    EXPECT_TRUE(has(up_->errors(), "carvoy-retailer ended unexpectedly: killed by signal 9"))
        << up_->errors();
}

}  // namespace
