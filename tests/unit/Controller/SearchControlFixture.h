// A search controller between a merchant and a UI app that are both in the test's hand.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "MerchantServer.h"
#include "SearchControl.h"
#include "SearchFixture.h"

/** Where the partner app leaves its tokens. */
std::string tokenFile();

/** Each test begins with the tokens "session" and "access", and a controller that has not searched. */
class SearchControlFixture : public SearchFixture {
  protected:
    SearchControlFixture();

    void SetUp() override;
    void TearDown() override;

    /** Asks the controller for the result message, and waits until it is sent. */
    SentMessage result();

    /** The UI app confirms the result message. */
    void confirm();

    /** The merchant answers searches with one product for each URL. */
    void answerWithPictures(const std::vector<std::string>& urls);

    MerchantServer& merchant_;
    std::unique_ptr<Carvoy::SearchControl> search_;
};
