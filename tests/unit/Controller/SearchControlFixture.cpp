#include "SearchControlFixture.h"

#include "Products.h"
#include "ScratchRoot.h"
#include "SiteValues.h"

using TestSupport::ScratchRoot;

std::string tokenFile()
{
    return ScratchRoot::file("apps_rw/" CARVOY_PARTNER_APP_ID "/shared/trusted/tokens.txt");
}

SearchControlFixture::SearchControlFixture()
    : SearchFixture(MerchantServer::instance()), merchant_(MerchantServer::instance())
{
}

void SearchControlFixture::SetUp()
{
    SearchFixture::SetUp();
    writeFile(tokenFile(), "session,access\n");
    search_ = std::make_unique<Carvoy::SearchControl>();
}

void SearchControlFixture::TearDown()
{
    openLatches();
    search_.reset();
    SearchFixture::TearDown();
}

SentMessage SearchControlFixture::result()
{
    return resultOf([this] { EXPECT_EQ(search_->sendResultToUI(), 0); });
}

void SearchControlFixture::confirm()
{
    result().answer(APP_CONTROL_RESULT_SUCCEEDED);
}

void SearchControlFixture::answerWithPictures(const std::vector<std::string>& urls)
{
    std::vector<std::string> products;
    for (const std::string& url : urls)
        products.push_back(Products::pictured("product " + std::to_string(products.size()), url));
    merchant_.answerSearch(200, Products::answer(products));
}
