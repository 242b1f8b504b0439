#include "StatusView.h"

#include <gtest/gtest.h>
#include <nuvex-da-db.h>

#include <fstream>

#include "Root.h"
#include "ScratchRoot.h"

namespace {

Tool::Root ownRoot()
{
    return {TestSupport::ScratchRoot::path()};
}

void writeTotal(int total)
{
    ndd_manager_h manager = nullptr;
    ndd_bundle_h bundle = nullptr;
    ASSERT_EQ(ndd_manager_create("Commerce", &manager), 0);
    ASSERT_EQ(ndd_bundle_create(&bundle), 0);
    ndd_bundle_add_int(bundle, "id", 0);
    ndd_bundle_add_int(bundle, "totalCount", total);
    if (ndd_manager_insert(manager, bundle) != 0) {
        EXPECT_EQ(ndd_manager_update(manager, bundle), 0);
    }
    ndd_bundle_destroy(bundle);
    ndd_manager_destroy(manager);
}

TEST(AStatusRecord, ThatNobodyWroteIsNone)
{
    EXPECT_EQ(Appliance::readStatusRecord(TestSupport::ScratchRoot::file("nowhere.sqlite")), std::nullopt);
}

TEST(AStatusRecord, HasNothingInAColumnThatNobodyWrote)
{
    writeTotal(6);
    const auto record = Appliance::readStatusRecord(ownRoot().dataStore());
    ASSERT_TRUE(record);
    EXPECT_EQ((*record)[2], 6);
    EXPECT_EQ((*record)[0], std::nullopt);
    EXPECT_EQ((*record)[4], std::nullopt);
}

TEST(AStatusRecord, OfADamagedStoreIsAnError)
{
    const std::string file = TestSupport::ScratchRoot::file("damaged.sqlite");
    std::ofstream(file) << std::string(5000, 'x');
    EXPECT_THROW(Appliance::readStatusRecord(file), std::runtime_error);
}

TEST(AStatusRecord, ShowsADashForNothing)
{
    Tool::useUtf8();
    const Appliance::StatusRecord record = {1, 0, 6, std::nullopt, std::nullopt};
    EXPECT_EQ(Tool::statusText(record, 1, {}),
              "Status record “Commerce”\n"
              "\n"
              "isLoggedIn  isLinked  totalCount  productCountInCart  currentViewType\n"
              "         1         0           6                   –                –\n"
              "\n"
              "db/nuvex/e-commerce/response = 1\n");
    EXPECT_NE(Tool::statusText(std::nullopt, std::nullopt, {}).find("response = –\n"), std::string::npos);
}

TEST(AStatusRecord, IsNullInJsonWhereThereIsNothing)
{
    const Appliance::StatusRecord record = {1, 0, 6, std::nullopt, std::nullopt};
    const nlohmann::json json = Tool::statusJson(record, std::nullopt);
    EXPECT_EQ(json["Commerce"]["totalCount"], 6);
    EXPECT_TRUE(json["Commerce"]["currentViewType"].is_null());
    EXPECT_TRUE(json["db/nuvex/e-commerce/response"].is_null());
    EXPECT_TRUE(Tool::statusJson(std::nullopt, 1)["Commerce"].is_null());
}

}  // namespace
