// Paths that the platform puts together.
#include "PlatformPath.h"

#include <gtest/gtest.h>

#include "ScratchRoot.h"

TEST(PlatformPath, LiesInTheVariablesFolder)
{
    EXPECT_EQ(Util::platformPath(TZ_USER_CONTENT, "tmp"), TestSupport::ScratchRoot::file("media/tmp"));
}

TEST(PlatformPath, IsEmptyWhereThePlatformHasNone)
{
    EXPECT_EQ(Util::platformPath(_TZPLATFORM_VARIABLES_INVALID_, "tmp"), "");
    EXPECT_EQ(Util::platformPath(TZ_USER_CONTENT, nullptr), "");
}
