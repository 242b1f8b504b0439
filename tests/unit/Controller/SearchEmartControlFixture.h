// A retailer's search controller between a retailer and a UI app that are both in the test's hand.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "KeptFile.h"
#include "RetailerServer.h"
#include "SearchEmartControl.h"
#include "SearchFixture.h"

/** The controller with all that only it itself uses. */
class OpenSearchEmartControl : public Carvoy::SearchEmartControl {
  public:
    using SearchEmartControl::checkEmartLogin;
    using SearchEmartControl::downloadImages;
    using SearchEmartControl::getRequestBody;
    using SearchEmartControl::getRequestBodyJson;
    using SearchEmartControl::getRequestParamObjang;
    using SearchEmartControl::getRequestParamSearch;
    using SearchEmartControl::init;
    using SearchEmartControl::parseResult;
    using SearchEmartControl::searchProduct;
    using SearchEmartControl::sendEmartAllImagePath;
    using SearchEmartControl::sendImagePath;
    using SearchEmartControl::startDownloadImages;

    using SearchEmartControl::discountIconUrls;
    using SearchEmartControl::discountTexts;
    using SearchEmartControl::discountTypes;
    using SearchEmartControl::httpCode;
    using SearchEmartControl::imageUrls;
    using SearchEmartControl::prices;
    using SearchEmartControl::pricesBeforeDiscount;
    using SearchEmartControl::productCount;
    using SearchEmartControl::productIds;
    using SearchEmartControl::productNames;
    using SearchEmartControl::requestCount;
    using SearchEmartControl::searchTerm;

    /** All eight lists. */
    std::vector<std::vector<std::string>> allLists() const
    {
        return {productNames, imageUrls,     prices,           pricesBeforeDiscount,
                productIds,   discountTypes, discountIconUrls, discountTexts};
    }
};

/** The file that says whether the user is logged in at the retailer. */
std::string loginFile();

/** The position and the type that image messages tell, each as "POSITION/TYPE". */
std::vector<std::string> placesOf(const std::vector<SentMessage>& images);

/**
 * Each test begins with a user who is logged in, and a controller that has not searched. The login file has
 * one path for all processes: only one of them at a time may run such a test.
 */
class SearchEmartControlFixture : public SearchFixture {
  protected:
    using Texts = std::vector<std::string>;

    enum SearchResult { FOUND = 0, BAD_ANSWER = 1, NOT_LOGGED_IN = 2, FAILED = 3 };

    SearchEmartControlFixture();

    void SetUp() override;
    void TearDown() override;

    /** The retailer answers searches with these items, each a JSON value. */
    void answerWith(const std::vector<std::string>& items);

    /** A search that must find something. */
    void search(const std::string& term = "milk");

    /** Asks the controller for the result message, and waits until it is sent. */
    SentMessage result();

    /** The UI app confirms the result message. */
    void confirm();

    /** The retailer has this icon for a badge. */
    void addIcon(int badge, const std::string& content);

    /** Like addHeldPicture(). */
    void addHeldIcon(int badge, const std::string& content, const std::shared_ptr<Latch>& reached,
                     const std::shared_ptr<Latch>& release);

    /** The paths that were asked for, in order, but for the searches. */
    Texts fetched() const;

    static std::string url(const std::string& path) { return RetailerServer::instance().address(path); }

    const TestSupport::KeptFile keptLogin_{loginFile()};
    RetailerServer& retailer_;
    std::unique_ptr<OpenSearchEmartControl> search_;
};
