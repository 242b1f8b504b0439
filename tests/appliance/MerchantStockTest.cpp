#include "MerchantStock.h"

#include <gtest/gtest.h>

namespace {

TEST(TheMerchants, AreThoseOfTheBridgesCatalogue)
{
    EXPECT_EQ(Tool::merchantIds(), (std::vector<std::string>{"freshmart", "greengrocer", "corner-store"}));
}

}  // namespace
