#include "SearchEmartControlFixture.h"

#include <filesystem>

#include "Items.h"
#include "SiteValues.h"

std::string loginFile()
{
    return CARVOY_RETAILER_LOGIN_FILE;
}

std::vector<std::string> placesOf(const std::vector<SentMessage>& images)
{
    std::vector<std::string> places;
    for (const SentMessage& image : images)
        places.push_back(image.text("key_product_image_num") + "/" + image.text("key_product_image_type"));
    return places;
}

SearchEmartControlFixture::SearchEmartControlFixture()
    : SearchFixture(RetailerServer::instance()), retailer_(RetailerServer::instance())
{
}

void SearchEmartControlFixture::SetUp()
{
    SearchFixture::SetUp();
    std::filesystem::remove_all(loginFile());
    writeFile(loginFile(), "login\n");
    search_ = std::make_unique<OpenSearchEmartControl>();
}

void SearchEmartControlFixture::TearDown()
{
    openLatches();
    search_.reset();
    SearchFixture::TearDown();
}

void SearchEmartControlFixture::answerWith(const std::vector<std::string>& items)
{
    retailer_.answerSearch(200, Items::answer(items));
}

void SearchEmartControlFixture::search(const std::string& term)
{
    ASSERT_EQ(search_->processEmartSearch(term), FOUND);
}

SentMessage SearchEmartControlFixture::result()
{
    return resultOf([this] { EXPECT_EQ(search_->sendEmartResultToUI(), 0); });
}

void SearchEmartControlFixture::confirm()
{
    result().answer(APP_CONTROL_RESULT_SUCCEEDED);
}

void SearchEmartControlFixture::addIcon(int badge, const std::string& content)
{
    addPicture(RetailerServer::iconPath(badge), content);
}

void SearchEmartControlFixture::addHeldIcon(int badge, const std::string& content,
                                            const std::shared_ptr<Latch>& reached,
                                            const std::shared_ptr<Latch>& release)
{
    addHeldPicture(RetailerServer::iconPath(badge), content, reached, release);
}

std::vector<std::string> SearchEmartControlFixture::fetched() const
{
    Texts paths;
    for (const ServerRequest& request : retailer_.requests()) {
        if (request.path != RetailerServer::SEARCH_PATH)
            paths.push_back(request.path);
    }
    return paths;
}
