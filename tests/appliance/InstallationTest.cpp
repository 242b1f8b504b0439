#include "Installation.h"

#include <gtest/gtest.h>

#include "LoginFile.h"
#include "Root.h"
#include "SiteValues.h"

// Of a build folder, which these tests run in. How it is when installed the tests of the packages say.
namespace {

namespace fs = std::filesystem;

const fs::path BuildFolder = BUILD_FOLDER;

TEST(ABuildFolder, HoldsItsProgramsInOneFolder)
{
    EXPECT_EQ(Appliance::programFile("appliance"), BuildFolder / "bin" / "appliance");
    EXPECT_EQ(Appliance::programFile("merchant-bridge"), BuildFolder / "bin" / "merchant-bridge");
}

TEST(ABuildFolder, HoldsTheStockOfEachProgram)
{
    EXPECT_EQ(Appliance::shareFolder("retailer"), BuildFolder / "share" / "carvoy-appliance" / "retailer");
    EXPECT_TRUE(fs::exists(Appliance::shareFolder("retailer") / "catalogue.json"));
    EXPECT_TRUE(fs::exists(Appliance::shareFolder("screen") / "page" / "index.html"));
}

TEST(ABuildFolder, HoldsTheAppliancesThatWereGivenNoFolder)
{
    const Appliance::State state = Appliance::state();
    EXPECT_EQ(state.folder, BuildFolder);
    EXPECT_EQ(state.appliance, BuildFolder / "appliance");
    EXPECT_EQ(state.runs, BuildFolder / "run");
}

TEST(TheLoginFile, OfABuildFolderIsTheSameForEachRoot)
{
    EXPECT_EQ(Tool::loginFile({"/one"}), CARVOY_RETAILER_LOGIN_FILE);
    EXPECT_EQ(Tool::loginFile({"/other"}), CARVOY_RETAILER_LOGIN_FILE);
}

}  // namespace
