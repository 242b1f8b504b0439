// A merchant bridge in the test's own process, and a customer with the right tokens.
#pragma once

#include "Files.h"
#include "HttpsClient.h"
#include "Server.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace ApplianceTest {

class BridgeFixture : public testing::Test {
  protected:
    static constexpr const char* host = "merchant-bridge.example";
    static constexpr const char* sessionToken = "session,with,commas";
    static constexpr const char* accessToken = "the-access-token";

    // Settings with which the server can start.
    static Appliance::MerchantBridge::Settings settings();

    // The part of the URL that a search at freshmart, or at another merchant, asks for.
    static std::string searchTarget(const std::string& term, const std::string& merchant = "freshmart");

    void SetUp() override;

    HttpsClient customer() const;
    Reply search(const std::string& term, const std::string& merchant = "freshmart") const;
    // The products of a 200 answer.
    nlohmann::json products(const std::string& term, const std::string& merchant = "freshmart") const;
    // The path of the picture of that product, counted from 1.
    std::string picturePathOf(const std::string& term, std::size_t position) const;

    std::unique_ptr<Appliance::MerchantBridge::Server> server;
};

}  // namespace ApplianceTest
