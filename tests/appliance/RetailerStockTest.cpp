#include "RetailerStock.h"

#include <gtest/gtest.h>

namespace {

using Ui::PictureKind;

TEST(TheRetailersStock, KnowsWhichPicturesAProductHas)
{
    const Tool::RetailerStock stock;
    const char withBadge[] = "1000024500137";
    EXPECT_TRUE(stock.has(withBadge, PictureKind::Product));
    EXPECT_TRUE(stock.has(withBadge, PictureKind::Badge));
    const char withoutBadge[] = "1000024500274";
    EXPECT_TRUE(stock.has(withoutBadge, PictureKind::Product));
    EXPECT_FALSE(stock.has(withoutBadge, PictureKind::Badge));
    const char withABadgeThatHasNoIcon[] = "1000024510138";
    EXPECT_TRUE(stock.has(withABadgeThatHasNoIcon, PictureKind::Product));
    EXPECT_FALSE(stock.has(withABadgeThatHasNoIcon, PictureKind::Badge));
}

TEST(TheRetailersStock, HasNothingOfWhatItDoesNotSell)
{
    const Tool::RetailerStock stock;
    for (const char* id : {"", "1", "x"}) {
        EXPECT_FALSE(stock.has(id, PictureKind::Product)) << id;
        EXPECT_FALSE(stock.has(id, PictureKind::Badge)) << id;
    }
}

}  // namespace
