// The stock that is served, and the search over it.
#include "Catalogue.h"

#include "Pictures.h"
#include "ScratchRoot.h"
#include "SearchText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <utility>

namespace {

using namespace Appliance::MerchantBridge;
using namespace Appliance::StandIn;

using Names = std::vector<std::string>;

const Catalogue& stock()
{
    static const Catalogue catalogue(MERCHANT_BRIDGE_CATALOGUE);
    return catalogue;
}

Merchant merchantSelling(const Names& names)
{
    Merchant merchant;
    for (const std::string& name : names)
        merchant.products.push_back({name, "", "", "", {}});
    return merchant;
}

Names find(const Names& names, const std::string& term)
{
    const Merchant merchant = merchantSelling(names);
    Names found;
    for (const Product* product : search(merchant, term))
        found.push_back(product->name);
    return found;
}

std::size_t countOf(const std::string& merchant, const std::string& term)
{
    return search(*stock().find(merchant), term).size();
}

template <typename Check>
void forEachProduct(Check check)
{
    for (const Merchant& merchant : stock().merchants())
        for (const Product& product : merchant.products)
            check(product);
}

std::string writeCatalogue(const std::string& text)
{
    std::string file = TestSupport::ScratchRoot::file("catalogue-under-test.json");
    std::ofstream(file, std::ios::trunc) << text;
    return file;
}

TEST(TheStock, IsThatOfThreeMerchantsWithEightyProductsAndMore)
{
    std::size_t count = 0;
    forEachProduct([&](const Product&) { ++count; });
    EXPECT_GE(count, 90U);
    ASSERT_EQ(stock().merchants().size(), 3U);
    for (const char* id : {"freshmart", "greengrocer", "corner-store"})
        ASSERT_TRUE(stock().find(id)) << id;
    EXPECT_EQ(stock().find("nobody"), nullptr);
    EXPECT_EQ(stock().find(""), nullptr);
}

TEST(TheStock, HasUniqueVariantReferences)
{
    std::set<std::string> seen;
    forEachProduct([&](const Product& product) {
        for (const Variant& variant : product.variants)
            EXPECT_TRUE(seen.insert(variant.reference).second) << variant.reference;
    });
}

TEST(TheStock, HasSensiblePricesOfWhichManyAreReduced)
{
    std::size_t all = 0;
    std::size_t reduced = 0;
    forEachProduct([&](const Product& product) {
        for (const Variant& variant : product.variants) {
            ++all;
            reduced += variant.formerAmount ? 1 : 0;
            EXPECT_GT(variant.amount, 0) << product.name;
            EXPECT_GT(variant.formerAmount.value_or(variant.amount + 1), variant.amount) << product.name;
            EXPECT_FALSE(variant.size.empty()) << product.name;
        }
    });
    EXPECT_GT(reduced * 4, all);
    EXPECT_LT(reduced, all);
}

TEST(TheStock, HasAPictureForEveryProductWhoseBytesAreOfTheTypeItsNameSays)
{
    const std::map<std::string, std::pair<std::string, std::string>> kinds{
        {".png", {"image/png", "\x89PNG\r\n\x1A\n"}},
        {".jpg", {"image/jpeg", "\xFF\xD8\xFF"}},
        {".gif", {"image/gif", "GIF8"}}};
    const Pictures pictures(MERCHANT_BRIDGE_PICTURES);
    std::map<std::string, int> counts;
    forEachProduct([&](const Product& product) {
        const Picture* picture = pictures.find(product.picture);
        ASSERT_TRUE(picture) << product.picture;
        const std::string extension = product.picture.substr(product.picture.rfind('.'));
        const auto& [type, magic] = kinds.at(extension);
        EXPECT_EQ(picture->contentType, type);
        EXPECT_EQ(picture->bytes.substr(0, magic.size()), magic) << product.picture;
        ++counts[extension];
    });
    for (const auto& [extension, count] : counts)
        EXPECT_GT(count, 25) << extension;
    EXPECT_EQ(counts.size(), 3U);
}

TEST(TheStock, NamesPicturesSoThatTheTypeCanBeFoundAnywhereInTheUrl)
{
    forEachProduct([](const Product& product) {
        const std::string stem = product.picture.substr(0, product.picture.rfind('.'));
        for (const char* type : {"gif", "png", "jpg", "jpeg", "."})
            EXPECT_EQ(stem.find(type), std::string::npos) << product.picture;
    });
}

TEST(TheStock, AnswersMilkWithMoreThanOnePage)
{
    EXPECT_GE(countOf("freshmart", "milk"), 8U);
    EXPECT_GE(countOf("corner-store", "milk"), 2U);
    EXPECT_EQ(countOf("freshmart", "oat milk"), 1U);
    EXPECT_EQ(countOf("freshmart", "petrol"), 0U);
}

TEST(TheStock, IsFoundWithAndWithoutAccents)
{
    EXPECT_EQ(countOf("freshmart", "Crème fraîche"), 1U);
    EXPECT_EQ(countOf("freshmart", "CREME FRAICHE"), 1U);
    EXPECT_EQ(countOf("greengrocer", "jalapeno"), 1U);
    EXPECT_EQ(countOf("greengrocer", "JALAPEÑO"), 1U);
}

TEST(ASearch, WantsEveryWordInTheName)
{
    const Names names{"Oat Milk", "Oat Flakes", "Whole Milk"};
    EXPECT_EQ(find(names, "milk oat"), Names{"Oat Milk"});
    EXPECT_EQ(find(names, "oat milk bread"), Names{});
}

TEST(ASearch, IgnoresCaseBlanksAndCommas)
{
    EXPECT_EQ(find({"Eggs, Large"}, "  LARGE   eggs "), Names{"Eggs, Large"});
    EXPECT_EQ(find({"Eggs, Large"}, "eggs,large"), Names{"Eggs, Large"});
}

TEST(ASearch, PutsTheBestMatchesFirst)
{
    EXPECT_EQ(find({"Buttermilk", "Milkshake", "Whole Milk", "Milk"}, "milk"),
              (Names{"Milk", "Whole Milk", "Milkshake", "Buttermilk"}));
}

TEST(ASearch, KeepsTheOrderOfTheCatalogueAmongEquals)
{
    const Names names{"Oat Milk", "Soy Milk", "Ant Milk"};
    EXPECT_EQ(find(names, "milk"), names);
    EXPECT_EQ(find(names, ""), names);
}

TEST(ASearch, TakesThePluralForTheSingularAndBack)
{
    EXPECT_EQ(find({"Large Eggs"}, "egg").size(), 1U);
    EXPECT_EQ(find({"Eggplant", "Large Egg"}, "eggs"), Names{"Large Egg"});
    EXPECT_EQ(find({"Red Tomatoes"}, "tomato").size(), 1U);
    EXPECT_EQ(find({"Red Tomato"}, "tomatoes").size(), 1U);
    EXPECT_EQ(find({"Strawberries"}, "strawberry").size(), 1U);
    EXPECT_EQ(find({"Strawberry Milk"}, "strawberries").size(), 1U);
    EXPECT_EQ(find({"Cookie Dough"}, "cookies").size(), 1U);
    EXPECT_EQ(find({"Swis Roll"}, "swiss").size(), 0U);
}

TEST(ASearch, SurvivesBytesThatAreNotUtf8)
{
    EXPECT_EQ(find({"Milk"}, "\xFF\xC3").size(), 0U);
    EXPECT_EQ(find({"Milk \xC3"}, "\xC3").size(), 1U);
    EXPECT_EQ(find({"Milk \xFF"}, "milk \xFF").size(), 1U);
}

TEST(FoldedText, HasNoCaseAndNoAccents)
{
    EXPECT_EQ(fold("CRÈME Fraîche"), "creme fraiche");
    EXPECT_EQ(fold("Jalapen\xCC\x83o"), "jalapeno");
    EXPECT_EQ(fold("Œuf Straße Ægir"), "Œuf strasse aegir");
    EXPECT_EQ(fold("牛乳 Milk"), "牛乳 milk");
    EXPECT_EQ(fold("a\tb\nc,d"), "a b c d");
    EXPECT_EQ(fold(""), "");
}

TEST(ACatalogueFile, ThatIsWrongIsNamed)
{
    for (const char* text :
         {"", "nonsense", "[]", "{}", R"({"merchants": []})", R"({"merchants": [{"id": "a"}]})",
          R"({"merchants": [{"id": 1, "name": "A", "currency": "USD", "products": []}]})",
          R"({"merchants": [{"id": "a", "name": "A", "currency": "USD", "products": [{"name": "x"}]}]})"}) {
        try {
            Catalogue{writeCatalogue(text)};
            ADD_FAILURE() << text;
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find("catalogue-under-test.json"), std::string::npos);
        }
    }
    EXPECT_THROW(Catalogue("/nowhere/catalogue.json"), std::runtime_error);
}

}  // namespace
