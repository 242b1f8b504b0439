// The tests run where they may mount.
#include <gtest/gtest.h>

#include "OwnMounts.h"

int main(int argc, char** argv)
{
    ServiceTest::enterOwnMounts(argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
